#include "app/entry_list.h"

#include <algorithm>
#include <map>

#include "app/item_catalogue.h"
#include "app/preview_run.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/plugin_list.h"
#include "run/removal.h"

namespace quellix {
namespace {

constexpr const char* kTitles[] = {Mark("Place"),      Mark("What"), Mark("Size"), Mark("Modified"),
                                   Mark("Cleaned as"), Mark("Fate"), Mark("Note")};

std::string_view FateText(const RunEntry& entry, bool is_preview) {
  if (entry.fate == Fate::kStayed) return is_preview ? Mark("stays") : Mark("stayed");
  if (entry.fate == Fate::kKept) return is_preview ? Mark("is kept") : Mark("kept");
  switch (entry.way) {
    case Way::kRecycled:
      return is_preview ? Mark("to the recycle bin") : Mark("in the recycle bin");
    case Way::kWiped:
      return is_preview ? Mark("to be wiped") : Mark("wiped");
    case Way::kBackedUp:
      return is_preview ? Mark("to be backed up, then deleted") : Mark("backed up, then deleted");
    case Way::kDeleted:
      break;
  }
  return is_preview ? Mark("to be deleted") : Mark("deleted");
}

// A plug-in, a line of a list, the line that keeps it, the reason, the archive.
std::string NoteText(const RunEntries& entries, const RunEntry& entry, bool is_preview) {
  const std::string rule = modPlugin::ShownName(entries.rules[entry.rule]);
  const std::string& archive = entries.archives[entry.archive];
  std::string note = entries.NoteOf(entry).shown;
  // TRANSLATORS: What the keep list has kept: %1 is that line of it.
  if (entry.fate == Fate::kKept) note = Tr("by the line %1", note);
  if (!rule.empty()) note = rule + (note.empty() ? "" : ": " + note);
  if (archive.empty() || is_preview) return note;
  // TRANSLATORS: %1 is an archive.
  const std::string in = Tr("in %1", archive);
  return note.empty() ? in : note + "; " + in;
}

// What an entry lies in: its folder, its key, or of what lies in none its kind.
std::pair<EntryKind, std::string_view> PlaceAround(const RunEntry& entry) {
  const bool is_value = entry.kind == EntryKind::kRegistryValue;
  const bool is_key = is_value || entry.kind == EntryKind::kRegistryKey;
  const size_t end = is_value ? entry.place.size() : entry.place.rfind('\\');
  if (end == std::string::npos || entry.kind == EntryKind::kCacheEntry)
    return {EntryKind::kCacheEntry, KindText(entry.kind)};
  return {is_key ? EntryKind::kRegistryKey : EntryKind::kFolder,
          std::string_view(entry.place).substr(0, end)};
}

}  // namespace

EntryList::EntryList(System& system, std::shared_ptr<const RunEntries> entries, bool is_preview)
    : system_(system),
      entries_(std::move(entries)),
      is_preview_(is_preview),
      unticked_(entries_->all.size()) {
  CountAll();
  List();
}

void EntryList::Grow() {
  const Index known = static_cast<Index>(unticked_.size());
  unticked_.resize(entries_->all.size());
  for (Index entry = known; entry < unticked_.size(); ++entry) Count(entry, 1);
  AddAll(known);
}

void EntryList::Settle() {
  if (order_ || is_grouped_) List();
}

void EntryList::AddAll(Index from) {
  for (Index entry = from; entry < unticked_.size(); ++entry) {
    if (PassesFilter(entry)) view_.push_back(entry);
  }
}

void EntryList::List() {
  view_.clear();
  headings_.clear();
  AddAll(0);
  if (order_) Order();
  if (is_grouped_) AddHeadings();
}

void EntryList::Order() {
  const RunColumn column = order_->column;
  const bool is_text = column == RunColumn::kKind || column == RunColumn::kItem ||
                       column == RunColumn::kFate || column == RunColumn::kNote;
  if (is_text) return OrderByText();
  SortRows(view_, 0, order_->descending,
           [this](Index a, Index b) { return Compare(entries_->all[a], entries_->all[b]); });
}

// Many entries have the same text in such a column: it is made once for each, and few are compared.
void EntryList::OrderByText() {
  struct Before {
    bool operator()(const std::string& a, const std::string& b) const {
      return CompareNoCase(a, b) < 0;
    }
  };
  std::map<std::string, std::vector<Index>, Before> rows;
  auto last = rows.end();
  for (const Index index : view_) {
    std::string text = TextOf(entries_->all[index], order_->column);
    if (last == rows.end() || last->first != text) last = rows.try_emplace(std::move(text)).first;
    last->second.push_back(index);
  }
  view_.clear();
  const auto append = [this](const auto& row) {
    view_.insert(view_.end(), row.second.begin(), row.second.end());
  };
  if (order_->descending) {
    std::for_each(rows.rbegin(), rows.rend(), append);
  } else {
    std::for_each(rows.begin(), rows.end(), append);
  }
}

void EntryList::CountAll() {
  totals_ = {};
  for (Index entry = 0; entry < unticked_.size(); ++entry) Count(entry, 1);
}

// Adds an entry to the totals, or with -1 takes it away.
void EntryList::Count(Index index, int sign) {
  const RunEntry& entry = entries_->all[index];
  if (!IsInScope(entry)) return;
  const auto step = static_cast<uint64_t>(int64_t{sign});
  if (entry.fate == Fate::kStayed) totals_.stayed += step;
  if (entry.fate == Fate::kKept) totals_.kept += step;
  if (entry.fate != Fate::kRemoved || unticked_[index]) return;
  totals_.going += step;
  if (CountsAsFiles(entry)) totals_.files += step * entry.count;
  totals_.not_listed += step * (entry.count - 1u);
  totals_.bytes += step * entry.bytes;
}

// By name; those of one heading stay in their order.
void EntryList::AddHeadings() {
  std::map<std::string, std::pair<Heading, std::vector<Index>>> groups;
  decltype(groups)::iterator last = groups.end();
  std::string_view last_place;  // most entries lie where the one before does
  for (const Index index : view_) {
    const RunEntry& entry = entries_->all[index];
    const auto [kind, place] = PlaceAround(entry);
    if (last == groups.end() || place != last_place) {
      last = groups.try_emplace(UpCase(place)).first;
      last_place = place;
    }
    auto& [heading, members] = last->second;
    if (members.empty()) heading.place = {.kind = kind, .place = std::string(place)};
    ++heading.count;
    if (entry.fate == Fate::kRemoved) heading.place.bytes += entry.bytes;
    members.push_back(index);
  }
  view_.clear();
  for (auto& [name, group] : groups) {
    view_.push_back(kHeadings + static_cast<Index>(headings_.size()));
    headings_.push_back(std::move(group.first));
    view_.insert(view_.end(), group.second.begin(), group.second.end());
  }
}

void EntryList::SetGrouped(bool grouped) {
  is_grouped_ = grouped;
  List();
}

void EntryList::ShowScope(const std::optional<EntryScope>& scope) {
  scope_ = scope;
  in_scope_.clear();
  CountAll();
  List();
}

std::string EntryList::HeadingText(size_t row, RunColumn column) const {
  const Heading& heading = headings_[view_[row] - kHeadings];
  const Locale locale = system_.UserLocale();
  if (column == RunColumn::kPlace) return heading.place.place;
  if (column == RunColumn::kBytes) {
    return FormatSize(static_cast<double>(heading.place.bytes), 2, true, locale);
  }
  if (column != RunColumn::kKind) return {};
  return TrN("%1 entry", "%1 entries", heading.count, FormatCount(heading.count, locale));
}

std::string_view EntryList::ItemText(const RunEntry& entry) const {
  if (entry.item == 0) return {};
  return AllItems()[static_cast<size_t>(entry.item) - 1].label;
}

std::string EntryList::Text(size_t row, RunColumn column) const {
  return IsHeading(row) ? HeadingText(row, column) : TextOf(At(row), column);
}

std::string EntryList::TextOf(const RunEntry& entry, RunColumn column) const {
  switch (column) {
    case RunColumn::kPlace: {
      const std::string place = PlaceText(entry);
      return place.empty() ? Tr(KindText(entry.kind)) : place;
    }
    case RunColumn::kKind:
      return Tr(KindText(entry.kind));
    case RunColumn::kBytes:
      if (entry.last_write == 0 && entry.bytes == 0) return {};  // nobody has looked
      return FormatSize(static_cast<double>(entry.bytes), 2, true, system_.UserLocale());
    case RunColumn::kModified:
      if (entry.last_write == 0) return {};
      return FormatDateTime(system_.ToLocalTime(entry.last_write), system_.UserLocale());
    case RunColumn::kItem:
      return ReplaceNoCase(Tr(ItemText(entry)), "&&", "&");
    case RunColumn::kFate:
      return Tr(FateText(entry, is_preview_));
    case RunColumn::kNote:
      break;
  }
  return NoteText(*entries_, entry, is_preview_);
}

int EntryList::Compare(const RunEntry& a, const RunEntry& b) const {
  if (order_->column == RunColumn::kBytes) return CompareNumbers(a.bytes, b.bytes);
  if (order_->column == RunColumn::kModified) return CompareNumbers(a.last_write, b.last_write);
  const int order = CompareNoCase(a.place, b.place);
  return order != 0 ? order : CompareNoCase(a.part, b.part);
}

void EntryList::Sort(RunColumn column) {
  TurnOrder(order_, column);
  if (is_grouped_) return List();
  Order();
}

bool EntryList::IsInScope(const RunEntry& entry) const {
  if (!scope_) return true;
  if (entry.item != 0) return scope_->items[entry.item - 1u];
  return entry.rule != 0 && IsRuleInScope(entry.rule);
}

// Thousands of rules name a million entries.
bool EntryList::IsRuleInScope(size_t rule) const {
  if (in_scope_.size() <= rule) in_scope_.resize(entries_->rules.size());
  std::optional<bool>& is_in = in_scope_[rule];
  if (!is_in) is_in = scope_->rules.contains(entries_->rules[rule]);
  return *is_in;
}

bool EntryList::PassesFilter(Index index) const {
  const RunEntry& entry = entries_->all[index];
  if (!IsInScope(entry)) return false;
  if (filter_.empty()) return true;
  const auto holds = [this](std::string_view text) {
    return UpCase(text).find(filter_) != std::string::npos;
  };
  const std::string& rule = entries_->rules[entry.rule];
  if (holds(entry.place) || holds(entry.part) || holds(rule)) return true;
  if (!rule.empty() && holds(modPlugin::ShownName(rule))) return true;
  return !entry.note.empty() && holds(entries_->NoteOf(entry).shown);
}

void EntryList::SetFilter(std::string_view text) {
  filter_ = UpCase(text);
  List();
}

std::pair<size_t, size_t> EntryList::Below(size_t row) const {
  return {row + 1, row + 1 + headings_[view_[row] - kHeadings].count};
}

// A heading is ticked when something below it is.
bool EntryList::IsTicked(size_t row) const {
  if (!IsHeading(row)) return !unticked_[view_[row]];
  const auto [first, end] = Below(row);
  for (size_t below = first; below < end; ++below) {
    if (At(below).fate == Fate::kRemoved && IsTicked(below)) return true;
  }
  return false;
}

void EntryList::SetTicked(size_t row, bool ticked) {
  if (IsHeading(row)) {
    const auto [first, end] = Below(row);
    for (size_t below = first; below < end; ++below) SetTicked(below, ticked);
    return;
  }
  if (!is_preview_ || At(row).fate != Fate::kRemoved || ticked == IsTicked(row)) return;
  if (!ticked) Count(view_[row], -1);
  unticked_[view_[row]] = !ticked;
  if (ticked) Count(view_[row], 1);
}

void EntryList::TickAll(bool ticked) {
  for (size_t row = 0; row < RowCount(); ++row) SetTicked(row, ticked);
}

std::shared_ptr<RunChoice> EntryList::Choice(std::span<const size_t> besides) const {
  const auto is_ticked = [this](size_t entry) { return !unticked_[entry]; };
  return std::make_shared<RunChoice>(*entries_, is_ticked, besides);
}

std::string EntryList::Question() const {
  return QuestionBefore(*entries_, system_.UserLocale(),
                        [this](size_t entry) { return !unticked_[entry]; });
}

std::string EntryList::Summary() const {
  const auto [going, files, not_listed, bytes, stayed, kept] = totals_;
  const Locale locale = system_.UserLocale();
  const auto count = [&](uint64_t number) { return FormatCount(number, locale); };
  std::string size = FormatSize(static_cast<double>(bytes), 2, true, locale);
  // TRANSLATORS: %2 is a size.
  if (not_listed > 0) size = TrN("%1 file, %2", "%1 files, %2", files, count(files), size);
  // TRANSLATORS: %2 is a size, or "12 files, 1.40 GB".
  std::string text = is_preview_ ? TrN("%1 entry to be removed, %2", "%1 entries to be removed, %2",
                                       going, count(going), size)
                                 : TrN("%1 entry removed, %2", "%1 entries removed, %2", going,
                                       count(going), size);
  const auto add = [&text](const std::string& part) { text += "; " + part; };
  if (stayed > 0 && is_preview_) add(TrN("%1 will stay", "%1 will stay", stayed, count(stayed)));
  if (stayed > 0 && !is_preview_) add(TrN("%1 stayed", "%1 stayed", stayed, count(stayed)));
  if (kept > 0) add(TrN("%1 kept", "%1 kept", kept, count(kept)));
  const uint64_t left_out = entries_->left_out;
  if (left_out > 0) add(TrN("%1 not listed", "%1 not listed", left_out, count(left_out)));
  return text + ".";
}

std::string EntryList::ToText() const {
  std::string text;
  for (size_t c = 0; c < kRunColumns; ++c) text.append(c == 0 ? "" : "\t").append(Tr(kTitles[c]));
  text += "\r\n";
  for (size_t row = 0; row < RowCount(); ++row) {
    for (size_t c = 0; c < kRunColumns; ++c)
      text.append(c == 0 ? "" : "\t").append(Text(row, RunColumn(c)));
    text += "\r\n";
  }
  return text;
}

}  // namespace quellix
