#include "platform/win32/win32_file_system.h"

#include <string>

#include "platform/path.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_random_file.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

UniqueFind StartSearch(std::wstring wide, WIN32_FIND_DATAW& found) {
  if (!wide.ends_with(L'\\')) wide += L'\\';
  wide += L'*';
  UniqueFind search(FindFirstFileExW(wide.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                     nullptr, FIND_FIRST_EX_LARGE_FETCH));
  // Some network servers know neither the level nor the flag.
  if (!search && GetLastError() == ERROR_INVALID_PARAMETER) {
    search.Reset(FindFirstFileW(wide.c_str(), &found));
  }
  return search;
}

bool IsDots(const wchar_t* name) {
  return name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
}

bool Visit(const WIN32_FIND_DATAW& found, Detail detail, const EntryVisitor& visit) {
  const std::string name = Narrow(found.cFileName);
  Entry entry{name, ToFileInfo(found)};
  if (detail == Detail::kKind) {
    const FileInfo all = std::exchange(entry.info, {});
    entry.info.is_folder = all.is_folder;
    entry.info.is_link = all.is_link;
  }
  return visit(entry);
}

// Where the system removes or renames a link's target instead of the link, as Wine does with Unix
// symlinks, an opened link bears its target's path; it is then left alone.
void CheckActsOnItself(const std::wstring& wide, std::string_view action, std::string_view path) {
  const UniqueFile itself = OpenItself(wide, FILE_READ_ATTRIBUTES, kShareAll);
  const UniqueFile parent(CreateFileW(wide.substr(0, wide.rfind(L'\\') + 1).c_str(),
                                      FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!itself || !parent) ThrowLastError(action, path);
  if (SamePath(FinalPath(itself), FinalPath(parent) + wide.substr(wide.rfind(L'\\')))) return;
  throw Error(Error::Kind::kDenied, "Cannot " + std::string(action) + " " + std::string(path) +
                                        ": this system would change the link's target.");
}

FileInfo LookOrThrow(const std::wstring& wide, std::string_view action, std::string_view path) {
  const auto info = LookAt(wide);
  if (!info) ThrowLastError(action, path);
  if (info->is_link) CheckActsOnItself(wide, action, path);
  return *info;
}

// Tries `remove`; when only the read-only attribute was in its way, clears it and tries once more.
template <typename Remove>
void RemoveWhateverItsAttributes(Remove remove, const std::wstring& wide, std::string_view path) {
  if (remove(wide.c_str())) return;
  const DWORD error = GetLastError();
  const DWORD attributes = GetFileAttributesW(wide.c_str());
  const bool read_only = error == ERROR_ACCESS_DENIED && attributes != INVALID_FILE_ATTRIBUTES &&
                         (attributes & FILE_ATTRIBUTE_READONLY);
  if (!read_only) throw WindowsError(error, "remove", path);
  SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (!remove(wide.c_str())) ThrowLastError("remove", path);
}

}  // namespace

bool Win32FileSystem::Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) {
  const auto wide = ToWidePath(folder);
  if (!wide) return false;
  const auto info = LookAt(*wide);
  if (!info || !info->is_folder || info->is_link) return false;
  WIN32_FIND_DATAW found;
  const UniqueFind search = StartSearch(*wide, found);
  // An empty drive has no entries at all, not even ".".
  if (!search) return GetLastError() == ERROR_FILE_NOT_FOUND;
  do {
    if (!IsDots(found.cFileName) && !Visit(found, detail, visit)) break;
  } while (FindNextFileW(search.Get(), &found));
  return true;
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

void Win32FileSystem::SetAttributes(std::string_view path, uint32_t attributes) {
  const std::wstring wide = WidePath("change", path);
  anchor_.CheckParentOf(path);
  const uint32_t settable = attributes & (kReadOnly | kHidden | kSystem | kArchive);
  if (!SetFileAttributesW(wide.c_str(), settable ? settable : FILE_ATTRIBUTE_NORMAL)) {
    ThrowLastError("change", path);
  }
}

void Win32FileSystem::RemoveFile(std::string_view path) {
  const std::wstring wide = WidePath("remove", path);
  anchor_.CheckParentOf(path);
  RemoveWhateverItsAttributes(DeleteFileW, wide, path);
}

void Win32FileSystem::RemoveFolder(std::string_view path) {
  const std::wstring wide = WidePath("remove", path);
  anchor_.CheckParentOf(path);
  anchor_.ReleaseBelow(path);
  if (!LookOrThrow(wide, "remove", path).is_folder) {
    throw WindowsError(ERROR_DIRECTORY, "remove", path);
  }
  RemoveWhateverItsAttributes(RemoveDirectoryW, wide, path);
}

void Win32FileSystem::Rename(std::string_view from, std::string_view to) {
  const std::wstring wide_from = WidePath("rename", from), wide_to = WidePath("rename", to);
  anchor_.CheckParentOf(to);
  anchor_.CheckParentOf(from);
  anchor_.ReleaseBelow(from);
  LookOrThrow(wide_from, "rename", from);
  if (!MoveFileExW(wide_from.c_str(), wide_to.c_str(), 0)) ThrowLastError("rename", from);
}

std::unique_ptr<RandomFile> Win32FileSystem::Open(std::string_view path, OpenMode mode) {
  anchor_.CheckParentOf(path);
  return std::make_unique<Win32RandomFile>(path, mode);
}

void Win32FileSystem::CreateFolder(std::string_view path) {
  const std::wstring wide = WidePath("make", path);
  anchor_.CheckParentOf(path);
  if (CreateDirectoryW(wide.c_str(), nullptr)) return;
  const DWORD error = GetLastError();
  const auto info = LookAt(wide);
  if (!info || !info->is_folder || info->is_link) throw WindowsError(error, "make", path);
}

std::optional<std::string> Win32FileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  const auto wide = ToWidePath(path);
  const auto info = wide ? LookAt(*wide) : std::nullopt;
  if (!info) return std::nullopt;
  return ReadWhole(*wide, *info, path, limit);
}

std::string Win32FileSystem::RealPath(std::string_view path) {
  const std::optional<std::wstring> wide = ToWidePath(path);
  if (!wide) return std::string(path);
  const UniqueFile folder(CreateFileW(wide->c_str(), 0,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const std::string real = folder ? Narrow(FinalPath(folder)) : "";
  if (real.starts_with("\\\\?\\UNC\\")) return "\\\\" + real.substr(8);
  return real.starts_with("\\\\?\\") ? real.substr(4) : std::string(path);
}

void Win32FileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  const std::wstring wide = WidePath("write", path);
  if (LookAt(wide).value_or(FileInfo{}).is_link)
    throw WindowsError(ERROR_ACCESS_DENIED, "write", path);
  ReplaceWhole(wide, path, bytes);
}

}  // namespace quellix
