#include "app/list_section.h"

#include "app/system_cleaning.h"
#include "platform/error.h"

namespace quellix {

ListSection SectionOf(const FoundBrowser& browser) {
  const std::string title(browser.label),
      where = browser.profiles == 1 ? ", in its profile." : ", in all its profiles.";
  ListSection section{.kind = ListSection::Kind::kBrowser, .title = title};
  for (const BrowserKind kind : browser.kinds) {
    const BrowserKindText& text = TextOf(kind);
    const std::string name = NameOf(BrowserChoice{browser.key, kind}), label(text.label);
    section.rows.push_back({.name = name,
                            .rule = name,
                            .label = label,
                            .cost = std::string(text.cost),
                            .details = label + " of " + title + where,
                            .is_risky = text.is_risky});
  }
  return section;
}

ListSection SectionOf(const std::vector<SystemCleaner>& cleaners) {
  ListSection section{.kind = ListSection::Kind::kCleaners, .title = "Windows' own cleaners"};
  for (const SystemCleaner& cleaner : cleaners) {
    const std::string& about = cleaner.description;
    section.rows.push_back(
        {.name = cleaner.key,
         .rule = RuleOf(cleaner),
         .label = cleaner.name,
         .cost = std::string(CostOf(cleaner)),
         .details = about + (about.empty() ? "" : "\r\n\r\n") +
                    "Windows' own code removes it, for good: without a backup, and whatever the "
                    "keep list says.",
         .is_risky = !CostOf(cleaner).empty()});
  }
  return section;
}

std::vector<ListSection> FindSections(const Machine& machine) {
  std::vector<ListSection> sections;
  for (const FoundBrowser& browser : FindBrowsers(machine)) {
    if (browser.key != kFirefoxKey) sections.push_back(SectionOf(browser));
  }
  const auto all = TickedCleaners(machine, [](std::string_view) { return true; });
  if (!all.empty()) sections.push_back(SectionOf(all));
  return sections;
}

}  // namespace quellix
