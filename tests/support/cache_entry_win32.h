#pragma once

#include <windows.h>
// After windows.h, whose types it uses.
#include <wininet.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace quellix {

// A real entry of the user's browser cache, until it is deleted. NORMAL_CACHE_ENTRY is added to the
// type's bits.
struct CacheEntrySeed {
  std::wstring source;
  DWORD type = 0;
  std::string bytes = "data";
  std::wstring extension = L"txt";
  bool with_file = true;
  FILETIME expires{};
  FILETIME modified{};
};

inline void Require(bool done, const char* what) {
  if (!done) throw std::runtime_error(what + (" fails: " + std::to_string(GetLastError())));
}

// Returns its file, "" without one.
inline std::filesystem::path MakeCacheEntry(const CacheEntrySeed& seed) {
  wchar_t file[MAX_PATH] = L"";
  if (seed.with_file) {
    Require(CreateUrlCacheEntryW(seed.source.c_str(), 0, seed.extension.c_str(), file, 0),
            "CreateUrlCacheEntry");
    std::ofstream(std::filesystem::path(file), std::ios::binary) << seed.bytes;
  }
  Require(CommitUrlCacheEntryW(seed.source.c_str(), seed.with_file ? file : nullptr, seed.expires,
                               seed.modified, NORMAL_CACHE_ENTRY | seed.type, nullptr, 0, nullptr,
                               nullptr),
          "CommitUrlCacheEntry");
  return file;
}

// While it lives, the entry is in use and cannot be deleted.
class UsedCacheEntry {
 public:
  explicit UsedCacheEntry(const std::wstring& source) : source_(source) {
    alignas(INTERNET_CACHE_ENTRY_INFOW) char info[16384];
    DWORD size = sizeof info;
    Require(RetrieveUrlCacheEntryFileW(
                source.c_str(), reinterpret_cast<INTERNET_CACHE_ENTRY_INFOW*>(info), &size, 0),
            "RetrieveUrlCacheEntryFile");
  }
  ~UsedCacheEntry() { UnlockUrlCacheEntryFileW(source_.c_str(), 0); }
  UsedCacheEntry(const UsedCacheEntry&) = delete;
  UsedCacheEntry& operator=(const UsedCacheEntry&) = delete;

 private:
  std::wstring source_;
};

}  // namespace quellix
