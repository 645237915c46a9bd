#include "browsers/database_cleaning.h"

#include <map>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "run/backup_step.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

// Beside a database, from which a killed browser's last words are read.
constexpr const char* kBeside[] = {"-wal", "-journal"};
// Compacting takes memory for what is left; beyond that, what was deleted is only overwritten.
constexpr uint64_t kMostCompacted = 512u << 20;
// A preview changes a copy in memory, so that what follows sees what would be left; of a larger one
// it only lists what would go.
constexpr uint64_t kMostInMemory = 128u << 20;

// The name of some rows, with how many and how large they are.
struct Group {
  uint64_t rows = 0, bytes = 0;
};
using Groups = std::map<std::string, Group, std::less<>>;

bool HasWhat(Database& database, std::string_view needs) {
  if (needs.empty()) return true;
  const size_t dot = needs.find('.');
  if (dot == needs.npos) return database.HasTable(needs);
  return database.HasColumn(needs.substr(0, dot), needs.substr(dot + 1));
}

class Cleaning {
 public:
  Cleaning(CleaningContext& context, Folder& folder, const std::string& path, std::string_view name,
           const DatabaseJob& job)
      : context_(context), folder_(folder), name_(name), shown_(path + name_), job_(job) {}

  // Throws Error; the database is then as it was.
  uint64_t Run() {
    RequireAllowed();
    Choose();
    if (going_.empty()) return 0;
    RequireChangeable();
    const uint64_t before = BytesNow();
    const std::string archive = BackUp();
    const bool had_log = IsThere("-wal"), had_journal = IsThere("-journal");
    Change();
    const uint64_t after = BytesNow();
    if (before > after) {
      context_.state.SpaceGained += static_cast<double>(before - after);
      context_.state.RunSpaceGained += static_cast<double>(before - after);
    }
    // They came into the archive too, and come back with it.
    if (had_log) NoteBeside("-wal", archive);
    if (had_journal) NoteBeside("-journal", archive);
    return NoteAll(archive);
  }

  const std::string& shown() const { return shown_; }

 private:
  void RequireAllowed() {
    ProtectedPlaces& places = PlacesOf(context_);
    const std::string_view line = places.keep().ForFile(folder_, folder_.Id(), shown_);
    if (!line.empty()) throw Error(Error::Kind::kKept, std::string(line));
    const Sentence why = places.WhyNotEdit(folder_, shown_);
    if (!why.empty())
      throw Error(Error::Kind::kDenied, Say("%1 was left as it is: %2", shown_, why));
  }

  // Finds what goes, without a change.
  void Choose() {
    Database database(folder_, name_, shown_, Database::Use::kLook, PauseOf(context_));
    database.RequireSound();
    AddFunctions(database);
    // That the form is known shows before anything is changed.
    for (const DatabaseStep& step : job_.steps) {
      if (HasWhat(database, step.needs)) database.Run(std::string("EXPLAIN ") + step.sql);
    }
    Groups groups;
    for (const DatabaseStep& step : job_.list) {
      if (HasWhat(database, step.needs)) List(database, step.sql, groups);
    }
    for (auto& [what, group] : groups) {
      if (group.rows > 0 && Goes(what, group)) going_.emplace(what, group);
    }
  }

  static void List(Database& database, const char* sql, Groups& groups) {
    database.ForEach(sql, [&groups](const Database::Row& row) {
      Group& group = groups[std::string(row.Text(0))];
      group.rows += static_cast<uint64_t>(row.Number(1));
      group.bytes += static_cast<uint64_t>(row.Number(2));
    });
  }

  RunEntry EntryOf(const std::string& what, const Group& group) const {
    return {.kind = EntryKind::kRows, .bytes = group.bytes, .place = shown_, .part = what};
  }

  bool Goes(const std::string& what, const Group& group) {
    RunEntry entry = EntryOf(what, group);
    const std::string_view line =
        job_.is_by_site ? KeepOf(context_).ForSite(what) : std::string_view();
    if (line.empty()) return IsChosen(context_.state, entry);
    NoteKept(context_.state, std::move(entry), line);
    return false;
  }

  void AddFunctions(Database& database) {
    database.AddTest("goes", [this](std::string_view what) { return going_.contains(what); });
    if (job_.add_functions) job_.add_functions(database);
  }

