#include "app/run_report.h"

#include <algorithm>

#include "app/item_catalogue.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "run/stayed.h"

namespace quellix {
namespace {

constexpr size_t kDashes = 67;

std::string SpaceGained(const RunTotals& totals, const Locale& locale) {
  return FormatSize(totals.RunSpaceGained, 2, true, locale);
}

bool Belongs(const Item& item, Category category) {
  switch (category) {
    case Category::kPlugins:
      return item.key == std::string_view("CleanPlugins");
    case Category::kRegistry:
      return item.in_registry;
    default:
      return static_cast<int>(item.group) == static_cast<int>(category);
  }
}

// Its box's text; those that two groups have are told apart.
std::string Name(const Item& item) {
  const std::string name = LoggedLabel(item);
  const bool in_browser = item.group == Group::kInternet || item.group == Group::kFirefox;
  // TRANSLATORS: What is cleaned, and of what: "Cookies (Internet Explorer)".
  return in_browser ? Log("%1 (%2)", name, Log(GroupTitle(item.group))) : name;
}

std::string TotalsText(const RunState& state, const Locale& locale) {
  return Log("Files Deleted:  %1   Space Gained:  %2", std::to_string(state.RunFilesDeleted),
             SpaceGained(state, locale));
}

}  // namespace

std::string_view CategoryTitle(Category category) {
  switch (category) {
    case Category::kPlugins:
      return Mark("Plugins");
    case Category::kRegistry:
      return Mark("System Registry");
    default:
      return GroupTitle(static_cast<Group>(category));
  }
}

std::string_view OutcomeText(Outcome outcome) {
  switch (outcome) {
    case Outcome::kCleaned:
      return Mark("Cleaned");
    case Outcome::kNothingFound:
      return Mark("Not Cleaned: nothing found");
    case Outcome::kNotPossible:
      return Mark("Not Cleaned: not possible");
    case Outcome::kFailed:
      return Mark("Not Cleaned: failed");
    case Outcome::kNotChosen:
      return Mark("Not Cleaned: not chosen");
  }
  return {};
}

std::string LoggedLabel(const Item& item) { return ReplaceNoCase(Log(item.label), "&&", "&"); }

void AppendNothingFound(CleaningContext& context, const Item& item) {
  const std::string& why = context.state.WhyNothing;
  // TRANSLATORS: %2 is a sentence: why nothing was found.
  LogLine(context.state, why.empty()
                             ? Log("%1: nothing of this kind was found.", Name(item))
                             : Log("%1: nothing of this kind was found. %2", Name(item), why));
}

void AppendSummary(CleaningContext& context) {
  const RunState& state = context.state;
  std::string& log = context.state.RunLog;
  log += "\r\n" + std::string(kDashes, '-') + "\r\n";
  log += TotalsText(state, context.machine.system.UserLocale());
  if (state.FilesBackedUp > 0) {
    log += "\r\n" + Log("Backed Up %1 file(s)", std::to_string(state.FilesBackedUp));
  }
  log += NotBackedUpLine(state);
  log += KeptLine(state);
  log += LeftToStartLine(state);
  log += WipedLine(state);
  for (const std::string_view sentence : StayedSentences(state)) {
    log.append("\r\n\r\n").append(Log(sentence));
  }
  if (!state.SettingsProblem.empty()) {
    log += "\r\n\r\n" + Log("The time of this run could not be saved. %1", state.SettingsProblem);
  }
}

std::string BriefReport(const CleaningContext& context) {
  const RunState& state = context.state;
  const auto files = static_cast<uint64_t>(std::max(state.RunFilesDeleted, 0));
  const std::string done =
      TrN("Cleaned by itself: %1 file, %2.", "Cleaned by itself: %1 files, %2.", files,
          std::to_string(files), SpaceGained(state, context.machine.system.UserLocale()));
  if (state.SomeErrors) return done + " " + Tr("Something failed; see the log.");
  if (state.FilesNotBackedUp > 0)
    return done + " " + Tr("Some files went without a backup; see the log.");
  return state.SomeFilesLocked ? done + " " + Tr("Some files stayed; see the log.") : done;
}

std::string StoppedReport(const CleaningContext& context) {
  const RunState& state = context.state;
  if (!state.AbortRequested) return {};
  const Locale& locale = context.machine.system.UserLocale();
  const auto files = static_cast<uint64_t>(std::max(state.RunFilesDeleted, 0));
  return TrN("Stopped: %1 file removed so far, %2.", "Stopped: %1 files removed so far, %2.", files,
             FormatCount(files, locale), FormatSize(state.RunSpaceGained, 1, true, locale));
}

RunReport MakeReport(const RunTotals& totals, const Locale& locale) {
  RunReport report{.log = totals.RunLog + StayedNames(totals, kNamesShown),
                   .full_log = totals.RunLog + StayedNames(totals, kNamesSaved),
                   .files = std::to_string(totals.RunFilesDeleted),
                   .space_gained = SpaceGained(totals, locale),
                   .totals = std::make_shared<RunTotals>(totals)};
  for (const Item& item : AllItems()) {
    for (size_t i = 0; i < kCategories; ++i) {
      if (!Belongs(item, static_cast<Category>(i))) continue;
      report.outcomes[i] = std::max(report.outcomes[i], totals.Outcomes[item.run_order - 1]);
    }
  }
  return report;
}

}  // namespace quellix
