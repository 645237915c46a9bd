#include "search/search_draft.h"

#include <algorithm>

#include "platform/text.h"
#include "search/drive_list.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

std::string EntryOfMissing(const std::string& root) {
  return root.substr(0, 2) + " " + std::string(DriveTypeName({root[0], DriveType::kNoRoot}));
}

// A drive that was chosen stays in the list while it is unplugged.
std::vector<DriveRow> DriveRows(const Machine& machine, const SearchOptions& options) {
  std::vector<std::string> roots = {WindowsDriveRoot(machine.system)};
  if (options.drives) roots = ParseDriveLine(UpCase(*options.drives));
  std::erase_if(roots, [](const std::string& root) {
    return root.size() != 3 || root[0] < 'A' || root[0] > 'Z';
  });
  std::vector<DriveRow> rows;
  for (const std::string& entry : DriveList(machine.system)) {
    rows.push_back({entry, std::erase_if(roots, [&](const std::string& root) {
                             return root[0] == entry[0];
                           }) > 0});
  }
  for (const std::string& root : roots) rows.push_back({EntryOfMissing(root), true});
  std::ranges::stable_sort(rows, {}, [](const DriveRow& row) { return row.entry[0]; });
  const auto is_same = [](const DriveRow& a, const DriveRow& b) { return a.entry == b.entry; };
  rows.erase(std::unique(rows.begin(), rows.end(), is_same), rows.end());
  return rows;
}

std::optional<int32_t> Size(const SearchDraft& draft) {
  const std::string_view text = TrimBlanks(draft.size_kb);
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == text.npos;
  const std::optional<double> number = digits ? ToNumber(text) : std::nullopt;
  if (!number || *number > INT32_MAX) return std::nullopt;
  return static_cast<int32_t>(*number);
}

}  // namespace

SearchDraft MakeSearchDraft(const Machine& machine, const SearchOptions& options) {
  SearchDraft draft;
  draft.options = options;
  draft.drives = DriveRows(machine, draft.options);
  draft.size_kb = std::to_string(draft.options.size_kb);
  const LocalTime today = machine.system.Now();
  for (auto* date : {&draft.options.first_date, &draft.options.second_date}) {
    *date = date->value_or(today);
  }
  return draft;
}

bool HasSensibleDates(const SearchDraft& draft) {
  if (draft.options.date == 0) return true;
  return DayNumber(*draft.options.first_date) < DayNumber(*draft.options.second_date);
}

bool HasSensibleSize(const SearchDraft& draft) {
  return draft.options.size == 0 || Size(draft).has_value();
}

void SaveSearchDraft(const Machine& machine, const SearchDraft& draft) {
  SearchOptions options = draft.options;
  std::vector<std::string> entries;
  for (const DriveRow& row : draft.drives) {
    if (row.ticked) entries.push_back(row.entry);
  }
  options.drives = JoinDrives(entries);
  options.size_kb = Size(draft).value_or(options.size_kb);
  SaveSearchOptions(machine, options);
}

}  // namespace quellix
