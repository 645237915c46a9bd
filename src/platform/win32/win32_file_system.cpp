#include "platform/win32/win32_file_system.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/win32/stand_in.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {

std::unique_ptr<Folder> Win32FileSystem::OpenFolder(std::string_view path) {
  const auto wide = ToWidePath(path);
  if (!wide) return nullptr;
  if (IsStandIn() && LookAt(*wide).value_or(FileInfo{}).is_link) {
    throw Error(Error::Kind::kDenied, Say(Cannot::kOpen, path, Say("it is a link.")));
  }
  UniqueFile folder = OpenFolderIn({}, NtPath(*wide), path);
  if (!folder) return nullptr;
  return std::make_unique<Win32Folder>(std::move(folder), std::string(path), com_);
}

std::unique_ptr<Folder> Win32FileSystem::OpenLinked(std::string_view path) {
  const auto wide = ToWidePath(path);
  if (!wide) return nullptr;
  UniqueFile folder = OpenFolderIn({}, NtPath(*wide), path, {.options = 0});
  if (!folder) return nullptr;
  return std::make_unique<Win32Folder>(std::move(folder), std::string(path), com_);
}

std::optional<Win32Folder> Win32FileSystem::OpenFolderAbove(std::string_view path) {
  const std::string_view above = FolderPart(path);
  const auto wide = ToWidePath(above);
  if (!wide || !ToWidePath(path)) return std::nullopt;
  UniqueFile folder = OpenFolderIn({}, NtPath(*wide), above, {.options = 0});
  if (!folder) return std::nullopt;
  return std::make_optional<Win32Folder>(std::move(folder), std::string(above), com_);
}

std::optional<FileInfo> Win32FileSystem::Look(std::string_view path, Detail) {
  const auto wide = ToWidePath(path);
  auto info = wide ? LookAt(*wide) : std::nullopt;
  if (info && !info->is_folder && path.ends_with('\\')) return std::nullopt;
  return info;
}

bool Win32FileSystem::IsGone(std::string_view path) {
  const std::wstring wide = ToWidePath(path).value_or(Wide(path));
  DWORD old_mode = 0;  // a drive without its disk is no reason to ask for one
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &old_mode);
  const bool is_gone = GetFileAttributesW(wide.c_str()) == INVALID_FILE_ATTRIBUTES;
  SetThreadErrorMode(old_mode, nullptr);
  return is_gone;
}

std::optional<std::string> ReadWhole(Folder& folder, std::string_view path, uint64_t limit) {
  const auto info = folder.Look(NamePart(path));
  if (!info) return std::nullopt;
  if (info->is_link || info->is_folder)
    throw WindowsError(ERROR_ACCESS_DENIED, Cannot::kRead, path);
  const std::unique_ptr<RandomFile> file = folder.Open(NamePart(path), OpenMode::kRead);
  if (file->Size() > limit) throw WindowsError(ERROR_FILE_TOO_LARGE, Cannot::kRead, path);
  std::string bytes(file->Size(), '\0');
  bytes.resize(file->Read(0, bytes));
  return bytes;
}

std::optional<std::string> Win32FileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  std::optional<Win32Folder> folder = OpenFolderAbove(path);
  return folder ? ReadWhole(*folder, path, limit) : std::nullopt;
}

void Win32FileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  std::optional<Win32Folder> folder = OpenFolderAbove(path);
  if (!folder) throw WindowsError(ERROR_PATH_NOT_FOUND, Cannot::kWrite, path);
  folder->WriteWhole(NamePart(path), bytes);
}

}  // namespace quellix
