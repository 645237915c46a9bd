#include "platform/win32/program_folders.h"

#include <shlobj.h>
#include <windows.h>

#include <cstddef>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::wstring ExecutablePath() {
  return GrowingText([](wchar_t* text, uint32_t size) {
    const DWORD length = GetModuleFileNameW(nullptr, text, size);
    return length < size ? length : size * 2;  // cut off: it does not tell the size it needs
  });
}

// What a link leads to, without the prefix of long paths.
std::wstring RealPath(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    return path;
  }
  const UniqueFile file(CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file) return path;
  const std::wstring real = GrowingText([&file](wchar_t* text, uint32_t size) {
    return GetFinalPathNameByHandleW(file.Get(), text, size, FILE_NAME_NORMALIZED);
  });
  if (real.starts_with(L"\\\\?\\UNC\\")) return L"\\" + real.substr(7);
  return real.starts_with(L"\\\\?\\") ? real.substr(4) : path;
}

std::string RoamingFolder() {
  static LazyLibrary shell32(L"shell32.dll"), ole32(L"ole32.dll");
  PWSTR path = nullptr;
  const auto find = shell32.Find<decltype(&SHGetKnownFolderPath)>("SHGetKnownFolderPath");
  const bool is_known = find(FOLDERID_RoamingAppData, KF_FLAG_DONT_VERIFY, nullptr, &path) == S_OK;
  const std::string folder = is_known ? Narrow(path) : "";
  ole32.Find<decltype(&CoTaskMemFree)>("CoTaskMemFree")(path);
  return folder;
}

// What the user is without administrator rights; none where he has the same ones anyway.
UniqueHandle PlainToken() {
  UniqueHandle token, plain;
  TOKEN_ELEVATION_TYPE type{};
  TOKEN_LINKED_TOKEN linked{};
  DWORD size = 0;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) ||
      !GetTokenInformation(token.Get(), TokenElevationType, &type, sizeof type, &size) ||
      type != TokenElevationTypeFull ||
      !GetTokenInformation(token.Get(), TokenLinkedToken, &linked, sizeof linked, &size)) {
    return plain;
  }
  const UniqueHandle owned(linked.LinkedToken);
  DuplicateToken(owned.Get(), SecurityIdentification, plain.Put());
  return plain;
}

// Nobody's token is allowed everything, and so is what cannot be found out: it was opened for that
// before.
bool IsAllowed(HANDLE object, const UniqueHandle& token, DWORD access) {
  if (!token) return true;
  constexpr SECURITY_INFORMATION kParts =
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
  DWORD size = 0;
  GetKernelObjectSecurity(object, kParts, nullptr, 0, &size);
  std::vector<std::byte> descriptor(size);
  if (!GetKernelObjectSecurity(object, kParts, descriptor.data(), size, &size)) return true;
  GENERIC_MAPPING mapping{FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                          FILE_ALL_ACCESS};
  PRIVILEGE_SET privileges{};
  DWORD privileges_size = sizeof privileges, granted = 0;
  BOOL is_allowed = FALSE;
  return !AccessCheck(descriptor.data(), token.Get(), access, &mapping, &privileges,
                      &privileges_size, &granted, &is_allowed) ||
         is_allowed;
}

bool IsReadOnlyVolume(HANDLE folder) {
  DWORD flags = 0;
  return GetVolumeInformationByHandleW(folder, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) &&
         (flags & FILE_READ_ONLY_VOLUME) != 0;
}

// What is not there may be made, and an attribute says nothing of rights.
bool MayReplace(const std::wstring& path, HANDLE folder, const UniqueHandle& plain) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError() != ERROR_ACCESS_DENIED;
  if (attributes & FILE_ATTRIBUTE_READONLY) return true;
  const UniqueFile file(CreateFileW(
      path.c_str(), DELETE | READ_CONTROL | FILE_WRITE_DATA, kShareAll, nullptr, OPEN_EXISTING,
      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file) return GetLastError() != ERROR_ACCESS_DENIED;
  return IsAllowed(file.Get(), plain, FILE_WRITE_DATA) &&
         (IsAllowed(file.Get(), plain, DELETE) || IsAllowed(folder, plain, FILE_DELETE_CHILD));
}

}  // namespace

bool MayMakeFiles(const std::string& folder) {
  const auto path = ToWidePath(folder);
  if (!path) return false;
  const UniqueFile opened(CreateFileW(path->c_str(), FILE_ADD_FILE | READ_CONTROL, kShareAll,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!opened || IsReadOnlyVolume(opened.Get())) return false;
  const UniqueHandle plain = PlainToken();
  return IsAllowed(opened.Get(), plain, FILE_ADD_FILE) &&
         MayReplace(*ToWidePath(WithBackslash(folder) + "Settings.ini"), opened.Get(), plain);
}

std::string OwnFolder(const std::string& installed) {
  const std::wstring data = Wide(installed + "\\Data");
  const DWORD attributes = GetFileAttributesW(data.c_str());
  const bool has_data =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
  const std::string beside = has_data ? Narrow(RealPath(data)) : installed;
  const bool is_swapped = !has_data && ContainsNoCase(installed, "\\WinGet\\Packages\\");
  const std::string roaming = !is_swapped && MayMakeFiles(beside) ? "" : RoamingFolder();
  return roaming.empty() ? beside : roaming + "\\Quellix";
}

ProgramFolders FindProgramFolders() {
  const std::string path = Narrow(RealPath(ExecutablePath()));
  const std::string installed(WithoutBackslash(FolderPart(path)));
  return {installed, OwnFolder(installed)};
}

}  // namespace quellix
