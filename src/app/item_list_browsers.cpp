// The rows of browsers in the list of all that can be cleaned.
#include <algorithm>

#include "app/item_list.h"

namespace quellix {

std::string ItemList::BrowserName(const Row& row) const {
  const FoundBrowser& browser = browsers_[static_cast<size_t>(row.browser)];
  return NameOf(BrowserChoice{browser.key, browser.kinds[static_cast<size_t>(row.kind)]});
}

const ItemList::Found& ItemList::FoundOf(const std::string& browser_name) const {
  static const Found kNothing;
  const auto found = of_browsers_.find(browser_name);
  return found == of_browsers_.end() ? kNothing : found->second;
}

std::string ItemList::BrowserText(const Row& row) const {
  const FoundBrowser& browser = browsers_[static_cast<size_t>(row.browser)];
  if (row.kind < 0) return std::string(browser.label);
  return std::string(TextOf(browser.kinds[static_cast<size_t>(row.kind)]).label);
}

std::string ItemList::BrowserNote(const Row& row) const {
  const FoundBrowser& browser = browsers_[static_cast<size_t>(row.browser)];
  const Found& found = FoundOf(BrowserName(row));
  std::string note;
  if (found.stays > 0) note = CountText(found.stays) + " will stay";
  if (found.done && found.count + found.stays == 0) note = "nothing found";
  const std::string_view cost = TextOf(browser.kinds[static_cast<size_t>(row.kind)]).cost;
  return note + (note.empty() || cost.empty() ? "" : "; ") + std::string(cost);
}

Selection::Count ItemList::CountIn(const Row& heading) const {
  if (heading.browser < 0) return selection_.CountIn(heading.group);
  Selection::Count count;
  for (const Row& row : rows_) {
    if (row.browser != heading.browser || row.kind < 0) continue;
    ++count.all;
    if (selection_.browsers().IsTicked(BrowserName(row))) ++count.checked;
  }
  return count;
}

// As of a group's boxes: what is risky goes along only when the settings say so.
void ItemList::TickBrowser(size_t browser, bool ticked) {
  for (const BrowserKind kind : browsers_[browser].kinds) {
    const bool goes_along = selection_.selects_risky() || !TextOf(kind).is_risky;
    if (!ticked || goes_along)
      selection_.browsers().SetTicked(NameOf(BrowserChoice{browsers_[browser].key, kind}), ticked);
  }
}

void ItemList::ToggleBrowser(const Row& row) {
  const auto browser = static_cast<size_t>(row.browser);
  if (row.kind >= 0) {
    const std::string name = BrowserName(row);
    return selection_.browsers().SetTicked(name, !selection_.browsers().IsTicked(name));
  }
  const Selection::Count before = CountIn(row);
  TickBrowser(browser, true);
  if (CountIn(row).checked == before.checked) TickBrowser(browser, false);
}

void ItemList::TickAll(bool ticked) {
  selection_.SelectAll(ticked);
  for (size_t i = 0; i < browsers_.size(); ++i) TickBrowser(i, ticked);
}

}  // namespace quellix
