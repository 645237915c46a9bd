#include "app/run_table.h"

#include <algorithm>
#include <iterator>

#include "app/item_catalogue.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kKinds[] = {
    "file",       "folder",     "registryValue",  "registryKey", "iniKey",       "iniSection",
    "cacheEntry", "recycleBin", "addressHistory", "clipboard",   "databaseRows", "windowsCleaner"};
constexpr std::string_view kFates[] = {"removed", "stayed", "kept"};
constexpr std::string_view kWays[] = {"deleted", "recycled", "wiped", "backedUp"};
constexpr std::string_view kOutcomes[] = {"notChosen", "nothingFound", "notPossible", "cleaned",
                                          "failed"};

template <size_t kCount, class Value>
std::string Word(const std::string_view (&words)[kCount], Value value) {
  return std::string(words[static_cast<size_t>(value)]);
}

template <class Value, size_t kCount>
Value ValueOf(const std::string_view (&words)[kCount], std::string_view word) {
  const auto found = std::find(std::begin(words), std::end(words), word);
  return found == std::end(words) ? Value{} : static_cast<Value>(found - std::begin(words));
}

ReportCell ItemCell(int run_order) {
  if (run_order == 0) return {};
  return AllItems()[static_cast<size_t>(run_order) - 1].key;
}

// In a preview no archive is made.
std::vector<ReportCell> RowOf(const RunEntries& entries, const RunEntry& entry, bool preview) {
  return {Word(kKinds, entry.kind),
          Word(kFates, entry.fate),
          entry.place,
          TextCell(entry.part),
          entry.bytes,
          TimeCell(entry.last_write),
          ItemCell(entry.item),
          TextCell(entries.rules[entry.rule]),
          entry.fate == Fate::kRemoved ? Word(kWays, entry.way) : ReportCell(),
          TextCell(preview ? "" : entries.archives[entry.archive]),
          TextCell(entry.note),
          uint64_t{entry.count}};
}

template <class Number>
uint64_t Count(Number number) {
  return static_cast<uint64_t>(number);
}

// The table keeps the entries.
ReportTable TableOfEntries(std::string_view command, std::shared_ptr<const RunEntries> entries,
                           bool preview) {
  const size_t count = entries->all.size();
  return {
      .command = command,
      .columns = {"kind", "fate", "place", "part", "bytes", "modified", "item", "rule", "way",
                  "archive", "note", "count"},
      .count = count,
      .row = [entries, preview](size_t row) { return RowOf(*entries, entries->all[row], preview); },
      .summary = {}};
}

}  // namespace

EntryKind KindOf(std::string_view name) { return ValueOf<EntryKind>(kKinds, name); }
Fate FateOf(std::string_view name) { return ValueOf<Fate>(kFates, name); }
Way WayOf(std::string_view name) { return ValueOf<Way>(kWays, name); }
Outcome OutcomeOf(std::string_view name) { return ValueOf<Outcome>(kOutcomes, name); }

ReportTable TableOfRun(std::string_view command, const RunTotals& totals, bool preview) {
  ReportTable table = TableOfEntries(command, totals.Entries, preview);
  table.summary = {{"preview", preview},
                   {"stopped", totals.AbortRequested},
                   {"files", Count(totals.RunFilesDeleted)},
                   {"bytes", Count(totals.RunSpaceGained)},
                   {"backedUp", Count(totals.FilesBackedUp)},
                   {"notBackedUp", Count(totals.FilesNotBackedUp)},
                   {"stayed", totals.StayedCount},
                   {"kept", totals.KeptCount},
                   {"leftOut", totals.Entries->left_out},
                   {"log", ReplaceNoCase(totals.RunLog, "\r", "")}};
  for (const Item& item : AllItems()) {
    const Outcome outcome = totals.Outcomes[static_cast<size_t>(item.run_order) - 1];
    if (outcome != Outcome::kNotChosen)
      table.summary.emplace_back(item.key, Word(kOutcomes, outcome));
  }
  return table;
}

}  // namespace quellix
