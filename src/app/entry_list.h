#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system.h"
#include "run/run_choice.h"
#include "run/run_entries.h"

namespace quellix {

enum class RunColumn { kPlace, kKind, kBytes, kModified, kItem, kFate, kNote };
inline constexpr size_t kRunColumns = 7;

// What a run came by, as a window lists it: sorted, filtered, ticked. Rows are indexes from 0 of
// what is shown.
class EntryList {
 public:
  struct Order {
    RunColumn column;
    bool descending = false;
  };

  // `system` must outlive it. In a preview what is removed is told as what would be.
  EntryList(System& system, std::shared_ptr<const RunEntries> entries, bool is_preview);

  size_t RowCount() const { return view_.size(); }
  const RunEntry& At(size_t row) const { return entries_->all[view_[row]]; }
  std::string Text(size_t row, RunColumn column) const;

  // By what the column means; the same column again turns it around. Rows that are equal stay in
  // their order.
  void Sort(RunColumn column);
  const std::optional<Order>& order() const { return order_; }
  // Shows the rows whose place, rule or note holds `text` in any case; "" all.
  void SetFilter(std::string_view text);

  // Of what would be removed: whether it is to be. All are at first.
  bool IsTicked(size_t row) const { return !unticked_[view_[row]]; }
  void SetTicked(size_t row, bool ticked);
  void TickAll(bool ticked);  // those that are shown
  // What a run is to remove of these.
  std::shared_ptr<RunChoice> Choice() const;
  // What to ask before it; "" for nothing. See QuestionBefore.
  std::string Question() const;
  // "1,204 entries, 54.20 MB; 12 stay, 3 are kept": of all, whatever the filter shows.
  std::string Summary() const;
  // The rows that are shown, a line each with tabs between the columns, behind the columns' names.
  std::string ToText() const;

 private:
  using Index = uint32_t;

  bool PassesFilter(Index entry) const;
  bool Precedes(Index a, Index b) const;
  int Compare(const RunEntry& a, const RunEntry& b) const;
  std::string_view ItemText(const RunEntry& entry) const;

  System& system_;
  std::shared_ptr<const RunEntries> entries_;
  bool is_preview_;
  std::vector<bool> unticked_;  // by entry
  std::vector<Index> view_;
  std::optional<Order> order_;
  std::string filter_;  // in upper case
};

}  // namespace quellix
