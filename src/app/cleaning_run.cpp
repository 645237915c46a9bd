#include "app/cleaning_run.h"

#include "app/item_catalogue.h"
#include "app/run_report.h"
#include "cleaners/junk_cleaners.h"
#include "platform/error.h"
#include "platform/text.h"
#include "run/run_steps.h"

namespace quellix {
namespace {

// The first items run to the end of the third even when the user has stopped.
constexpr int kFirstItemWithStop = 4;

// Stop has taken effect: no totals, no log window. What is then deleted by hand has a backup of its
// own.
void AbortRun(CleaningContext& context, std::string_view message) {
  context.backup.DeleteBackupArchive();
  FinishResults(context);
  CloseBackup(context);
  EndRun(context, message);
  context.view.SetCommands({});
}

// Nothing was begun. Who was not watching finds the reason in the last log.
void RefuseRun(CleaningContext& context) {
  if (context.state.Hidden) context.view.KeepReport(MakeReport(context));
  ShowIdle(context, "Nothing was removed");
}

void FinishRun(CleaningContext& context) {
  FinishResults(context);
  CloseBackup(context);
  context.view.ShowCurrentItem(nullptr);
  context.view.SetCommands({});
  if (!context.state.AbortRequested) {
    AppendSummary(context);
    const RunReport report = MakeReport(context);
    context.state.Hidden ? context.view.KeepReport(report) : context.view.ShowReport(report);
  }
  ShowIdle(context, "");
}

Outcome Clean(CleaningContext& context, const Item& item) {
  RunState& state = context.state;
  state.PlaceFound = false;
  state.WhyNothing.clear();
  try {
    item.cleaner(context, item);
    if (state.PlaceFound || state.AbortRequested) return Outcome::kCleaned;
    AppendNothingFound(context, item);
    return Outcome::kNothingFound;
  } catch (const NotAvailable& error) {
    EndRun(context, "");
    state.RunLog.append(TrimBlanks(item.log_caption)).append(" ").append(error.what()) += "\r\n";
    return Outcome::kNotPossible;
  } catch (const std::exception& error) {
    ReportCritical(context, std::string(item.error_message) + error.what());
    return Outcome::kFailed;
  }
}

void RunItem(CleaningContext& context, const Item& item) {
  if (item.cleaner) context.state.Outcomes[item.run_order - 1] = Clean(context, item);
}

// After the offline pages the status has always been spelled with a capital U.
std::string_view AbortMessage(const Item& item) {
  return item.key == std::string_view("CleanOffline") ? "Aborted by User" : "Aborted by user";
}

}  // namespace

void RunCleaning(CleaningContext& context, const Selection& selection) {
  if (!BeginRun(context, selection.CountChecked())) return RefuseRun(context);
  for (const Item& item : AllItems()) {
    if (selection.IsChecked(item)) RunItem(context, item);
    if (item.run_order >= kFirstItemWithStop && context.state.AbortRequested) {
      AbortRun(context, AbortMessage(item));
      return;
    }
  }
  FinishRun(context);
}

void RunOneItem(CleaningContext& context, const Item& item) {
  if (!BeginRun(context, 1)) return RefuseRun(context);
  RunItem(context, item);
  if (context.state.AbortRequested) {
    AbortRun(context, AbortMessage(item));
  } else {
    FinishRun(context);
  }
}

}  // namespace quellix
