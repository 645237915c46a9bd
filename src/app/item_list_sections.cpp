// The rows beside the items in the list of all that can be cleaned.
#include "app/item_list.h"

#include <algorithm>
#include <unordered_set>

#include "app/item_catalogue.h"
#include "app/system_cleaning.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {

void ItemList::SetSections(std::vector<ListSection> sections) {
  sections_ = std::move(sections);
  Refresh();
}

bool ItemList::IsTicked(const ListSection& section, const ListSection::Row& line) const {
  switch (section.kind) {
    case ListSection::Kind::kBrowser:
      return selection_.browsers().IsTicked(line.name);
    case ListSection::Kind::kCleaners:
      return selection_.cleaners().IsTicked(line.name);
    case ListSection::Kind::kRecipes:
      break;
  }
  return selection_.recipes().IsTicked(line.name);
}

void ItemList::SetTicked(const ListSection& section, const ListSection::Row& line, bool ticked) {
  switch (section.kind) {
    case ListSection::Kind::kBrowser:
      return selection_.browsers().SetTicked(line.name, ticked);
    case ListSection::Kind::kCleaners:
      return selection_.cleaners().SetTicked(line.name, ticked);
    case ListSection::Kind::kRecipes:
      return selection_.recipes().SetTicked(line.name, ticked);
  }
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
  const ListSection::Row& line = LineAt(row);
  const bool is_cleaner = SectionAt(row).kind == ListSection::Kind::kCleaners;
  std::string notes;
  const auto append = [&notes](std::string_view note) {
    if (!note.empty()) notes.append(notes.empty() ? "" : "; ").append(note);
  };
  if (IsUnseen(row)) append(Tr("new or changed: runs once you have seen its preview"));
  if (found.done && found.count + found.stays == 0) append(Tr("nothing found"));
  if (found.stays > 0) append(is_cleaner ? Tr("failed") : StaysText(found.stays));
  if (NeedsRights(row)) append(Tr("needs administrator rights"));
  append(line.cost);
  return notes;
}

bool ItemList::IsUnseen(const Row& row) const {
  if (SectionAt(row).kind != ListSection::Kind::kRecipes || !IsTicked(row)) return false;
  const ListSection::Row& line = LineAt(row);
  return !line.fingerprints.Has(selection_.recipes().ChoiceOf(line.name).seen);
}

std::optional<OtherChoices> ItemList::ChoiceAt(size_t row) const {
  const Row& at = rows_[row];
  if (at.line < 0) return std::nullopt;
  const std::string& name = LineAt(at).name;
  switch (SectionAt(at).kind) {
    case ListSection::Kind::kBrowser: {
      std::string problem;
      return OtherChoices{.browsers = ParseBrowserChoice(FindBrowsers(machine_), name, problem)};
    }
    case ListSection::Kind::kCleaners:
      return OtherChoices{.cleaners = TickedCleaners(
                              machine_, [&name](std::string_view key) { return key == name; })};
    case ListSection::Kind::kRecipes:
      break;
  }
  return OtherChoices{.recipes = {selection_.recipes().ChoiceOf(name)}};
}

std::string ItemList::CommandAt(size_t row) const {
  const Row& at = rows_[row];
  if (at.item != nullptr) return Tr("Clean %1", Tr(at.item->label));
  if (at.line < 0) return {};
  const std::string what = ReplaceNoCase(LineAt(at).label, "&", "&&");
  if (SectionAt(at).kind != ListSection::Kind::kBrowser) return Tr("Clean %1", what);
  // TRANSLATORS: "Clean Cookies of Google Chrome".
  return Tr("Clean %1 of %2", what, ReplaceNoCase(SectionAt(at).title, "&", "&&"));
}

bool ItemList::HasTicked(const std::function<bool(const ListSection::Row&)>& is_such) const {
  return std::ranges::any_of(sections_, [&](const ListSection& section) {
    return std::ranges::any_of(section.rows, [&](const ListSection::Row& line) {
      return IsTicked(section, line) && is_such(line);
    });
  });
}

bool ItemList::Knows(const modPlugin::ShownRecipes& shown) const {
  std::unordered_set<std::string_view> known;
  for (const ListSection& section : sections_) {
    for (const ListSection::Row& line : section.rows) known.insert(line.fingerprints.whole);
  }
  return std::ranges::all_of(shown.all, [&known](const modPlugin::ShownRecipe& recipe) {
    return known.contains(recipe.fingerprints.whole);
  });
}

bool ItemList::LacksRights() const {
  if (is_administrator_) return false;
  const auto is_such = [this](const Item& item) {
    return selection_.IsChecked(item) && NeedsRights(item);
  };
  return std::ranges::any_of(AllItems(), is_such) ||
         HasTicked([](const ListSection::Row& line) { return line.needs_administrator; });
}

Selection::Count ItemList::CountIn(const Row& heading) const {
  if (heading.section < 0) return selection_.CountIn(heading.group);
  Selection::Count count;
  const ListSection& section = SectionAt(heading);
  for (const ListSection::Row& line : section.rows) {
    ++count.all;
    if (IsTicked(section, line)) ++count.checked;
  }
  return count;
}

// As of a group's boxes: what is risky goes along only when the settings say so.
void ItemList::TickSection(const ListSection& section, bool ticked) {
  for (const ListSection::Row& line : section.rows) {
    const bool goes_along = line.goes_along && (selection_.selects_risky() || !line.is_risky);
    if (!ticked || goes_along) SetTicked(section, line, ticked);
  }
}

void ItemList::ToggleInSection(const Row& row) {
  const ListSection& section = SectionAt(row);
  if (row.line >= 0) return SetTicked(section, LineAt(row), !IsTicked(row));
  const Selection::Count before = CountIn(row);
  TickSection(section, true);
  if (CountIn(row).checked == before.checked) TickSection(section, false);
}

// The code of others is ticked only by itself.
void ItemList::TickAll(bool ticked) {
  selection_.SelectAll(ticked);
  for (const ListSection& section : sections_) {
    if (!ticked || section.kind != ListSection::Kind::kCleaners) TickSection(section, ticked);
  }
}

}  // namespace quellix
