#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/cleaning_run.h"
#include "app/entry_list.h"
#include "app/list_section.h"
#include "app/selection.h"
#include "platform/machine.h"
#include "run/item.h"
#include "run/row_order.h"
#include "run/run_state.h"
#include "settings/settings.h"

namespace quellix {

enum class ItemColumn { kName, kBytes, kCount, kNote };
inline constexpr size_t kItemColumns = 4;

enum class Ticks { kNone, kSome, kAll };

// All that can be cleaned, as the main window lists it: the items below the headings of their
// groups, those that this Windows cannot have last and folded away unless they are ticked, with
// what a look has found of each. Rows are indexes from 0 of what is shown.
class ItemList {
 public:
  struct Row {
    Group group;
    const Item* item = nullptr;  // null for a heading and for a fold
    int folded = 0;              // of a fold: how many items it stands for
    int section = -1;            // of what is no item: an index of sections()
    int line = -1;               // below its heading: an index of its rows
    bool IsHeading() const { return item == nullptr && folded == 0 && line < 0; }
  };

  // What a row stands for, whatever is listed around it by now.
  struct Identity {
    Group group;
    const Item* item;
    bool is_fold;
    std::optional<ListSection::Kind> kind;  // of what is no item
    std::string name;                       // it is ticked by; of a section's heading its title
    bool is_line;
    bool operator==(const Identity&) const = default;
  };

  // The machine's ports and the selection must outlive it.
  ItemList(const Machine& machine, Selection& selection);

  // What was found here beside the items, which stands behind them.
  void SetSections(std::vector<ListSection> sections);
  const std::vector<ListSection>& sections() const { return sections_; }
  // Every box that may be, whatever it is of; those of Windows' own cleaners, and of recipes that
  // cost something, are only cleared.
  void TickAll(bool ticked);

  // Lists anew: the ticks or the settings have changed.
  void Refresh();
  size_t RowCount() const { return rows_.size(); }
  const Row& At(size_t row) const { return rows_[row]; }
  std::optional<size_t> RowOf(const Item& item) const;
  Identity IdentityOf(size_t row) const;
  // The row that stands for the same, wherever it is by now; nothing where it is not listed.
  std::optional<size_t> RowOf(const Identity& identity) const;
  std::string Text(size_t row, ItemColumn column) const;
  // What nothing is to be expected of: it cannot be ticked, or this Windows cannot have it.
  bool IsDimmed(size_t row) const;
  // Whether it needs administrator rights that are not there.
  bool NeedsRights(size_t row) const { return NeedsRights(rows_[row]); }
  // Whether a row may.
  bool may_need_rights() const { return !is_administrator_; }
  // Nothing for a row without a box.
  std::optional<Ticks> TicksOf(size_t row) const;
  // What a click on a row's box does, or on a heading: ticks, or toggles the group; a fold opens.
  void Toggle(size_t row);
  void SetFolded(Group group, bool folded);

  // Within the groups, by what the column means; the same column again turns it around.
  void Sort(ItemColumn column);
  bool is_descending() const { return order_ && order_->descending; }
  // The first row at or behind `from`, then from the top, whose name begins with `text` in any
  // case.
  std::optional<size_t> Find(std::string_view text, size_t from) const;

  // From now on the rows tell what the run in `state` comes by; it must live until EndLook. What
  // was found before is forgotten.
  void BeginLook(const RunState& state);
  // Takes in what has come since.
  void Follow();
  // What is found by now stays, in the rows as they stand: Refresh sorts by it.
  void EndLook();
  void Forget();
  // Which entries a row stands for.
  EntryScope ScopeOf(size_t row) const;
  // "Clean Cookies of Chrome": what a menu says of the row, "&" as two; "" for one that cleans
  // nothing by itself.
  std::string CommandAt(size_t row) const;
  // What a row below a heading of a section cleans by itself; nothing for another.
  std::optional<OtherChoices> ChoiceAt(size_t row) const;
  // Whether the rows are of recipes as a look has found them.
  bool Knows(const modPlugin::ShownRecipes& shown) const;
  // Whether something is ticked that needs administrator rights, which are not there.
  bool LacksRights() const;

  // What a user should know of a row, in several lines.
  std::string Details(size_t row) const;
  // "12 items, 1.40 GB": what is ticked, and what a look has found of it.
  std::string Summary() const;

 private:
  struct Found {
    bool looked = false;  // something was found, or it is done
    bool done = false;
    Outcome outcome = Outcome::kNotChosen;
    double bytes = 0;
    uint64_t count = 0, stays = 0;
  };

  static size_t IndexOf(const Item& item) { return static_cast<size_t>(item.run_order) - 1; }
  const ListSection& SectionAt(const Row& row) const {
    return sections_[static_cast<size_t>(row.section)];
  }
  const ListSection::Row& LineAt(const Row& row) const {
    return SectionAt(row).rows[static_cast<size_t>(row.line)];
  }
  bool IsTicked(const ListSection& section, const ListSection::Row& line) const;
  bool IsTicked(const Row& row) const {  // of a row in a section
    return IsTicked(SectionAt(row), LineAt(row));
  }
  void SetTicked(const ListSection& section, const ListSection::Row& line, bool ticked);
  const Found& FoundOf(const std::string& rule) const;
  void TickSection(const ListSection& section, bool ticked);
  Selection::Count CountIn(const Row& heading) const;
  void ToggleInSection(const Row& row);
  std::string SectionText(const Row& row) const;
  // A ticked recipe that does not run before a person has seen what it removes.
  bool IsUnseen(const Row& row) const;
  bool HasTicked(const std::function<bool(const ListSection::Row&)>& is_such) const;
  std::string LineNote(const Row& row) const;
  bool IsAbsent(const Item& item) const;
  bool NeedsRights(const Row& row) const;
  bool NeedsRights(const Item& item) const {
    return !is_administrator_ && item.guide.rights != Rights::kNone && !IsAbsent(item);
  }
  bool IsFoldedAway(const Item& item) const;
  Found FoundIn(const Row& row) const;
  int Compare(const Item& a, const Item& b) const;
  bool Precedes(const Item& a, const Item& b) const;
  std::string NoteOf(const Item& item) const;
  std::string NoteOf(const Row& heading) const;
  bool IsToldOnly(const Row& row) const {
    return row.IsHeading() && row.section >= 0 && SectionAt(row).rows.empty();
  }
  std::string CountText(uint64_t count) const;
  std::string StaysText(uint64_t count) const;
  std::string GroupDetails(const Row& heading) const;

  Machine machine_;
  Settings settings_;
  Selection& selection_;
  bool is_administrator_;
  std::vector<Row> rows_;
  std::array<bool, 4> is_open_{};  // by group: what is folded away is shown
  std::optional<RowOrder<ItemColumn>> order_;
  std::array<Found, kItemCount> found_{};  // by run order, from 0
  std::vector<ListSection> sections_;
  std::map<std::string, Found> of_rules_;  // of their rows
  const RunState* look_ = nullptr;
  size_t taken_in_ = 0;  // of its entries
};

// How what is chosen goes: "deleted for good", in English.
std::string_view RemovalText(int16_t removal_mode);

}  // namespace quellix
