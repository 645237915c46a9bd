#pragma once

#include <array>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system.h"
#include "run/item.h"
#include "run/row_order.h"
#include "run/run_choice.h"
#include "run/run_entries.h"

namespace quellix {

// Which entries are shown: those that these items name, by run order from 0, and those of rules,
// which no item names.
struct EntryScope {
  std::array<bool, kItemCount> items{};
  std::set<std::string> rules;
  bool operator==(const EntryScope&) const = default;
};

enum class RunColumn { kPlace, kKind, kBytes, kModified, kItem, kFate, kNote };
inline constexpr size_t kRunColumns = 7;

// What a run came by, as a window lists it: sorted, filtered, ticked. Rows are indexes from 0 of
// what is shown.
class EntryList {
 public:
  // `system` must outlive it. In a preview what is removed is told as what would be.
  EntryList(System& system, std::shared_ptr<const RunEntries> entries, bool is_preview);

  size_t RowCount() const { return view_.size(); }
  // Of a heading the folder or the key that it names.
  const RunEntry& At(size_t row) const {
    return IsHeading(row) ? headings_[view_[row] - kHeadings].place : entries_->all[view_[row]];
  }
  bool IsHeading(size_t row) const { return view_[row] >= kHeadings; }
  std::string Text(size_t row, RunColumn column) const;

  // By what the column means; the same column again turns it around. Rows that are equal stay in
  // their order.
  void Sort(RunColumn column);
  const std::optional<RowOrder<RunColumn>>& order() const { return order_; }
  // Shows the rows whose place, rule or note holds `text` in any case; "" all.
  void SetFilter(std::string_view text);
  // Without a scope shows whatever names it.
  void ShowScope(const std::optional<EntryScope>& scope);
  // Puts those of one folder, or one key, together below a heading that tells how much they are and
  // ticks them all.
  void SetGrouped(bool grouped);
  bool is_grouped() const { return is_grouped_; }
  // Takes in what the run has come by since; until Settle that stands at the end, whatever the
  // order.
  void Grow();
  void Settle();

  // Of what would be removed: whether it is to be. All are at first.
  bool IsTicked(size_t row) const;
  void SetTicked(size_t row, bool ticked);
  void TickAll(bool ticked);  // those that are shown
  // What a run is to remove of these; those of `besides`, indexes of entries in use, are to be left
  // to the system's next start (see RunChoice).
  std::shared_ptr<RunChoice> Choice(std::span<const size_t> besides = {}) const;
  // All there are, by index, and whether a run is to remove one of those that can go.
  const RunEntries& entries() const { return *entries_; }
  bool IsTaken(size_t entry) const { return !unticked_[entry]; }
  // What to ask before it; "" for nothing. See QuestionBefore.
  std::string Question() const;
  // "1,204 entries, 54.20 MB; 12 stay, 3 are kept": of all in
  // the scope, whatever the filter shows.
  std::string Summary() const;
  // The rows that are shown, a line each with tabs between the columns, behind the columns' names.
  std::string ToText() const;

 private:
  using Index = uint32_t;
  // From here on an index of the view is one of a heading.
  static constexpr Index kHeadings = 1u << 31;
  static_assert(RunEntries::kMost < kHeadings);
  struct Heading {
    RunEntry place;
    Index count = 0;
  };

  void List();
  void AddAll(Index from);
  void CountAll();
  void Count(Index entry, int sign);
  void Order();
  void OrderByText();
  void AddHeadings();
  std::string HeadingText(size_t row, RunColumn column) const;
  // The rows below a heading: from the first to one behind the last.
  std::pair<size_t, size_t> Below(size_t row) const;
  bool IsInScope(const RunEntry& entry) const;
  bool IsRuleInScope(size_t rule) const;
  bool PassesFilter(Index entry) const;
  std::string TextOf(const RunEntry& entry, RunColumn column) const;
  // By place, size or date.
  int Compare(const RunEntry& a, const RunEntry& b) const;
  std::string_view ItemText(const RunEntry& entry) const;

  System& system_;
  std::shared_ptr<const RunEntries> entries_;
  bool is_preview_;
  std::vector<bool> unticked_;  // by entry
  std::vector<Index> view_;
  std::optional<RowOrder<RunColumn>> order_;
  std::string filter_;  // in upper case
  std::optional<EntryScope> scope_;
  mutable std::vector<std::optional<bool>> in_scope_;  // by rule, once it was asked for
  bool is_grouped_ = false;
  std::vector<Heading> headings_;
  // Of all that is in the scope.
  struct Totals {
    uint64_t going = 0, files = 0, not_listed = 0, bytes = 0, stayed = 0, kept = 0;
  } totals_;
};

}  // namespace quellix
