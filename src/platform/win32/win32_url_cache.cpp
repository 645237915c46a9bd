#include "platform/win32/win32_url_cache.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <wininet.h>

#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

using UniqueSearch = Unique<NullHandleTraits<HANDLE, FindCloseUrlCache>>;

// One entry and the texts that WinINet stores behind it; grows as the entries need.
class EntryBuffer {
 public:
  INTERNET_CACHE_ENTRY_INFOW* Entry() {
    return reinterpret_cast<INTERNET_CACHE_ENTRY_INFOW*>(bytes_.data());
  }

  // Calls `find(entry, size)`, again with the size it asks for; what it returns at last.
  template <typename Find>
  auto Fill(Find find) {
    while (true) {
      DWORD size = static_cast<DWORD>(bytes_.size() * sizeof bytes_[0]);
      const auto found = find(Entry(), &size);
      if (found || GetLastError() != ERROR_INSUFFICIENT_BUFFER) return found;
      bytes_.resize(size / sizeof bytes_[0] + 1);
    }
  }

 private:
  std::vector<uint64_t> bytes_ = std::vector<uint64_t>(1024);
};

std::string NarrowOrEmpty(const wchar_t* text) { return text == nullptr ? "" : Narrow(text); }

UrlCacheEntry ToEntry(const INTERNET_CACHE_ENTRY_INFOW& info) {
  return {.source = NarrowOrEmpty(info.lpszSourceUrlName),
          .local_file = NarrowOrEmpty(info.lpszLocalFileName),
          .type = info.CacheEntryType,
          .size = static_cast<uint64_t>(info.dwSizeHigh) << 32 | info.dwSizeLow};
}

}  // namespace

std::vector<UrlCacheEntry> Win32UrlCache::Entries() {
  std::vector<UrlCacheEntry> entries;
  EntryBuffer buffer;
  const UniqueSearch search(buffer.Fill([](INTERNET_CACHE_ENTRY_INFOW* entry, DWORD* size) {
    return FindFirstUrlCacheEntryW(nullptr, entry, size);
  }));
  if (!search) {
    const DWORD code = GetLastError();
    if (code == ERROR_NO_MORE_ITEMS || code == ERROR_FILE_NOT_FOUND) return entries;
    throw WindowsError(code, "read", "the cache of Internet Explorer");
  }
  do {
    entries.push_back(ToEntry(*buffer.Entry()));
  } while (buffer.Fill([&](INTERNET_CACHE_ENTRY_INFOW* entry, DWORD* size) {
    return FindNextUrlCacheEntryW(search.Get(), entry, size);
  }));
  return entries;
}

bool Win32UrlCache::Delete(std::string_view source) {
  return DeleteUrlCacheEntryW(Wide(source).c_str());
}

}  // namespace quellix
