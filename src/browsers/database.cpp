#include "browsers/database.h"

#include <sqlite3.h>

#include <utility>

#include "platform/error.h"

namespace quellix {
namespace {

using Test = std::function<bool(std::string_view)>;

constexpr int kInstructionsAPause = 10'000;

struct StatementCloser {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementCloser>;

std::string_view TextOf(const unsigned char* text, int size) {
  return text == nullptr ? std::string_view()
                         : std::string_view(reinterpret_cast<const char*>(text), size);
}

void CallTest(sqlite3_context* context, int, sqlite3_value** values) {
  const auto* const test = static_cast<const Test*>(sqlite3_user_data(context));
  const unsigned char* const text = sqlite3_value_text(values[0]);
  sqlite3_result_int(context, (*test)(TextOf(text, sqlite3_value_bytes(values[0]))) ? 1 : 0);
}

void CallText(sqlite3_context* context, int, sqlite3_value** values) {
  const auto text_of =
      reinterpret_cast<std::string (*)(std::string_view)>(sqlite3_user_data(context));
  const unsigned char* const text = sqlite3_value_text(values[0]);
  const std::string result = text_of(TextOf(text, sqlite3_value_bytes(values[0])));
  sqlite3_result_text(context, result.data(), static_cast<int>(result.size()), SQLITE_TRANSIENT);
}

void DeleteTest(void* test) { delete static_cast<Test*>(test); }

// The schema of a file that others made is not trusted with anything but its tables.
constexpr const char* kSettings =
    "PRAGMA locking_mode=EXCLUSIVE; PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON;"
    "PRAGMA temp_store=MEMORY; PRAGMA synchronous=FULL; PRAGMA secure_delete=ON;"
    "PRAGMA foreign_keys=OFF";

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char each : text) quoted.append(each == '\'' ? 2 : 1, each);
  return quoted + "'";
}

}  // namespace

std::string_view Database::Row::Text(int column) const {
  const unsigned char* const text = sqlite3_column_text(statement_, column);
  return TextOf(text, sqlite3_column_bytes(statement_, column));
}

int64_t Database::Row::Number(int column) const { return sqlite3_column_int64(statement_, column); }

Database::Database(Folder& folder, std::string_view name, std::string_view shown, Use use,
                   Pause pause)
    : files_(folder, name, use), shown_(shown), pause_(std::move(pause)) {
  if (use == Use::kLook && !folder.Look(name, Detail::kKind))
    throw Error(Error::Kind::kMissing, Say("%1 is not there.", shown_));
  const int flags = SQLITE_OPEN_READWRITE | (use == Use::kChange ? SQLITE_OPEN_CREATE : 0);
  const int code = sqlite3_open_v2(files_.name().c_str(), &handle_, flags, files_.system_name());
  try {
    if (code != SQLITE_OK) Fail(code);
    sqlite3_progress_handler(
        handle_, kInstructionsAPause,
        [](void* asked) { return (*static_cast<const Pause*>(asked))() ? 1 : 0; }, &pause_);
    Run(kSettings);
  } catch (const Error&) {
    sqlite3_close(handle_);
    throw;
  }
}

Database::~Database() { sqlite3_close(handle_); }

void Database::Fail(int code) {
  if (files_.failure()) throw Error(*files_.failure());
  switch (code & 0xFF) {
    case SQLITE_INTERRUPT:
      throw Error(Error::Kind::kOther, Say("%1 was left as it is: the run was stopped.", shown_));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      throw Error(Error::Kind::kOther, Say("%1 was left as it is: it is damaged.", shown_));
    case SQLITE_FULL:
      throw Error(Error::Kind::kFull, Say("%1 was left as it is: the disk is full.", shown_));
    default:
      throw Error(Error::Kind::kOther,
                  Say("%1 was left as it is: %2.", shown_,
                      handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code)));
  }
}

// Whether there is a row.
int Database::Step(sqlite3_stmt* statement) {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) Fail(code);
  return code == SQLITE_ROW;
}

void Database::Run(std::string_view sql) {
  ForEach(sql, [](const Row&) {});
}

void Database::ForEach(std::string_view sql, const std::function<void(const Row&)>& visit) {
  while (!sql.empty()) {
    sqlite3_stmt* prepared = nullptr;
    const char* rest = nullptr;
    const int code =
        sqlite3_prepare_v2(handle_, sql.data(), static_cast<int>(sql.size()), &prepared, &rest);
    const Statement statement(prepared);
    if (code != SQLITE_OK) Fail(code);
    while (prepared != nullptr && Step(prepared)) visit(Row(prepared));
    sql.remove_prefix(static_cast<size_t>(rest - sql.data()));
  }
}

int64_t Database::Number(std::string_view sql) {
  std::optional<int64_t> number;
  ForEach(sql, [&](const Row& row) {
    if (!number) number = row.Number(0);
  });
  return number.value_or(0);
}

bool Database::HasTable(std::string_view table) {
  return Number("SELECT count(*) FROM sqlite_master WHERE type='table' AND name=" + Quoted(table)) >
         0;
}

bool Database::HasColumn(std::string_view table, std::string_view column) {
  return Number("SELECT count(*) FROM pragma_table_info(" + Quoted(table) +
                ") WHERE name=" + Quoted(column)) > 0;
}

void Database::RequireSound() {
  bool is_sound = true;
  ForEach("PRAGMA quick_check(1)", [&](const Row& row) { is_sound = row.Text(0) == "ok"; });
  if (!is_sound) Fail(SQLITE_CORRUPT);
}

void Database::AddTest(const char* name, Test test) {
  const int code =
      sqlite3_create_function_v2(handle_, name, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                 new Test(std::move(test)), CallTest, nullptr, nullptr, DeleteTest);
  if (code != SQLITE_OK) Fail(code);
}

void Database::AddText(const char* name, std::string (*text)(std::string_view)) {
  const int code = sqlite3_create_function_v2(handle_, name, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                              reinterpret_cast<void*>(text), CallText, nullptr,
                                              nullptr, nullptr);
  if (code != SQLITE_OK) Fail(code);
}

}  // namespace quellix
