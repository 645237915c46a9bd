#include "app/cleaning_run.h"

#include <algorithm>
#include <utility>

#include "app/item_catalogue.h"
#include "app/run_checks.h"
#include "app/run_logs.h"
#include "app/run_report.h"
#include "app/system_cleaning.h"
#include "backup/expiry.h"
#include "cleaners/junk_cleaners.h"
#include "cleaners/named_places.h"
#include "cleaners/volume_items.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"
#include "plugins/recipe_run.h"
#include "run/run_log.h"
#include "run/run_steps.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {
namespace {

// The first items run to the end of the third even when the user has stopped.
constexpr int kFirstItemWithStop = 4;

RunReport ReportOf(const CleaningContext& context) {
  return MakeReport(context.state, context.machine.system.UserLocale());
}

// What is deleted by hand afterwards was never in a preview.
void EndChoice(CleaningContext& context) {
  RunState& state = context.state;
  const auto choice = std::exchange(state.Choice, nullptr);
  state.LeavesToStart = false;
  // Of a run that was stopped most was not come by.
  if (choice && !state.AbortRequested) state.RunLog += choice->Remarks();
}

// That they could not be stored is told of a whole run, whose time EndRun stores in the same file.
// `in_work` is the item that a stop has cut short; null for none.
void NoteItemsCleaned(CleaningContext& context, const Item* in_work) {
  if (context.state.IsPreview || context.state.IsForAnother) return;
  std::vector<std::string_view> keys;
  for (const Item& item : AllItems()) {
    const Outcome outcome = context.state.Outcomes[item.run_order - 1];
    if (outcome == Outcome::kCleaned && &item != in_work) keys.emplace_back(item.key);
  }
  try {
    context.settings.StoreItemsCleaned(keys);
  } catch (const Error&) {
  }
}

// The line of the keep list that keeps a file, or a folder that it lies in.
std::string_view KeptBy(const KeepList& keep, Folder& folder, const std::string& path) {
  if (keep.empty()) return {};
  const FileId id = folder.Id();
  const std::string_view line = keep.ForFile(folder, id, path);
  return line.empty() ? keep.ForFolder(id, folder.Above()) : line;
}

// Archives of traces are traces.
void RemoveOldBackups(CleaningContext& context) {
  RunState& state = context.state;
  state.Entries->BeginRule("KeepDays");
  size_t count = 0;
  const auto goes = [&](Folder& folder, const std::string& path, const FileInfo& file) {
    const std::string_view line = KeptBy(KeepOf(context), folder, path);
    if (!line.empty()) NoteKept(state, path, line);
    return line.empty() && IsChosen(state, FileEntry(path, file));
  };
  const auto removed = [&](const std::string& path, const FileInfo& file) {
    ++count;
    NoteEntry(state, FileEntry(path, file));
  };
  const auto stayed = [&](const std::string& path, const Sentence& why) {
    NoteStayed(state, path, why, Error::Kind::kOther);
  };
  RemoveExpiredBackups(context.machine, state.BackupFolder, state.KeepDays,
                       {goes, removed, stayed});
  if (count == 0) return;
  LogLine(state, Log("Backups older than %1 day(s) removed: %2", std::to_string(state.KeepDays),
                     std::to_string(count)));
}

// After the offline pages the status has always been spelled with a capital U.
std::string_view AbortMessage(const Item* item) {
  const bool offline = item != nullptr && item->key == std::string_view("CleanOffline");
  return offline ? Mark("Aborted by User") : Mark("Aborted by user");
}

// A key that was not found is not therefore gone.
void TellOutdated(CleaningContext& context) {
  for (const std::string& why : context.machine.registry.TakeOutdated()) {
    context.state.SomeErrors = true;
    LogLine(context.state, "\r\n" + Log("Not all could be looked for. %1", why));
  }
}

// Stop has taken effect: no totals, no log window. What is then deleted by hand has a backup of its
// own.
void AbortRun(CleaningContext& context, const Item* in_work, FreeSpaceCheck& free_space) {
  const std::string_view message = AbortMessage(in_work);
  DropArchive(context);
  NoteItemsCleaned(context, in_work);
  EndChoice(context);
  FinishResults(context);
  CloseBackup(context);
  LogLine(context.state, Log(message));
  free_space.Tell();
  KeepRun(context);
  context.view.KeepReport(ReportOf(context));
  EndRun(context, message);
  context.view.SetCommands({});
}

// Nothing was begun. Who was not watching finds the reason in the last log.
void RefuseRun(CleaningContext& context) {
  context.state.Choice.reset();
  context.state.LeavesToStart = false;
  if (context.state.Hidden) context.view.KeepReport(ReportOf(context));
  ShowIdle(context, Mark("Nothing was removed"));
}

void FinishRun(CleaningContext& context, FreeSpaceCheck& free_space) {
  NamePrograms(context);
  if (!context.state.AbortRequested) RemoveOldBackups(context);
  EndChoice(context);
  FinishResults(context);
  CloseBackup(context);
  context.view.ShowCurrentItem(nullptr);
  context.view.SetCommands({});
  if (!context.state.AbortRequested) {
    NoteItemsCleaned(context, nullptr);
    AppendSummary(context);
    free_space.Tell();
    TellOutdated(context);
    KeepRun(context);
    const RunReport report = ReportOf(context);
    context.state.Hidden ? context.view.KeepReport(report) : context.view.ShowReport(report);
  }
  ShowIdle(context, "");
}

Outcome Clean(CleaningContext& context, const Item& item) {
  RunState& state = context.state;
  state.PlaceFound = false;
  state.WhyNothing.clear();
  state.ItemInWork = static_cast<uint8_t>(item.run_order);
  state.Entries->BeginRule(item.run_order == 0 ? item.key : "");
  try {
    item.cleaner(context, item);
    if (state.PlaceFound || state.AbortRequested) return Outcome::kCleaned;
    AppendNothingFound(context, item);
    return Outcome::kNothingFound;
  } catch (const NotAvailable& error) {
    EndRun(context, "");
    // TRANSLATORS: A caption, and why that is not done: "Cookies... Not searched: ...".
    LogLine(state, Log("%1 %2", TrimBlanks(Log(item.log_caption)), Logged(error)));
    return Outcome::kNotPossible;
  } catch (const std::exception& error) {
    ReportCritical(context, Say("%1%2", Say(item.error_message), SentenceOf(error)));
    return Outcome::kFailed;
  }
}

bool LacksRights(const CleaningContext& context, const Item& item) {
  return item.guide.rights == Rights::kAll && !context.machine.session.HasAdministratorRights();
}

// Of a Windows that does not run, in their own order; the report names each by its key. False when
// the user has stopped.
bool RunVolumeItems(CleaningContext& context, const std::vector<const Item*>& items) {
  for (const Item& item : VolumeItems()) {
    if (std::ranges::find(items, &item) == items.end()) continue;
    Clean(context, item);
    context.state.Entries->BeginRule("");
    if (context.state.AbortRequested) return false;
  }
  return true;
}

void RunItem(CleaningContext& context, const Item& item) {
  if (LacksRights(context, item)) {
    context.state.Outcomes[item.run_order - 1] = Outcome::kNotPossible;
    LogLine(context.state, Log("%1 is skipped: it needs administrator rights.", LoggedLabel(item)));
    return;
  }
  if (item.cleaner) context.state.Outcomes[item.run_order - 1] = Clean(context, item);
  context.state.ItemInWork = 0;
}

// Those that are here; looking for them is left out where none is ticked.
std::vector<BrowserChoice> TickedBrowsers(const Machine& machine, const NameTicks& ticks) {
  std::vector<BrowserChoice> choices;
  if (ticks.empty()) return choices;
  for (const FoundBrowser& browser : FindBrowsers(machine)) {
    for (const BrowserKind kind : browser.kinds) {
      const BrowserChoice choice{browser.key, kind};
      if (ticks.IsTicked(NameOf(choice))) choices.push_back(choice);
    }
  }
  return choices;
}

std::vector<SystemCleaner> TickedCleaners(const Machine& machine, const NameTicks& ticks) {
  if (ticks.empty()) return {};
  return TickedCleaners(machine, [&](std::string_view key) { return ticks.IsTicked(key); });
}

// What ends a run.
void CleanOthers(CleaningContext& context, const OtherChoices& choices,
                 FreeSpaceCheck& free_space) {
  if (!choices.paths.empty()) CleanNamed(context, choices.paths);
  if (context.state.AbortRequested) return AbortRun(context, nullptr, free_space);
  for (const Item* const search : choices.searches) {
    Clean(context, *search);
    context.state.Entries->BeginRule("");
    if (context.state.AbortRequested) return AbortRun(context, nullptr, free_space);
  }
  for (const BrowserChoice& choice : choices.browsers) {
    CleanBrowser(context, choice);
    if (context.state.AbortRequested) return AbortRun(context, nullptr, free_space);
  }
  modPlugin::RunRecipes(context, choices.recipes);
  if (context.state.AbortRequested) return AbortRun(context, nullptr, free_space);
  for (const SystemCleaner& cleaner : choices.cleaners) {
    CleanBySystem(context, cleaner);
    if (context.state.AbortRequested) return AbortRun(context, nullptr, free_space);
  }
  FinishRun(context, free_space);
}

}  // namespace

