#include "platform/win32/win32_file_info.h"

#include "platform/win32/unique.h"

namespace quellix {
namespace {

uint64_t Join(DWORD high, DWORD low) { return uint64_t{high} << 32 | low; }

bool IsLink(DWORD attributes, DWORD tag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) &&
         (tag == 0 || IsReparseTagNameSurrogate(tag));
}

// Only a search tells the tag. It also sees files whose holder shares nothing.
std::optional<FileInfo> Find(const std::wstring& wide) {
  WIN32_FIND_DATAW found;
  const UniqueFind search(FindFirstFileExW(wide.c_str(), FindExInfoStandard, &found,
                                           FindExSearchNameMatch, nullptr, 0));
  if (!search) return std::nullopt;
  return ToFileInfo(found);
}

}  // namespace

FileInfo ToFileInfo(const WIN32_FIND_DATAW& found) {
  FileInfo info;
  info.attributes = found.dwFileAttributes;
  info.is_folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  info.is_link = IsLink(found.dwFileAttributes, found.dwReserved0);
  if (!info.is_folder && !info.is_link) info.size = Join(found.nFileSizeHigh, found.nFileSizeLow);
  info.last_write = static_cast<int64_t>(
      Join(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime));
  return info;
}

std::optional<FileInfo> LookAt(const std::wstring& wide) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(wide.c_str(), GetFileExInfoStandard, &data)) {
    return GetLastError() == ERROR_SHARING_VIOLATION ? Find(wide) : std::nullopt;
  }
  if (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) return Find(wide);
  WIN32_FIND_DATAW found{};
  found.dwFileAttributes = data.dwFileAttributes;
  found.nFileSizeHigh = data.nFileSizeHigh;
  found.nFileSizeLow = data.nFileSizeLow;
  found.ftLastWriteTime = data.ftLastWriteTime;
  return ToFileInfo(found);
}

}  // namespace quellix
