#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/machine.h"
#include "platform/pause.h"

namespace quellix {

enum class CacheKind { kAll, kCookies, kHistory, kUrls };

// The type bits of which an entry of that kind has every one.
uint32_t CacheMask(CacheKind kind);

enum class CacheColumn {
  kSource,
  kFileName,
  kFolder,
  kSize,
  kHitRate,
  kLastAccess,
  kLastModified,
  kExpires
};
inline constexpr size_t kCacheColumns = 8;

struct CacheRow {
  UrlCacheEntry entry;
  // The entry's file in two parts, the folder with the "\" at its end; both "" when it has none.
  std::string file_name, folder;
  bool checked = false;
};

CacheRow ToCacheRow(UrlCacheEntry entry);

// A FILETIME in local time, as "03/14/2010 3:09:26 PM"; "" for one that was never set.
std::string FormatCacheDate(System& system, int64_t filetime);

// What the cache viewer lists and does. No function throws.
class CacheList {
 public:
  explicit CacheList(const Machine& machine);

  // Reads the entries of a kind anew, none of them checked, in the cache's order until a column was
  // sorted by. What cannot be read is left out, as is what comes behind a stop, and problem() says
  // why.
  void LoadCacheEntries(CacheKind kind, const Pause& pause = {});

  size_t RowCount() const { return rows_.size(); }
  const CacheRow& Row(size_t row) const { return rows_[row]; }
  std::string Text(size_t row, CacheColumn column) const;

  void SetChecked(size_t row, bool checked) { rows_[row].checked = checked; }
  void CheckAll(bool checked);

  // Every call turns the order around, whichever column it is.
  void Sort(CacheColumn column);
  std::optional<CacheColumn> sorted_by() const { return sorted_by_; }
  bool descending() const { return descending_; }

  // Delete the checked rows or all of them, from the last to the first, with a pause before each.
  // Rows whose entries could not be deleted stay.
  void DeleteSelected(const Pause& pause);
  void DeleteAllListed(const Pause& pause);
  // The same for rows of a user's choice, whether checked or not.
  void DeleteRows(std::span<const size_t> rows, const Pause& pause);
  size_t CheckedCount() const;
  // What to ask before that many entries are deleted, a verb first; "" where the settings ask for
  // no question, and for none.
  std::string QuestionFor(size_t count) const;

  std::string Status() const;
  // Why the list is not complete; "" when it is.
  const std::string& problem() const { return problem_; }

 private:
  void Order();
  void Delete(const Pause& pause, const std::function<bool(size_t row)>& goes);
  bool TryDelete(const CacheRow& row);

  Machine machine_;
  std::vector<CacheRow> rows_;
  std::optional<CacheColumn> sorted_by_;
  bool descending_ = false;
  std::string problem_;
};

}  // namespace quellix
