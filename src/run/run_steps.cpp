#include "run/run_steps.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/words.h"
#include "run/run_log.h"
#include "run/working_folder.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

void ResetRun(CleaningContext& context) {
  RunState& state = context.state;
  static_cast<RunTotals&>(state) = {};
  state.Keep.reset();
  state.Places.reset();
  state.Parts.Clear();
  LoadRemovalOptions(context);
}

// While nobody knows what the user keeps, nothing goes.
bool KnowsWhatIsKept(CleaningContext& context) {
  try {
    context.state.RunLog += KeepOf(context).remarks();
    return true;
  } catch (const Error& error) {
    ReportCritical(context, Say("Nothing was removed, because the list of what is kept cannot be "
                                "read. %1",
                                SentenceOf(error)));
    return false;
  }
}

// Whether the run may begin where it is to back up. A failed backup has never kept a file from
// being deleted unless the user is strict.
bool CanBackUp(CleaningContext& context) {
  RunState& state = context.state;
  if (state.RemovalMode != kBackUp) return true;
  const Sentence why = context.backup.WhyUnusable(state.BackupFolder);
  if (why.empty()) return true;
  if (state.Strict) {
    ReportCritical(context, Say("%1 Nothing was removed.", why));
    return false;
  }
  LogLine(state, Log("%1 What is deleted has no backup.", why));
  const std::string question =
      why.shown + "\n\n" + Tr("Files would be deleted without a backup. Go on?");
  if (state.Hidden || context.view.AskToGoOn(question)) return true;
  state.AbortRequested = true;
  return false;
}

// Before it is known what is never cleaned: the program's own is known by its folder. Where that
// cannot be made, nothing is kept in it either.
void MakeOwnPlace(CleaningContext& context) try {
  MakeProgramFolder(context.machine);
} catch (const Error&) {
  return;
}

}  // namespace

void LoadRemovalOptions(CleaningContext& context) {
  RunState& state = context.state;
  context.settings.LoadDeletionSettings(state);
  if (state.FixedRemovalMode != 0) state.RemovalMode = state.FixedRemovalMode;
  state.OlderThanDays = state.FixedOlderThanDays.value_or(state.OlderThanDays);
  // Settings that cannot be read do not make logs English.
  if (context.settings.IsReadable()) SpeakInLogs(context.settings.Load().log_in_language);
}

bool BeginRun(CleaningContext& context, int items) {
  ResetRun(context);
  if (!KnowsWhatIsKept(context)) return false;
  MakeOwnPlace(context);
  if (!CanBackUp(context)) return false;
  context.view.SetCommands({.clean = false, .stop = true, .menus = false});
  context.view.SetStatus(Tr("Working..."));
  context.state.Progress = {.visible = true, .max = items, .value = 0};
  context.view.SetProgress(context.state.Progress);
  return true;
}

// The archive's directory is written last; without it the archive is repaired when it is opened.
void CloseBackup(CleaningContext& context) {
  try {
    context.backup.Close();
  } catch (const std::exception& error) {
    context.state.SomeErrors = true;
    LogLine(context.state, Log("The backup archive could not be finished: %1", SentenceOf(error)));
  }
}

void DropArchive(CleaningContext& context) {
  RunState& state = context.state;
  const std::string path(context.backup.Path());
  context.backup.DeleteBackupArchive();
  if (state.KeepOnAbort || path.empty()) return;
  const uint16_t archive = state.Entries->ArchiveNumber(path);
  for (RunEntry& entry : state.Entries->all) {
    if (entry.archive != archive) continue;
    entry.archive = 0;
    entry.way = Way::kDeleted;
    if (entry.kind != EntryKind::kFile) continue;
    --state.FilesBackedUp;
    ++state.FilesNotBackedUp;
  }
}

void ShowIdle(CleaningContext& context, std::string_view status) {
  context.view.ShowCurrentItem(nullptr);
  context.view.SetCommands({});
  context.view.SetStatus(Tr(status));
  context.state.Progress = {};
  context.view.SetProgress(context.state.Progress);
}

void BeginItem(CleaningContext& context, const Item& item) {
  context.state.Progress.visible = true;
  context.view.SetProgress(context.state.Progress);
  context.view.SetStatus(Tr("Working..."));
  context.view.SetCommands({.clean = false, .stop = true, .menus = false});
  context.view.ShowCurrentItem(&item);
}

void EndRun(CleaningContext& context, std::string_view message) {
  if (message.empty() && !context.state.IsForAnother) {
    try {
      context.view.ShowLastCleaned(context.settings.StoreLastCleaned());
    } catch (const Error& error) {
      context.state.SettingsProblem = Logged(error);
    }
  }
  context.view.SetStatus(Tr(message));
  if (context.state.AbortRequested) context.state.Progress.value = 0;
  context.state.Progress.visible = false;
  context.view.SetProgress(context.state.Progress);
  context.view.SetCommands({.clean = true, .stop = false, .menus = false});
  context.view.ShowCurrentItem(nullptr);
}

void ReportCritical(CleaningContext& context, const Sentence& text) {
  context.state.SomeErrors = true;
  if (context.state.Hidden) {
    LogLine(context.state, Logged(text));
  } else {
    context.view.ShowCritical(text.shown);
  }
}

}  // namespace quellix