  // What a change would meet with, asked without one.
  void RequireChangeable() {
    RequireOwn(*folder_.Open(name_, OpenMode::kRead));
    folder_.RequireRemovable(name_);  // which nobody else may hold, nor we
  }

  void RequireOwn(RandomFile& file) const {
    if ((file.Attributes() & kReadOnly) != 0)
      throw Error(Error::Kind::kDenied, Say("%1 was left as it is: it is read-only.", shown_));
    if (file.LinkCount() > 1)
      throw Error(Error::Kind::kDenied, Say("%1 was left as it is: it has further names.", shown_));
  }

  bool IsThere(const char* ending) {
    const auto info = folder_.Look(name_ + ending, Detail::kSize);
    return info && info->size > 0;
  }

  uint64_t BytesNow() {
    uint64_t bytes = 0;
    for (const char* ending : {"", kBeside[0], kBeside[1]}) {
      const auto info = folder_.Look(name_ + ending, Detail::kSize);
      if (info) bytes += info->size;
    }
    return bytes;
  }

  // The archive; "" for none.
  std::string BackUp() {
    if (context_.state.RemovalMode != kBackUp) return {};
    BackupBatch batch(context_);
    std::vector<std::string> paths = {shown_};  // which the batch only names
    for (const char* ending : kBeside) {
      if (IsThere(ending)) paths.push_back(shown_ + ending);
    }
    for (const std::string& path : paths) {
      if (const auto info = folder_.Look(NamePart(path), Detail::kSize)) {
        batch.Add(folder_, path, *info);
      }
    }
    const Sentence problem = batch.Store();
    if (problem.empty()) return std::string(context_.backup.Path());
    if (context_.state.Strict) {
      throw Error(Error::Kind::kOther,
                  Say("It could not be backed up and was therefore left as it is: %1", problem));
    }
    ++context_.state.FilesNotBackedUp;
    return {};
  }

  void Change() {
    if (context_.state.IsPreview && BytesNow() > kMostInMemory) return;
    Database database(folder_, name_, shown_, Database::Use::kChange, PauseOf(context_));
    AddFunctions(database);
    database.Begin();
    for (const DatabaseStep& step : job_.steps) {
      if (HasWhat(database, step.needs)) database.Run(step.sql);
    }
    database.Commit();
    try {
      if (BytesNow() <= kMostCompacted) database.Compact();
    } catch (const Error& error) {  // what is deleted is overwritten all the same
      LogLine(context_.state, Log("%1 could not be made smaller. %2", shown_, SentenceOf(error)));
    }
  }

  void NoteBeside(const char* ending, const std::string& archive) {
    if (archive.empty() || IsThere(ending)) return;
    NoteEntry(context_.state, {.way = Way::kBackedUp,
                               .archive = context_.state.Entries->ArchiveNumber(archive),
                               .place = shown_ + ending});
    ++context_.state.FilesBackedUp;
  }

  uint64_t NoteAll(const std::string& archive) {
    uint64_t rows = 0;
    for (const auto& [what, group] : going_) {
      RunEntry entry = EntryOf(what, group);
      entry.way = archive.empty() ? Way::kDeleted : Way::kBackedUp;
      entry.archive = context_.state.Entries->ArchiveNumber(archive);
      NoteEntry(context_.state, std::move(entry));
      rows += group.rows;
    }
    return rows;
  }

  CleaningContext& context_;
  Folder& folder_;
  std::string name_;
  std::string shown_;  // its path
  const DatabaseJob& job_;
  Groups going_;
};

}  // namespace

uint64_t CleanDatabase(CleaningContext& context, Folder& folder, const std::string& path,
                       std::string_view name, const DatabaseJob& job) {
  Cleaning cleaning(context, folder, path, name, job);
  FileInfo seen;
  try {
    const auto info = folder.Look(name, Detail::kSize);
    if (!info) return 0;
    seen = *info;
    NotePlace(context.state);
    context.view.SetStatus(Tr("Cleaning %1", cleaning.shown()));
    return cleaning.Run();
  } catch (const Error& error) {
    if (!context.state.AbortRequested) NoteStayed(context.state, cleaning.shown(), error, seen);
  } catch (const std::exception& error) {
    NoteStayed(context.state, cleaning.shown(), SentenceOf(error), Error::Kind::kOther, seen);
  }
  return 0;
}

}  // namespace quellix
