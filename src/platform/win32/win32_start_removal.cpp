// What the system removes at its next start.
#include <vector>

#include "platform/win32/unique.h"
#include "platform/win32/win32_access.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_folder.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

Error NotSafe(const std::string& shown) {
  return Error(Error::Kind::kDenied,
               Say("It is not left to the next start of Windows, as others than administrators may "
                   "change %1.",
                   shown));
}

UniqueFile OpenPath(const std::wstring& path) {
  UniqueFile folder;
  const NTSTATUS status = NtOpen(nullptr, NtPath(path) + L"\\",
                                 {.access = READ_CONTROL | FILE_READ_ATTRIBUTES,
                                  .options = FILE_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT},
                                 folder);
  if (status < 0) throw NtError(status, Cannot::kOpen, Narrow(path));
  return folder;
}

std::wstring WindowsFolder() { return L"\\\\?\\" + GrowingText(GetSystemWindowsDirectoryW); }

// From the file's folder up to that of Windows, which nobody removes, and its drive. A link is none
// of them: opened by its own path, each must be at it.
void RequireOnlyAdministrators(std::wstring path) {
  const std::wstring windows = WindowsFolder();
  const bool is_below = path.size() > windows.size() && path[windows.size()] == L'\\' &&
                        SamePath(path.substr(0, windows.size()), windows);
  if (!is_below) {
    throw Error(Error::Kind::kDenied,
                Say("It is not left to the next start of Windows, as others than administrators "
                    "may change what is outside the folder of Windows."));
  }
  while (true) {
    const size_t end = path.rfind(L'\\');
    path.resize(end);
    const bool is_root = path.ends_with(L':');
    const UniqueFile folder = OpenPath(path);
    const bool is_here = SamePath(FinalPath(folder), is_root ? path + L"\\" : path) ||
                         SamePath(FinalPath(folder), path);
    const PathPart part = is_root ? PathPart::kRoot : PathPart::kFolder;
    if (!is_here || !OnlyAdministratorsChange(folder, part)) throw NotSafe(Narrow(path.substr(4)));
    if (is_root) return;
  }
}

// Of pairs of a path and what it becomes, "" for what is removed.
std::vector<std::wstring> StartList() {
  constexpr const wchar_t* kKey = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
  constexpr const wchar_t* kValue = L"PendingFileRenameOperations";
  UniqueKey key;
  DWORD size = 0;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE, key.Put()) != ERROR_SUCCESS ||
      RegQueryValueExW(key.Get(), kValue, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) {
    return {};
  }
  std::wstring text(size / sizeof(wchar_t), L'\0');
  size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  if (RegQueryValueExW(key.Get(), kValue, nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()),
                       &size) != ERROR_SUCCESS) {
    return {};
  }
  std::vector<std::wstring> list;
  for (size_t start = 0, end; (end = text.find(L'\0', start)) != text.npos; start = end + 1)
    list.push_back(text.substr(start, end - start));
  return list;
}

bool IsOnStartList(const std::wstring& path) {
  const std::vector<std::wstring> list = StartList();
  for (size_t i = 0; i + 1 < list.size(); i += 2) {
    if (list[i + 1].empty() && SamePath(list[i], NtPath(path))) return true;
  }
  return false;
}

}  // namespace

void PutOnStartList(const std::wstring& path, std::string_view shown) {
  if (IsOnStartList(path)) return;
  if (!MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT))
    ThrowLastError(Mark("Cannot leave to the next start of Windows %1: %2"), shown);
}

// The path that is handed over is that of the file which was found in this folder.
void Win32Folder::RemoveAtStart(std::string_view name) {
  const UniqueFile file = OpenEntry(Cannot::kRemove, name,
                                    {.access = READ_CONTROL | FILE_READ_ATTRIBUTES,
                                     .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT});
  const std::wstring path = FinalPath(file);
  if (IsOpenLink(file) || path.empty()) throw NotSafe(At(name));
  RequireOnlyAdministrators(path);
  if (!OnlyAdministratorsChange(file, PathPart::kFile)) throw NotSafe(At(name));
  if (!SamePath(FinalPath(file), path)) throw NotSafe(At(name));
  PutOnStartList(path, At(name));
}

}  // namespace quellix
