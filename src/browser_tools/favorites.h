#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "browser_tools/favorites_check.h"
#include "platform/machine.h"
#include "platform/pause.h"
#include "run/context.h"

namespace quellix {

// What is the matter with a favorite.
enum class FavoriteFault {
  kNone,
  kMalformed,    // it holds no address that could lead anywhere
  kDuplicate,    // the same address is there before
  kEmptyFolder,  // no file is anywhere in it
  kUnreadable,   // its file cannot be read, which says nothing of it
};

struct FavoriteRow {
  std::string path = {};   // of the file or folder; "" for one that only an exported file lists
  std::string name = {};   // as a menu shows it
  std::string place = {};  // its folder below the favorites, with "\" between; "" for the favorites
  std::string address = {};  // "" for a folder
  FavoriteFault fault = FavoriteFault::kNone;
  std::string note = {};      // why, as a part of a sentence, for a window
  AddressAnswer answer = {};  // once it was asked for
  size_t root = 0;            // which of the folders that favorites are kept in
  bool is_folder = false;
  bool checked = false;

  // Whether it does not lead anywhere, or nowhere that another one does not.
  bool IsMarked() const {
    return fault == FavoriteFault::kMalformed || fault == FavoriteFault::kDuplicate ||
           fault == FavoriteFault::kEmptyFolder || answer.state == AddressAnswer::kGone;
  }
};

enum class FavoriteColumn { kName, kPlace, kAddress, kState };
inline constexpr size_t kFavoriteColumns = 4;

// "malformed", as programs read it; "" for none.
std::string_view FaultName(FavoriteFault fault);
// "answers", likewise; "" for what was not asked.
std::string_view AnswerName(AddressAnswer::State state);

// An address as it is compared with others: what no server tells apart is the same.
std::string ComparedAddress(std::string_view address);

// The Internet shortcuts in the user's favorites, or the bookmarks of an exported file, with what
// is the matter with each. Nothing but Delete changes anything.
class Favorites {
 public:
  explicit Favorites(const Machine& machine) : machine_(machine) {}

  // Reads the favorites of the user, and those of all users, in the order of their folders. What
  // cannot be read is told by problem().
  void Load(const Pause& pause = {});
  // Reads an exported file instead, by its bytes. Throws Error where they are none.
  void LoadBookmarks(std::string_view bytes, std::string_view file, const Pause& pause = {});
  // Whether those listed are files, which can go.
  bool can_delete() const { return bookmarks_.empty(); }

  size_t RowCount() const { return rows_.size(); }
  const FavoriteRow& row(size_t row) const { return rows_[row]; }
  std::string Text(size_t row, FavoriteColumn column) const;
  void SetChecked(size_t row, bool checked) { rows_[row].checked = checked; }
  void CheckMarked();
  std::vector<size_t> CheckedRows() const;

  // Asks for the addresses, of what is malformed none; what came of it stands in the rows.
  void Ask(Http& http, const Pause& pause);

  // What to ask before that many go: "Move 3 favorites into the recycle bin?".
  std::string QuestionFor(size_t count) const;
  // Removes rows into the recycle bin, or into a backup where the settings say so: nothing is lost
  // for good. Each file must still hold the address that is listed, each folder must still be
  // empty. Those that went are listed no more. Ends with a stop.
  void Delete(CleaningContext& context, const std::vector<size_t>& rows);
  // What the last deletion left, and why: a line each.
  const std::string& stayed() const { return stayed_; }

  // "12 addresses, 3 of them marked"
  std::string Status() const;
  // Why not everything is listed, a line each; "" when it is.
  const std::string& problem() const { return problem_; }

 private:
  // Whether some file is in the folder or below, or may be, as it is not read.
  bool LoadFolder(const std::string& folder, const std::string& place, const Pause& pause);
  // Whether it was not read before, by whichever path.
  bool IsToBeRead(const std::string& folder, const std::string& place);
  void AddFile(const std::string& path, const std::string& place);
  void Judge();
  void TellProblem(const std::string& problem);

  Machine machine_;
  std::vector<FavoriteRow> rows_;
  std::string bookmarks_;  // the exported file; "" for the favorites
  std::string problem_, stayed_;
  std::set<FileId> seen_;  // folders
  size_t root_ = 0;
};

}  // namespace quellix
