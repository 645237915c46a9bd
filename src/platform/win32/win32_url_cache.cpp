#include "platform/win32/win32_url_cache.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <wininet.h>

#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_time.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary wininet(L"wininet.dll");

struct Internet {
  decltype(&FindFirstUrlCacheEntryW) first =
      wininet.Find<decltype(first)>("FindFirstUrlCacheEntryW");
  decltype(&FindNextUrlCacheEntryW) next = wininet.Find<decltype(next)>("FindNextUrlCacheEntryW");
  decltype(&FindCloseUrlCache) close = wininet.Find<decltype(close)>("FindCloseUrlCache");
  decltype(&DeleteUrlCacheEntryW) remove = wininet.Find<decltype(remove)>("DeleteUrlCacheEntryW");
};

const Internet& TheInternet() {
  static const Internet internet;
  return internet;
}

UrlCacheEntry ToEntry(const INTERNET_CACHE_ENTRY_INFOW& info) {
  UrlCacheEntry entry;
  if (info.lpszSourceUrlName) entry.source = Narrow(info.lpszSourceUrlName);
  if (info.lpszLocalFileName) entry.local_file = Narrow(info.lpszLocalFileName);
  entry.type = info.CacheEntryType;
  entry.size = uint64_t{info.dwSizeHigh} << 32 | info.dwSizeLow;
  entry.hit_rate = info.dwHitRate;
  entry.last_access = FromFileTime(info.LastAccessTime);
  entry.last_modified = FromFileTime(info.LastModifiedTime);
  entry.expires = FromFileTime(info.ExpireTime);
  return entry;
}

// One entry after another, in a buffer that grows with the largest.
class CacheSearch {
 public:
  ~CacheSearch() {
    if (search_) TheInternet().close(search_);
  }

  // Null behind the last entry.
  const INTERNET_CACHE_ENTRY_INFOW* Next() {
    while (true) {
      auto* info = reinterpret_cast<INTERNET_CACHE_ENTRY_INFOW*>(buffer_.data());
      auto size = static_cast<DWORD>(buffer_.size() * sizeof buffer_[0]);
      if (Step(info, &size)) return info;
      if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return nullptr;
      buffer_.resize(size / sizeof buffer_[0] + 1);
    }
  }

 private:
  bool Step(INTERNET_CACHE_ENTRY_INFOW* info, DWORD* size) {
    info->dwStructSize = sizeof *info;
    if (search_) return TheInternet().next(search_, info, size);
    search_ = TheInternet().first(nullptr, info, size);
    return search_ != nullptr;
  }

  HANDLE search_ = nullptr;
  std::vector<uint64_t> buffer_ = std::vector<uint64_t>(512);  // aligned for the structure
};

}  // namespace

void Win32UrlCache::Enumerate(const UrlCacheVisitor& visit) {
  CacheSearch search;
  while (const auto* info = search.Next()) {
    if (!visit(ToEntry(*info))) return;
  }
  const DWORD error = GetLastError();
  if (error == ERROR_NO_MORE_ITEMS || error == ERROR_FILE_NOT_FOUND) return;
  throw WindowsError(error, Mark("Cannot read the browser cache: %2"), "");
}

bool Win32UrlCache::Delete(std::string_view source) {
  return TheInternet().remove(Wide(source).c_str());
}

}  // namespace quellix
