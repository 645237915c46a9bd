// The rows beside the items in the list of all that can be cleaned.
#include "app/item_list.h"

namespace quellix {

void ItemList::SetSections(std::vector<ListSection> sections) {
  sections_ = std::move(sections);
  Refresh();
}

NameTicks& ItemList::TicksIn(const ListSection& section) const {
  return section.kind == ListSection::Kind::kBrowser ? selection_.browsers()
                                                     : selection_.cleaners();
}

bool ItemList::IsTicked(const Row& row) const {
  return TicksIn(SectionAt(row)).IsTicked(LineAt(row).name);
}

const ItemList::Found& ItemList::FoundOf(const std::string& rule) const {
  static const Found kNothing;
  const auto found = of_rules_.find(rule);
  return found == of_rules_.end() ? kNothing : found->second;
}

std::string ItemList::SectionText(const Row& row) const {
  return row.line < 0 ? SectionAt(row).title : LineAt(row).label;
}

std::string ItemList::LineNote(const Row& row) const {
  const Found& found = FoundOf(LineAt(row).rule);
  const bool is_cleaner = SectionAt(row).kind == ListSection::Kind::kCleaners;
  std::string note;
  if (found.stays > 0) note = is_cleaner ? "failed" : CountText(found.stays) + " will stay";
  if (found.done && found.count + found.stays == 0) note = "nothing found";
  const std::string& cost = LineAt(row).cost;
  return note + (note.empty() || cost.empty() ? "" : "; ") + cost;
}

Selection::Count ItemList::CountIn(const Row& heading) const {
  if (heading.section < 0) return selection_.CountIn(heading.group);
  Selection::Count count;
  const ListSection& section = SectionAt(heading);
  for (const ListSection::Row& line : section.rows) {
    ++count.all;
    if (TicksIn(section).IsTicked(line.name)) ++count.checked;
  }
  return count;
}

// As of a group's boxes: what is risky goes along only when the settings say so.
void ItemList::TickSection(const ListSection& section, bool ticked) {
  for (const ListSection::Row& line : section.rows) {
    const bool goes_along = selection_.selects_risky() || !line.is_risky;
    if (!ticked || goes_along) TicksIn(section).SetTicked(line.name, ticked);
  }
}

void ItemList::ToggleInSection(const Row& row) {
  const ListSection& section = SectionAt(row);
  if (row.line >= 0) return TicksIn(section).SetTicked(LineAt(row).name, !IsTicked(row));
  const Selection::Count before = CountIn(row);
  TickSection(section, true);
  if (CountIn(row).checked == before.checked) TickSection(section, false);
}

// The code of others is ticked only by itself.
void ItemList::TickAll(bool ticked) {
  selection_.SelectAll(ticked);
  for (const ListSection& section : sections_) {
    if (!ticked || section.kind == ListSection::Kind::kBrowser) TickSection(section, ticked);
  }
}

}  // namespace quellix
