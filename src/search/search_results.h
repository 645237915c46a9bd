#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/context.h"
#include "run/path_list.h"
#include "run/row_order.h"
#include "search/junk_search.h"

namespace quellix {

enum class ResultColumn { kName, kBytes, kDateTime, kAttribute, kPath, kFileType, kCategory };
inline constexpr size_t kResultColumns = 7;

// The finds of a run's junk searches, for a user to look through, tick and delete. Hundreds of
// thousands are held, so a find costs little more than its name.
//
// A row is a find that is shown, by its place from 0. Finds that come in while a search runs are
// shown from the next TakeNew on. What a filter hides is neither ticked nor deleted by any command.
class SearchResults : public ResultSink {
 public:
  // The context must outlive it. A search is running.
  explicit SearchResults(CleaningContext& context) : context_(context) {}

  void Add(ResultRow row) override;
  // Shows what came in meanwhile; true when that was anything.
  bool TakeNew();
  void EndSearch();
  bool searching() const { return searching_; }
  bool deleting() const { return deleting_; }
  // How far the deletion in work is.
  const FileProgress& progress() const { return context_.state.Files; }
  // What a stop left of the last deletion: "Stopped: 120 of 30,000 deleted, 3.4 MB."; "" without
  // one.
  const std::string& stopped() const { return stopped_; }
  // Ends the search or the deletion that is in work, at its next pause.
  void Abort();

  size_t RowCount() const { return view_.size(); }
  std::string Text(size_t row, ResultColumn column) const;
  std::string PathOf(size_t row) const;
  uint64_t SizeOf(size_t row) const { return finds_[view_[row]].bytes; }
  bool IsTicked(size_t row) const { return finds_[view_[row]].ticked; }
  void SetTicked(size_t row, bool ticked);
  void TickAll(bool ticked);
  // Whether the last attempt to delete it failed, and why.
  bool HasFailed(size_t row) const { return failures_.contains(view_[row]); }
  std::string FailureReason(size_t row) const;

  // By what the column means: numbers, times, texts without regard to case. Rows that are equal
  // stay in their order; the same column again turns it around.
  void Sort(ResultColumn column);
  const std::optional<RowOrder<ResultColumn>>& order() const { return order_; }
  // Shows the rows whose path holds `text` in any case, and new ones as they come; "" all.
  void SetFilter(std::string_view text);

  // Delete the ticked rows, or all, from the first to the last. Rows that failed stay, without
  // their tick. Nothing happens while a search or a deletion is in work. Sorting and filtering
  // meanwhile is fine; a row that is unticked before its turn stays.
  void DeleteTicked();
  void DeleteAll();
  // The same for rows of a user's choice, which are ticked for it.
  void DeleteRows(const std::vector<size_t>& rows);
  // What to ask before that many finds are deleted: "Delete 3 files (1.20 KB)?", a verb first; ""
  // where the settings ask for no question, and for no find.
  std::string QuestionForTicked() const;
  std::string QuestionForAll() const;
  std::string QuestionForRows(const std::vector<size_t>& rows) const;

  // "Total Files: 12", after a deletion "Files Found: 12": what is left, hidden rows included.
  std::string CountLine() const;
  // Whether some file could not be removed by the last deletion.
  bool SomeFailed() const { return some_failed_; }

  // Why no row is shown, and what to do.
  std::string WhyEmpty() const;
  // A line for each category, with what was deleted of it.
  std::string LogLines() const;

  size_t MemoryHeld() const;  // bytes

 private:
  struct Find {
    uint64_t bytes;
    int64_t last_write;
    uint32_t folder;
    uint32_t attributes;
    JunkKind kind;
    bool ticked;
  };
  struct Total {
    int32_t files = 0;
    double bytes = 0;
  };
  using Index = uint32_t;  // of finds_

  std::string_view Folder(Index find) const { return folders_[finds_[find].folder]; }
  std::string_view Extension(Index find) const;
  int Compare(Index a, Index b) const;
  void SortView(size_t sorted);
  void RankFolders();
  bool PassesFilter(Index find);
  std::vector<Index> Ticked() const;
  std::vector<Index> FindsOf(const std::vector<size_t>& rows) const;
  std::string QuestionFor(const std::vector<Index>& finds) const;
  void Delete(const std::vector<Index>& finds);
  void DeleteEach(const std::vector<Index>& finds);
  std::vector<Index> DeepestFirst(std::vector<Index> finds) const;
  double BytesOf(const std::vector<Index>& finds) const;
  bool DeleteOne(Index find);
  bool HasFoldersAlone() const { return !finds_.empty() && folder_finds_ == finds_.size(); }
  size_t DepthOf(Index find) const;

  CleaningContext& context_;
  PathList folders_, names_;
  std::vector<uint32_t> folder_ranks_;  // of folders_, when the paths were sorted last
  std::vector<Find> finds_;
  std::vector<Index> view_;
  size_t taken_ = 0;  // finds that have been shown or filtered out
  size_t left_ = 0;   // finds that are not deleted
  size_t folder_finds_ = 0;
  std::map<Index, std::string> failures_;
  std::vector<bool> gone_;
  std::optional<RowOrder<ResultColumn>> order_;
  std::string stopped_;
  std::string filter_;      // in upper case
  std::string upper_path_;  // of the find that was filtered last
  std::array<Total, 4> totals_;
  bool searching_ = true, deleting_ = false, has_deleted_ = false, some_failed_ = false;
};

}  // namespace quellix
