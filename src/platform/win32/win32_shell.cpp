#include "platform/win32/win32_shell.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <objbase.h>
#include <sddl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <urlhist.h>

#include <string>

#include "platform/win32/clipboard_history.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/open_clipboard.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_shortcuts.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr const char* kCannotEmpty = Mark("Cannot empty the clipboard: %2");

LazyLibrary shell32(L"shell32.dll");
LazyLibrary ole32(L"ole32.dll");

constexpr GUID kUrlHistoryClass = {
    0x3C374A40, 0xBAE4, 0x11CF, {0xBF, 0x7D, 0x00, 0xAA, 0x00, 0x69, 0x46, 0xEE}};

using UniqueHistory = Unique<
    NullHandleTraits<IUrlHistoryStg2*, [](IUrlHistoryStg2* history) { history->Release(); }>>;

using UniqueLocalText = Unique<NullHandleTraits<wchar_t*, LocalFree>>;

// "S-1-5-21-..." of the user whom this program runs as; "" when Windows does not tell.
std::wstring UserSid() {
  UniqueHandle token;
  alignas(TOKEN_USER) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof user;
  UniqueLocalText text;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) ||
      !GetTokenInformation(token.Get(), TokenUser, user, size, &size) ||
      !ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user)->User.Sid, text.Put()))
    return {};
  return text.Get();
}

}  // namespace

std::vector<std::string> Win32Shell::RecycleBins() {
  std::vector<std::string> folders;
  const std::string sid = Narrow(UserSid());
  for (char letter = 'A'; letter <= 'Z' && !sid.empty(); ++letter) {
    const std::string root = {letter, ':', '\\'};
    if (GetDriveTypeW(Wide(root).c_str()) == DRIVE_FIXED)
      folders.push_back(root + "$Recycle.Bin\\" + sid);
  }
  return folders;
}

RecycleBinContent Win32Shell::QueryRecycleBin() {
  SHQUERYRBINFO info{};
  info.cbSize = sizeof info;
  static const auto query = shell32.Find<decltype(&SHQueryRecycleBinW)>("SHQueryRecycleBinW");
  const HRESULT result = query(nullptr, &info);
  if (FAILED(result))
    throw WindowsError(static_cast<DWORD>(result), Mark("Cannot look into the recycle bin: %2"),
                       "");
  return {static_cast<uint64_t>(info.i64NumItems), static_cast<uint64_t>(info.i64Size)};
}

// Windows answers an empty bin with an error, so the bin itself is asked.
void Win32Shell::EmptyRecycleBin() {
  static const auto empty = shell32.Find<decltype(&SHEmptyRecycleBinW)>("SHEmptyRecycleBinW");
  const HRESULT result =
      empty(nullptr, nullptr, SHERB_NOCONFIRMATION | SHERB_NOPROGRESSUI | SHERB_NOSOUND);
  if (QueryRecycleBin().items == 0) return;
  const auto code = FAILED(result) ? static_cast<DWORD>(result) : ERROR_SHARING_VIOLATION;
  throw WindowsError(code, Mark("Cannot empty the recycle bin: %2"), "");
}

void Win32Shell::ClearAddressHistory() {
  com_.Start();
  static const auto create = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance");
  UniqueHistory history;
  HRESULT result = create(kUrlHistoryClass, nullptr, CLSCTX_INPROC_SERVER,
                          __uuidof(IUrlHistoryStg2), reinterpret_cast<void**>(history.Put()));
  if (SUCCEEDED(result)) result = history.Get()->ClearHistory();
  if (result == E_NOTIMPL || result == REGDB_E_CLASSNOTREG) {
    throw NotAvailable(Say("This Windows keeps no history of visited addresses."));
  }
  if (FAILED(result)) {
    throw WindowsError(static_cast<DWORD>(result),
                       Mark("Cannot clear the history of visited addresses: %2"), "");
  }
}

void Win32Shell::EmptyClipboard() {
  if (!OpenClipboardPatiently(nullptr)) ThrowLastError(kCannotEmpty, "");
  const bool emptied = ::EmptyClipboard();
  const DWORD code = GetLastError();
  CloseClipboard();
  if (!emptied) throw WindowsError(code, kCannotEmpty, "");
  com_.Start();
  ClearClipboardHistory();
}

void Win32Shell::ShowProperties(std::string_view path) {
  com_.Start();
  const std::wstring wide = Wide(path);
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_INVOKEIDLIST | SEE_MASK_FLAG_NO_UI;
  info.lpVerb = L"properties";
  info.lpFile = wide.c_str();
  info.nShow = SW_SHOWNORMAL;
  static const auto execute = shell32.Find<decltype(&ShellExecuteExW)>("ShellExecuteExW");
  if (!execute(&info)) ThrowLastError(Mark("Cannot show the properties of %1: %2"), path);
}

void Win32Shell::OpenFolderOf(std::string_view path) {
  com_.Start();
  static const auto parse = shell32.Find<decltype(&SHParseDisplayName)>("SHParseDisplayName");
  static const auto open =
      shell32.Find<decltype(&SHOpenFolderAndSelectItems)>("SHOpenFolderAndSelectItems");
  static const auto release = ole32.Find<decltype(&CoTaskMemFree)>("CoTaskMemFree");
  LPITEMIDLIST item = nullptr;
  HRESULT result = parse(Wide(path).c_str(), nullptr, &item, 0, nullptr);
  if (SUCCEEDED(result)) result = open(item, 0, nullptr, 0);
  release(item);
  if (FAILED(result))
    throw WindowsError(static_cast<DWORD>(result), Mark("Cannot open the folder of %1: %2"), path);
}

bool Win32Shell::StartProgram(std::string_view path, std::string_view arguments) {
  com_.Start();
  const std::wstring file = Wide(path), rest = Wide(arguments);
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  info.lpFile = file.c_str();
  info.lpParameters = rest.c_str();
  info.nShow = SW_SHOWNORMAL;
  static const auto execute = shell32.Find<decltype(&ShellExecuteExW)>("ShellExecuteExW");
  if (execute(&info)) return true;
  if (GetLastError() != ERROR_CANCELLED) ThrowLastError(Cannot::kStart, path);
  return false;
}

std::unique_ptr<ShortcutReader> Win32Shell::OpenShortcuts() {
  com_.Start();
  return OpenWin32Shortcuts();
}

}  // namespace quellix
