#include "app/item_list.h"

#include <algorithm>

#include "app/item_catalogue.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/removal.h"

namespace quellix {
namespace {

constexpr Group kGroups[] = {Group::kFolderFiles, Group::kMiscellaneous, Group::kInternet,
                             Group::kFirefox};

std::string NameOf(const Item& item) { return ReplaceNoCase(Tr(item.label), "&&", "&"); }

// Sentences of other parts end in a full stop; here they stand in a row.
void Append(std::string& notes, std::string_view note) {
  if (note.ends_with('.')) note.remove_suffix(1);
  if (!note.empty()) notes.append(notes.empty() ? "" : "; ").append(note);
}

}  // namespace

std::string_view RemovalText(int16_t removal_mode) {
  switch (removal_mode) {
    case kRecycle:
      return Mark("moved to the recycle bin");
    case kWipe:
      return Mark("overwritten and deleted for good");
    case kBackUp:
      return Mark("backed up, then deleted");
    default:
      return Mark("deleted for good");
  }
}

ItemList::ItemList(const Machine& machine, Selection& selection)
    : machine_(machine),
      settings_(machine),
      selection_(selection),
      is_administrator_(machine.session.HasAdministratorRights()) {
  Refresh();
}

bool ItemList::IsAbsent(const Item& item) const {
  const WindowsVersion version = machine_.system.Version();
  return item.guide.last_windows != 0 && version.major > item.guide.last_windows;
}

bool ItemList::NeedsRights(const Row& row) const {
  if (row.item != nullptr) return NeedsRights(*row.item);
  return row.line >= 0 && !is_administrator_ && LineAt(row).needs_administrator;
}

bool ItemList::IsFoldedAway(const Item& item) const {
  const bool is_open = is_open_[static_cast<size_t>(item.group)];
  return !is_open && IsAbsent(item) && !selection_.IsChecked(item);
}

void ItemList::Refresh() {
  rows_.clear();
  for (const Group group : kGroups) {
    rows_.push_back({group});
    std::vector<const Item*> shown;
    int folded = 0;
    for (const Item& item : AllItems()) {
      if (item.group != group) continue;
      IsFoldedAway(item) ? void(++folded) : shown.push_back(&item);
    }
    std::ranges::stable_sort(shown,
                             [this](const Item* a, const Item* b) { return Precedes(*a, *b); });
    for (const Item* const item : shown) rows_.push_back({group, item});
    if (folded > 0) rows_.push_back({group, nullptr, folded});
  }
  for (size_t i = 0; i < sections_.size(); ++i) {
    Row row{.group = Group::kInternet, .section = static_cast<int>(i)};
    rows_.push_back(row);
    for (size_t line = 0; line < sections_[i].rows.size(); ++line) {
      row.line = static_cast<int>(line);
      rows_.push_back(row);
    }
  }
}

// Below, above or 0, by what the column in order means.
int ItemList::Compare(const Item& a, const Item& b) const {
  const Found &in_a = found_[IndexOf(a)], &in_b = found_[IndexOf(b)];
  switch (order_->column) {
    case ItemColumn::kName:
      return CompareNoCase(NameOf(a), NameOf(b));
    case ItemColumn::kBytes:
      return CompareNumbers(in_a.bytes, in_b.bytes);
    case ItemColumn::kCount:
      return CompareNumbers(in_a.count, in_b.count);
    case ItemColumn::kNote:
      break;
  }
  return CompareNoCase(NoteOf(a), NoteOf(b));
}

bool ItemList::Precedes(const Item& a, const Item& b) const {
  if (IsAbsent(a) != IsAbsent(b)) return IsAbsent(b);
  if (!order_) return false;
  return order_->descending ? Compare(b, a) < 0 : Compare(a, b) < 0;
}

void ItemList::Sort(ItemColumn column) {
  TurnOrder(order_, column);
  Refresh();
}

std::optional<size_t> ItemList::RowOf(const Item& item) const {
  const auto found = std::ranges::find(rows_, &item, &Row::item);
  if (found == rows_.end()) return std::nullopt;
  return static_cast<size_t>(found - rows_.begin());
}

// The places of sections and of their rows are others in every list that is found.
ItemList::Identity ItemList::IdentityOf(size_t row) const {
  const Row& at = rows_[row];
  Identity identity{at.group, at.item, at.folded > 0, std::nullopt, {}, at.line >= 0};
  if (at.section < 0) return identity;
  identity.kind = SectionAt(at).kind;
  identity.name = at.line < 0 ? SectionAt(at).title : LineAt(at).name;
  return identity;
}

std::optional<size_t> ItemList::RowOf(const Identity& identity) const {
  for (size_t row = 0; row < rows_.size(); ++row) {
    if (IdentityOf(row) == identity) return row;
  }
  return std::nullopt;
}

std::optional<size_t> ItemList::Find(std::string_view text, size_t from) const {
  const std::string start = UpCase(text);
  for (size_t i = 0; i < rows_.size(); ++i) {
    const size_t row = (from + i) % rows_.size();
    if (UpCase(Text(row, ItemColumn::kName)).starts_with(start)) return row;
  }
  return std::nullopt;
}

bool ItemList::IsDimmed(size_t row) const {
  const Row& at = rows_[row];
  if (at.item == nullptr) return at.folded > 0;
  return !selection_.IsEnabled(*at.item) || IsAbsent(*at.item);
}

std::optional<Ticks> ItemList::TicksOf(size_t row) const {
  const Row& at = rows_[row];
  if (at.item != nullptr) return selection_.IsChecked(*at.item) ? Ticks::kAll : Ticks::kNone;
  if (at.line >= 0) return IsTicked(at) ? Ticks::kAll : Ticks::kNone;
  if (!at.IsHeading() || IsToldOnly(at)) return std::nullopt;
  const Selection::Count count = CountIn(at);
  if (count.checked == 0) return Ticks::kNone;
  return count.checked == count.all ? Ticks::kAll : Ticks::kSome;
}

void ItemList::Toggle(size_t row) {
  const Row at = rows_[row];
  if (at.folded > 0) return SetFolded(at.group, false);
  if (at.section >= 0) return ToggleInSection(at);
  if (at.item == nullptr) {
    selection_.ToggleGroup(at.group);
    return Refresh();  // what is folded away may be ticked now
  }
  if (selection_.IsEnabled(*at.item)) {
    selection_.SetChecked(*at.item, !selection_.IsChecked(*at.item));
  }
}

void ItemList::SetFolded(Group group, bool folded) {
  is_open_[static_cast<size_t>(group)] = !folded;
  Refresh();
}

void ItemList::BeginLook(const RunState& state) {
  Forget();
  look_ = &state;
}

void ItemList::Follow() {
  if (look_ == nullptr) return;
  const std::deque<RunEntry>& entries = look_->Entries->all;
  for (; taken_in_ < entries.size(); ++taken_in_) {
    const RunEntry& entry = entries[taken_in_];
    if (entry.item == 0 && entry.rule == 0) continue;
    Found& found =
        entry.item != 0 ? found_[entry.item - 1u] : of_rules_[look_->Entries->rules[entry.rule]];
    found.looked = true;
    if (entry.fate == Fate::kStayed) ++found.stays;
    if (entry.fate != Fate::kRemoved) continue;
    found.count += entry.count;
    found.bytes += static_cast<double>(entry.bytes);
  }
  for (size_t i = 0; i < found_.size(); ++i) {
    found_[i].outcome = look_->Outcomes[i];
    found_[i].done = found_[i].outcome != Outcome::kNotChosen;
    found_[i].looked = found_[i].looked || found_[i].done;
  }
  if (!look_->AbortRequested) return;
  // The last one was not looked at to its end.
  const auto last =
      std::find_if(found_.rbegin(), found_.rend(), [](const Found& found) { return found.done; });
  if (last != found_.rend()) last->done = false;
}

void ItemList::EndLook() {
  if (look_ == nullptr) return;
  Follow();
  for (const Row& row : rows_) {  // they come last, so a stop leaves none of them whole
    if (row.line < 0 || look_->AbortRequested) continue;
    Found& found = of_rules_[LineAt(row).rule];
    found.done = IsTicked(row);
    found.looked = found.looked || found.done;
  }
  look_ = nullptr;
}

void ItemList::Forget() {
  look_ = nullptr;
  taken_in_ = 0;
  found_ = {};
  of_rules_.clear();
}

EntryScope ItemList::ScopeOf(size_t row) const {
  EntryScope scope;
  const Row& at = rows_[row];
  for (const Row& below : rows_) {
    if (below.line < 0 || below.section != at.section) continue;
    if (at.line < 0 || at.line == below.line) scope.rules.insert(LineAt(below).rule);
  }
  if (at.section >= 0) return scope;
  for (const Item& item : AllItems()) {
    const bool is_below = at.group == item.group && (at.IsHeading() || IsFoldedAway(item));
    scope.items[IndexOf(item)] = at.item ? at.item == &item : is_below;
  }
  return scope;
}

ItemList::Found ItemList::FoundIn(const Row& row) const {
  if (row.item != nullptr) return found_[IndexOf(*row.item)];
  if (row.line >= 0) return FoundOf(LineAt(row).rule);
  Found sum;
  const auto add = [&sum](const Found& found) {
    sum.looked = sum.looked || found.looked;
    sum.bytes += found.bytes;
    sum.count += found.count;
    sum.stays += found.stays;
  };
  if (row.section >= 0) {
    for (const ListSection::Row& line : SectionAt(row).rows) add(FoundOf(line.rule));
    return sum;
  }
  for (const Item& item : AllItems()) {
    const Found& found = found_[IndexOf(item)];
    if (row.IsHeading() && item.group == row.group) add(found);
  }
  return sum;
}

std::string ItemList::CountText(uint64_t count) const {
  return FormatCount(count, machine_.system.UserLocale());
}

std::string ItemList::StaysText(uint64_t count) const {
  return TrN("%1 will stay", "%1 will stay", count, CountText(count));
}

std::string ItemList::NoteOf(const Item& item) const {
  const Found& found = found_[IndexOf(item)];
  std::string notes;
  Append(notes, Tr(selection_.WhyDisabled(item)));
  if (found.outcome == Outcome::kFailed) Append(notes, Tr("failed"));
  if (found.outcome == Outcome::kNotPossible) Append(notes, Tr("not possible here"));
  if (found.stays > 0) Append(notes, StaysText(found.stays));
  if (found.outcome == Outcome::kNothingFound && !IsAbsent(item))
    Append(notes, Tr("nothing found"));
  if (IsAbsent(item)) Append(notes, Tr("nothing of it on this Windows"));
  if (NeedsRights(item)) Append(notes, Tr("needs administrator rights"));
  Append(notes, Tr(item.guide.cost));
  return notes;
}

std::string ItemList::NoteOf(const Row& heading) const {
  const Selection::Count count = CountIn(heading);
  return Tr("%1 of %2 ticked", CountText(static_cast<uint64_t>(count.checked)),
            CountText(static_cast<uint64_t>(count.all)));
}

std::string ItemList::Text(size_t row, ItemColumn column) const {
  const Row& at = rows_[row];
  const Found found = FoundIn(at);
  switch (column) {
    case ItemColumn::kName:
      if (at.item != nullptr) return NameOf(*at.item);
      if (at.section >= 0) return SectionText(at);
      if (at.IsHeading()) return Tr(GroupTitle(at.group));
      return Tr("%1 more...", CountText(static_cast<uint64_t>(at.folded)));
    case ItemColumn::kBytes:
      if (!found.looked) return {};
      return FormatSize(found.bytes, 2, true, machine_.system.UserLocale());
    case ItemColumn::kCount:
      return found.looked ? CountText(found.count) : "";
    case ItemColumn::kNote:
      break;
  }
  if (at.item != nullptr) return NoteOf(*at.item);
  if (at.line >= 0) return LineNote(at);
  if (IsToldOnly(at)) return SectionAt(at).told;
  return at.IsHeading() ? NoteOf(at) : Tr("nothing of it on this Windows");
}

std::string ItemList::GroupDetails(const Row& heading) const {
  // TRANSLATORS: %1 is "4 of 6 ticked".
  return selection_.selects_risky()
             ? Tr("%1. A click on the name, or Space, ticks the whole group, and clears it when "
                  "all is ticked.",
                  NoteOf(heading))
             // TRANSLATORS: %1 is "4 of 6 ticked".
             : Tr("%1. A click on the name, or Space, ticks the whole group but for what cannot be "
                  "had back, and clears it when all is ticked.",
                  NoteOf(heading));
}

std::string ItemList::Details(size_t row) const {
  const Row& at = rows_[row];
  if (at.folded > 0) return Tr("What only older Windows have. Space shows it.");
  if (at.line >= 0) {
    const std::string note = LineNote(at);
    return LineAt(at).details + (note.empty() ? "" : "\r\n\r\n" + Tr("Note: %1.", note));
  }
  if (IsToldOnly(at)) return SectionAt(at).told;
  if (at.item == nullptr) return GroupDetails(at);
  const ItemGuide& guide = at.item->guide;
  std::string text = Tr(guide.removes);
  const std::string notes = NoteOf(*at.item);
  if (!notes.empty()) text += "\r\n\r\n" + Tr("Note: %1.", notes);
  const std::string cleaned = settings_.ItemCleanedText(at.item->key);
  if (!cleaned.empty()) text += "\r\n\r\n" + Tr("Cleaned last: %1", cleaned);
  return text;
}

std::string ItemList::Summary() const {
  auto ticked = static_cast<uint64_t>(selection_.CountChecked());
  double bytes = 0;
  bool is_whole = true, has_looked = false;
  const auto add = [&](const Found& found) {
    bytes += found.bytes;
    is_whole = is_whole && found.done;
    has_looked = has_looked || found.looked;
  };
  for (const Item& item : AllItems()) {
    if (selection_.IsChecked(item)) add(found_[IndexOf(item)]);
  }
  for (const Row& row : rows_) {
    if (row.line < 0 || !IsTicked(row)) continue;
    ++ticked;
    add(FoundOf(LineAt(row).rule));
  }
  if (ticked == 0) return Tr("Nothing is ticked");
  const std::string count = CountText(ticked);
  if (!has_looked) return TrN("%1 item", "%1 items", ticked, count);
  const std::string size = FormatSize(bytes, 2, true, machine_.system.UserLocale());
  return is_whole
             ? TrN("%1 item, %2", "%1 items, %2", ticked, count, size)
             : TrN("%1 item, %2 found so far", "%1 items, %2 found so far", ticked, count, size);
}

}  // namespace quellix
