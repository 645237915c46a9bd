#include <windows.h>
// After windows.h, whose types it uses.
#include <shellapi.h>

#include "platform/path.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/stand_in.h"
#include "platform/win32/win32_com.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_folder.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

// The recycle bin takes paths only. So the folder is kept in its place while the shell works, and
// the shell gets the path that the folder then really has.

namespace quellix {
namespace {

LazyLibrary shell32(L"shell32.dll");

constexpr const char* kRecycle = Mark("Cannot move into the recycle bin: %1: %2");

// The shell's own error codes from before Windows NT; their numbers mean other things elsewhere.
DWORD FromShellCode(int code) {
  switch (code) {
    case 0x78:
      return ERROR_ACCESS_DENIED;
    case 0x7C:
      return ERROR_PATH_NOT_FOUND;
    default:
      return code > 0x70 && code <= 0xB7 ? ERROR_CAN_NOT_COMPLETE : static_cast<DWORD>(code);
  }
}

int RecycleNow(std::wstring path) {
  path += L'\0';  // a list of one path: an empty one ends it
  SHFILEOPSTRUCTW operation{};
  operation.wFunc = FO_DELETE;
  operation.pFrom = path.c_str();
  operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;
  static const auto operate = shell32.Find<decltype(&SHFileOperationW)>("SHFileOperationW");
  const int code = operate(&operation);
  return code == 0 && operation.fAnyOperationsAborted ? ERROR_CANCELLED : code;
}

Error CannotRecycle(Error::Kind kind, const std::string& shown, const Sentence& reason) {
  return Error(kind, Say(kRecycle, shown, reason));
}

// A final path as the shell takes it, without "\\?\"; "" for a volume without a letter or a share.
std::wstring ForTheShell(std::wstring_view path) {
  constexpr std::wstring_view kShare = L"\\\\?\\UNC\\", kLocal = L"\\\\?\\";
  if (path.starts_with(kShare)) return L"\\\\" + std::wstring(path.substr(kShare.size()));
  if (path.size() < 6 || path[5] != L':') return {};
  return std::wstring(path.substr(kLocal.size()));
}

// The shell takes no longer path, and would read blanks and dots at the end of a name, and names of
// devices, as something else.
void CheckPath(const std::wstring& path, const std::string& shown) {
  if (path.size() >= MAX_PATH) {
    throw CannotRecycle(Error::Kind::kOther, shown,
                        Say("the path is longer than the recycle bin allows."));
  }
  wchar_t read[MAX_PATH];
  const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, read, nullptr);
  if (std::wstring_view(read, length < MAX_PATH ? length : 0) == path) return;
  throw CannotRecycle(Error::Kind::kOther, shown,
                      Say("the recycle bin takes no file of this name."));
}

}  // namespace

// Read-only and system files would be asked about, or stay. The file itself must not be open
// meanwhile, so its attributes are given back by its name in this folder.
void Win32Folder::Recycle(std::string_view name) {
  const std::string shown = At(name);
  UniqueFile file = OpenEntry(kRecycle, name,
                              {.access = FILE_READ_ATTRIBUTES,
                               .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT});
  NtBasic basic;
  NtQuery(file, kBasicInformation, basic);
  file.Reset();
  const UniqueFile held = HoldInPlace(shown);
  const std::wstring place = ForTheShell(FinalPath(held));
  if (place.empty())
    throw CannotRecycle(Error::Kind::kOther, shown, Say("its drive has no recycle bin."));
  const std::wstring path = place + L'\\' + Wide(name);
  CheckPath(path, shown);
  com_.Start();
  SetAttributes(name, kNormal);
  DWORD code = FromShellCode(RecycleNow(path));
  if (code == 0 && Look(name)) code = ERROR_SHARING_VIOLATION;
  if (code == 0) return;
  try {
    SetAttributes(name, basic.attributes);
  } catch (const Error&) {  // the first failure is what is told
  }
  throw WindowsError(code, kRecycle, shown);
}

// Whoever is granted its removal or renaming could exchange it, so that must be denied while the
// shell works. A folder with something open in it cannot be moved with one above it either.
NTSTATUS Win32Folder::Hold(UniqueFile& held) const {
  return Try(L"",
             {.access = FILE_LIST_DIRECTORY,
              .share = FILE_SHARE_READ | FILE_SHARE_WRITE,
              .options = FILE_DIRECTORY_FILE},
             held);
}

UniqueFile Win32Folder::HoldInPlace(const std::string& shown) const {
  UniqueFile held;
  const NTSTATUS status = Hold(held);
  RefuseMovedFolder(folder_, FinalPath(folder_), kRecycle, shown);
  if (status >= 0) return held;
  throw CannotRecycle(Error::Kind::kDenied, shown,
                      Say("its folder cannot be kept in its place meanwhile."));
}

}  // namespace quellix
