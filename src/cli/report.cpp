#include "cli/report.h"

#include <fstream>
#include <iostream>
#include <random>

#include "cli/commands.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

bool EndsInCsv(std::string_view file) {
  return file.size() > 4 && EqualsNoCase(file.substr(file.size() - 4), ".csv");
}

}  // namespace

Report::Report(const ReportOptions& options)
    : options_(options), path_(std::u8string(options.file.begin(), options.file.end())) {
  if (path_.empty()) return;
  std::error_code none;
  is_new_ = !fs::exists(path_, none);
  if (!std::ofstream(path_, std::ios::binary | std::ios::app)) {
    is_new_ = false;
    throw Error(Error::Kind::kDenied,
                "nothing was done, because the report cannot be written to " + options.file + ".");
  }
}

Report::~Report() {
  std::error_code none;
  if (is_new_) fs::remove(path_, none);
}

std::ostream& Report::text() {
  static std::ostream nothing(nullptr);
  return is_for_programs() ? nothing : std::cout;
}

void Report::WriteJson(std::ostream& out, const ReportTable& table, int exit_code) const {
  ReportTable told = table;
  if (options_.IsOfSeveral()) {
    told.summary.emplace_back("volume", options_.volume);
    told.summary.emplace_back("user", TextCell(options_.user));
  }
  quellix::WriteJson(out, told, exit_code);
}

void Report::WriteCsv(std::ostream& out, const ReportTable& table) const {
  if (!options_.IsOfSeveral()) return quellix::WriteCsv(out, table);
  ReportTable told = table;
  told.columns.insert(told.columns.begin(), {"volume", "user"});
  told.row = [this, &table](size_t i) {
    std::vector<ReportCell> cells = table.row(i);
    cells.insert(cells.begin(), {options_.volume, TextCell(options_.user)});
    return cells;
  };
  quellix::WriteCsv(out, told);
}

int Report::Finish(const ReportTable& table, int exit_code) {
  if (options_.json) WriteJson(std::cout, table, exit_code);
  if (options_.csv) WriteCsv(std::cout, table);
  std::cout << std::flush;
  if (!std::cout) return Fail("the output could not be written.", kFailed);
  return path_.empty() ? exit_code : WriteFile(table, exit_code);
}

// In one step: half a report would be taken for a whole one.
int Report::WriteFile(const ReportTable& table, int exit_code) {
  std::error_code error;
  // A pipe or a device is written to as it is; a link leads to what is replaced.
  const bool in_place = fs::exists(path_, error) && !fs::is_regular_file(path_, error);
  const fs::path target = in_place ? path_ : fs::weakly_canonical(path_, error);
  fs::path unfinished = target;
  // Who can write to the folder must not know the name beforehand.
  if (!in_place) unfinished += "." + std::to_string(std::random_device()()) + ".unfinished";
  std::ofstream out(unfinished, std::ios::binary);
  EndsInCsv(options_.file) ? WriteCsv(out, table) : WriteJson(out, table, exit_code);
  out.close();
  error.clear();
  if (out && !in_place) fs::rename(unfinished, target, error);
  if (!out || error) {
    std::error_code none;
    if (!in_place) fs::remove(unfinished, none);
    return Fail("the report could not be written to " + options_.file + ".", kFailed);
  }
  is_new_ = false;
  return exit_code;
}

}  // namespace quellix