void KeepRun(CleaningContext& context) {
  if (context.state.IsPreview) return;
  if (!context.settings.IsReadable()) return;  // how many are wanted nobody can tell
  RunState& state = context.state;
  try {
    const int most = context.settings.Load().kept_logs;
    const std::string stayed = RunLogs(context.machine).Keep(state, most);
    if (!stayed.empty())
      LogLine(state, "\r\n" + Log("Not all older runs could be removed. %1", stayed));
  } catch (const Error& error) {
    LogLine(state,
            "\r\n" + Log("This run could not be kept for later reading. %1", SentenceOf(error)));
  }
}

void RunCleaning(CleaningContext& context, const Selection& selection) {
  const OtherChoices others{TickedBrowsers(context.machine, selection.browsers()),
                            selection.recipes().Choices(),
                            TickedCleaners(context.machine, selection.cleaners())};
  const int items = selection.CountChecked() + static_cast<int>(selection.volume_items().size());
  if (!BeginRun(context, items + others.Count())) return RefuseRun(context);
  FreeSpaceCheck free_space(context);
  if (!RunVolumeItems(context, selection.volume_items())) {
    return AbortRun(context, nullptr, free_space);
  }
  for (const Item& item : AllItems()) {
    if (selection.IsChecked(item)) RunItem(context, item);
    if (item.run_order >= kFirstItemWithStop && context.state.AbortRequested) {
      AbortRun(context, &item, free_space);
      return;
    }
  }
  CleanOthers(context, others, free_space);
}

void RunOthers(CleaningContext& context, const OtherChoices& choices) {
  if (!BeginRun(context, choices.Count())) return RefuseRun(context);
  FreeSpaceCheck free_space(context);
  CleanOthers(context, choices, free_space);
}

void RunOneItem(CleaningContext& context, const Item& item) {
  if (!BeginRun(context, 1)) return RefuseRun(context);
  FreeSpaceCheck free_space(context);
  RunItem(context, item);
  if (context.state.AbortRequested) {
    AbortRun(context, &item, free_space);
  } else {
    FinishRun(context, free_space);
  }
}

}  // namespace quellix
