#pragma once

namespace quellix {

class SearchResults;

// A RunView whose user can review what the searches of a run find. Never called in a hidden run.
class ResultsView {
 public:
  virtual ~ResultsView() = default;
  // Opens the results window on the finds, which arrive while the run goes on. False where it
  // cannot be opened now.
  virtual bool OpenResults(SearchResults& results) = 0;
  // All searches have ended: returns when the user has closed the window. The results that were
  // opened live until then.
  virtual void AwaitResults() = 0;
};

}  // namespace quellix
