#include "app/list_section.h"

#include "app/system_cleaning.h"
#include "platform/error.h"
#include "platform/words.h"

namespace quellix {

ListSection SectionOf(const FoundBrowser& browser) {
  const std::string title(browser.label);
  ListSection section{.kind = ListSection::Kind::kBrowser, .title = title};
  for (const BrowserKind kind : browser.kinds) {
    const BrowserKindText& text = TextOf(kind);
    const std::string name = NameOf(BrowserChoice{browser.key, kind}), label = Tr(text.label);
    section.rows.push_back({.name = name,
                            .rule = name,
                            .label = label,
                            .cost = Tr(text.cost),
                            .details = browser.profiles == 1
                                           ? Tr("%1 of %2, in its profile.", label, title)
                                           : Tr("%1 of %2, in all its profiles.", label, title),
                            .is_risky = text.is_risky});
  }
  return section;
}

ListSection SectionOf(const std::vector<SystemCleaner>& cleaners) {
  ListSection section{.kind = ListSection::Kind::kCleaners, .title = Tr("Windows' own cleaners")};
  for (const SystemCleaner& cleaner : cleaners) {
    const std::string& about = cleaner.description;
    section.rows.push_back(
        {.name = cleaner.key,
         .rule = RuleOf(cleaner),
         .label = cleaner.name,
         .cost = Tr(CostOf(cleaner)),
         .details = about + (about.empty() ? "" : "\r\n\r\n") +
                    Tr("Windows' own code removes it, for good: without a backup, and whatever the "
                       "keep list says."),
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
