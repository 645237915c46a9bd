#include "browser_tools/cache_list.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "platform/locale.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/settings.h"

namespace quellix {
namespace {

// Columns of numbers and dates sort by these, not by their digits.
std::optional<uint64_t> NumberIn(const UrlCacheEntry& entry, CacheColumn column) {
  switch (column) {
    case CacheColumn::kSize:
      return entry.size;
    case CacheColumn::kHitRate:
      return entry.hit_rate;
    case CacheColumn::kLastAccess:
      return static_cast<uint64_t>(entry.last_access);
    case CacheColumn::kLastModified:
      return static_cast<uint64_t>(entry.last_modified);
    case CacheColumn::kExpires:
      return static_cast<uint64_t>(entry.expires);
    default:
      return std::nullopt;
  }
}

struct SortKey {
  uint64_t number;
  std::string text;  // in upper case
  size_t row;
  // NOLINTNEXTLINE(modernize-use-nullptr): taken for a 0 by the check
  auto operator<=>(const SortKey&) const = default;
};

}  // namespace

uint32_t CacheMask(CacheKind kind) {
  switch (kind) {
    case CacheKind::kAll:
      return kNormalEntry;
    case CacheKind::kCookies:
      return kCookieEntry | kNormalEntry;
    case CacheKind::kHistory:
      return kUrlHistoryEntry | kNormalEntry;
    case CacheKind::kUrls:
      return kHttp11Entry | kNormalEntry;
  }
  return 0;
}

CacheRow ToCacheRow(UrlCacheEntry entry) {
  CacheRow row{.entry = std::move(entry), .file_name = {}, .folder = {}};
  const std::string& file = row.entry.local_file;
  if (file.size() > 1 && file.find('\\') != std::string::npos) {
    row.file_name = NamePart(file);
    row.folder = FolderPart(file);
  }
  return row;
}

std::string FormatCacheDate(System& system, int64_t filetime) {
  const LocalTime time = filetime > 0 ? system.ToLocalTime(filetime) : LocalTime{};
  if (time.year == 0) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%02d/%02d/%04d %d:%02d:%02d %s", time.month, time.day,
                time.year, time.hour % 12 == 0 ? 12 : time.hour % 12, time.minute, time.second,
                time.hour < 12 ? "AM" : "PM");
  return text;
}

CacheList::CacheList(const Machine& machine) : machine_(machine) {}

void CacheList::LoadCacheEntries(CacheKind kind, const Pause& pause) {
  const uint32_t mask = CacheMask(kind);
  rows_.clear();
  problem_.clear();
  try {
    machine_.url_cache.Enumerate([&](const UrlCacheEntry& entry) {
      if (pause()) {
        problem_ = Tr("Reading the cache was stopped; this is what was read.");
        return false;
      }
      if ((entry.type & mask) == mask) rows_.push_back(ToCacheRow(entry));
      return true;
    });
  } catch (const Error& error) {
    problem_ = Shown(error);
  }
  if (sorted_by_) Order();
}

std::string CacheList::Status() const {
  return TrN("%1 entries", "%1 entries", rows_.size(), std::to_string(rows_.size()));
}

std::string CacheList::Text(size_t row, CacheColumn column) const {
  const CacheRow& shown = rows_[row];
  switch (column) {
    case CacheColumn::kSource:
      return shown.entry.source;
    case CacheColumn::kFileName:
      return shown.file_name;
    case CacheColumn::kFolder:
      return shown.folder;
    case CacheColumn::kSize:
      return std::to_string(shown.entry.size);
    case CacheColumn::kHitRate:
      return std::to_string(shown.entry.hit_rate);
    case CacheColumn::kLastAccess:
      return FormatCacheDate(machine_.system, shown.entry.last_access);
    case CacheColumn::kLastModified:
      return FormatCacheDate(machine_.system, shown.entry.last_modified);
    case CacheColumn::kExpires:
      return FormatCacheDate(machine_.system, shown.entry.expires);
  }
  return "";
}

void CacheList::CheckAll(bool checked) {
  for (CacheRow& row : rows_) row.checked = checked;
}

void CacheList::Sort(CacheColumn column) {
  sorted_by_ = column;
  descending_ = !descending_;
  Order();
}

void CacheList::Order() {
  const CacheColumn column = *sorted_by_;
  std::vector<SortKey> keys;
  for (size_t row = 0; row < rows_.size(); ++row) {
    const std::optional<uint64_t> number = NumberIn(rows_[row].entry, column);
    keys.push_back({number.value_or(0), number ? "" : UpCase(Text(row, column)), row});
  }
  std::sort(keys.begin(), keys.end());
  if (descending_) std::reverse(keys.begin(), keys.end());
  std::vector<CacheRow> sorted;
  for (const SortKey& key : keys) sorted.push_back(std::move(rows_[key.row]));
  rows_ = std::move(sorted);
}

void CacheList::DeleteSelected(const Pause& pause) {
  Delete(pause, [this](size_t row) { return rows_[row].checked; });
}

void CacheList::DeleteAllListed(const Pause& pause) {
  Delete(pause, [](size_t) { return true; });
}

void CacheList::DeleteRows(std::span<const size_t> rows, const Pause& pause) {
  const std::set<size_t> chosen(rows.begin(), rows.end());
  Delete(pause, [&chosen](size_t row) { return chosen.contains(row); });
}

size_t CacheList::CheckedCount() const {
  return static_cast<size_t>(std::ranges::count_if(rows_, &CacheRow::checked));
}

std::string CacheList::QuestionFor(size_t count) const {
  if (count == 0 || !Settings(machine_).Load().ask) return {};
  return TrN("Delete %1 entry of the Internet cache for good?",
             "Delete %1 entries of the Internet cache for good?", count,
             FormatCount(count, machine_.system.UserLocale()));
}

void CacheList::Delete(const Pause& pause, const std::function<bool(size_t row)>& goes) {
  std::vector<CacheRow> left;
  const size_t total = rows_.size();
  while (!rows_.empty() && !pause({total - rows_.size(), total})) {
    CacheRow& row = rows_.back();
    if (!goes(rows_.size() - 1) || !TryDelete(row)) left.push_back(std::move(row));
    rows_.pop_back();
  }
  std::move(left.rbegin(), left.rend(), std::back_inserter(rows_));
}

// A failure is shown by the row that stays, not by a message.
bool CacheList::TryDelete(const CacheRow& row) {
  try {
    return machine_.url_cache.Delete(row.entry.source);
  } catch (const Error&) {
    return false;
  }
}

}  // namespace quellix
