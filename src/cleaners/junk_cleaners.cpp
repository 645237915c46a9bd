#include "cleaners/junk_cleaners.h"

#include <memory>
#include <utility>

#include "platform/error.h"
#include "platform/words.h"
#include "run/run_steps.h"
#include "search/results_view.h"
#include "search/search_results.h"

namespace quellix {
namespace {

// One window for all searches of a run.
SearchResults& OpenResults(CleaningContext& context) {
  if (context.state.Hidden) {
    throw NotAvailable(
        Say("Not searched: nobody is there to choose, so nothing was listed and nothing deleted."));
  }
  if (const auto open = context.state.Parts.Find<SearchResults>()) return *open;
  const auto results = std::make_shared<SearchResults>(context);
  auto* const reviewer = dynamic_cast<ResultsView*>(&context.view);
  if (reviewer == nullptr || !reviewer->OpenResults(*results)) {
    throw NotAvailable(Say("Not searched: the finds cannot be reviewed here. \"%1\" lists them.",
                           "quellixctl search"));
  }
  context.state.Parts.Put(results);
  return *results;
}

void Search(CleaningContext& context, const Item& item, JunkKind kind) {
  BeginItem(context, item);
  RequireTypes(context.machine, kind);
  SearchJunk(context, kind, OpenResults(context));
  NotePlace(context.state);
  EndRun(context, context.state.AbortRequested ? Tr("Aborted by user") : "");
}

}  // namespace

void CleanUnnecessaryFiles(CleaningContext& context, const Item& item) {
  Search(context, item, JunkKind::kUnnecessaryFiles);
}

void CleanEmptyFiles(CleaningContext& context, const Item& item) {
  Search(context, item, JunkKind::kEmptyFiles);
}

void CleanDeadShortcuts(CleaningContext& context, const Item& item) {
  Search(context, item, JunkKind::kDeadShortcuts);
}

const Item& EmptyFolderSearch() {
  static constexpr Item kItem = {0,
                                 0,
                                 "",
                                 Mark("Empty folders"),
                                 "CleanEmptyFolders",
                                 Group::kFolderFiles,
                                 Protection::kNone,
                                 Mark("Empty folders... "),
                                 Mark("There was an error in searching for empty folders. "),
                                 false,
                                 [](CleaningContext& context, const Item& item) {
                                   Search(context, item, JunkKind::kEmptyFolders);
                                 },
                                 {"Searches the drives that are chosen in the Options for folders "
                                  "in which nothing is. What is "
                                  "found is shown, and nothing goes before you say so."}};
  return kItem;
}

void FinishResults(CleaningContext& context) {
  RunState& state = context.state;
  const auto results = state.Parts.Take<SearchResults>();
  if (!results) return;
  // A stop of the search does not stop what is deleted by hand afterwards.
  const bool aborted = std::exchange(state.AbortRequested, false);
  results->EndSearch();
  context.view.SetStatus(Tr("Close the results window to end the run."));
  dynamic_cast<ResultsView&>(context.view).AwaitResults();
  state.AbortRequested = aborted;
  state.RunLog += results->LogLines();
}

}  // namespace quellix
