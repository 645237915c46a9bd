#include "platform/win32/win32_shell.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>
#include <urlhist.h>

#include <string>

#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_shortcuts.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary shell32(L"shell32.dll");
LazyLibrary ole32(L"ole32.dll");

constexpr std::string_view kRecycle = "move into the recycle bin:";

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

// The shell takes neither "\\?\" nor a longer path.
void CheckLength(const std::wstring& path, std::string_view shown) {
  if (path.size() < MAX_PATH) return;
  throw Error(Error::Kind::kOther, "Cannot move into the recycle bin: " + std::string(shown) +
                                       ": the path is longer than the recycle bin allows.");
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

constexpr GUID kUrlHistoryClass = {
    0x3C374A40, 0xBAE4, 0x11CF, {0xBF, 0x7D, 0x00, 0xAA, 0x00, 0x69, 0x46, 0xEE}};

using UniqueHistory = Unique<
    NullHandleTraits<IUrlHistoryStg2*, [](IUrlHistoryStg2* history) { history->Release(); }>>;

bool OpenClipboardPatiently() {
  for (int attempt = 0; attempt < 10; ++attempt) {
    if (OpenClipboard(nullptr)) return true;
    Sleep(20);
  }
  return false;
}

}  // namespace

Win32Shell::~Win32Shell() {
  if (com_started_) ole32.Find<decltype(&CoUninitialize)>("CoUninitialize")();
}

void Win32Shell::StartCom() {
  if (com_started_) return;
  static const auto start = ole32.Find<decltype(&CoInitializeEx)>("CoInitializeEx");
  com_started_ = SUCCEEDED(start(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE));
}

void Win32Shell::Recycle(std::string_view path) {
  const std::wstring wide = WidePath(kRecycle, path);
  const std::wstring plain = Wide(path);
  CheckLength(plain, path);
  anchor_.CheckParentOf(path);
  StartCom();
  if (GetFileAttributesW(wide.c_str()) == INVALID_FILE_ATTRIBUTES) ThrowLastError(kRecycle, path);
  if (const int code = RecycleNow(plain)) throw WindowsError(FromShellCode(code), kRecycle, path);
  if (GetFileAttributesW(wide.c_str()) != INVALID_FILE_ATTRIBUTES) {
    throw WindowsError(ERROR_SHARING_VIOLATION, kRecycle, path);
  }
}

RecycleBinContent Win32Shell::QueryRecycleBin() {
  SHQUERYRBINFO info{};
  info.cbSize = sizeof info;
  static const auto query = shell32.Find<decltype(&SHQueryRecycleBinW)>("SHQueryRecycleBinW");
  const HRESULT result = query(nullptr, &info);
  if (FAILED(result))
    throw WindowsError(static_cast<DWORD>(result), "look into", "the recycle bin");
  return {static_cast<uint64_t>(info.i64NumItems), static_cast<uint64_t>(info.i64Size)};
}

// Windows answers an empty bin with an error, so the bin itself is asked.
void Win32Shell::EmptyRecycleBin() {
  static const auto empty = shell32.Find<decltype(&SHEmptyRecycleBinW)>("SHEmptyRecycleBinW");
  const HRESULT result =
      empty(nullptr, nullptr, SHERB_NOCONFIRMATION | SHERB_NOPROGRESSUI | SHERB_NOSOUND);
  if (QueryRecycleBin().items == 0) return;
  const auto code = FAILED(result) ? static_cast<DWORD>(result) : ERROR_SHARING_VIOLATION;
  throw WindowsError(code, "empty", "the recycle bin");
}

void Win32Shell::ClearAddressHistory() {
  StartCom();
  static const auto create = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance");
  UniqueHistory history;
  HRESULT result = create(kUrlHistoryClass, nullptr, CLSCTX_INPROC_SERVER,
                          __uuidof(IUrlHistoryStg2), reinterpret_cast<void**>(history.Put()));
  if (SUCCEEDED(result)) result = history.Get()->ClearHistory();
  if (result == E_NOTIMPL || result == REGDB_E_CLASSNOTREG) {
    throw NotAvailable("This Windows keeps no history of visited addresses.");
  }
  if (FAILED(result)) {
    throw WindowsError(static_cast<DWORD>(result), "clear", "the history of visited addresses");
  }
}

void Win32Shell::EmptyClipboard() {
  if (!OpenClipboardPatiently()) ThrowLastError("empty", "the clipboard");
  const bool emptied = ::EmptyClipboard();
  const DWORD code = GetLastError();
  CloseClipboard();
  if (!emptied) throw WindowsError(code, "empty", "the clipboard");
}

void Win32Shell::ShowProperties(std::string_view path) {
  StartCom();
  const std::wstring wide = Wide(path);
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_INVOKEIDLIST | SEE_MASK_FLAG_NO_UI;
  info.lpVerb = L"properties";
  info.lpFile = wide.c_str();
  info.nShow = SW_SHOWNORMAL;
  static const auto execute = shell32.Find<decltype(&ShellExecuteExW)>("ShellExecuteExW");
  if (!execute(&info)) ThrowLastError("show the properties of", path);
}

void Win32Shell::OpenFolderOf(std::string_view path) {
  StartCom();
  static const auto parse = shell32.Find<decltype(&SHParseDisplayName)>("SHParseDisplayName");
  static const auto open =
      shell32.Find<decltype(&SHOpenFolderAndSelectItems)>("SHOpenFolderAndSelectItems");
  static const auto release = ole32.Find<decltype(&CoTaskMemFree)>("CoTaskMemFree");
  LPITEMIDLIST item = nullptr;
  HRESULT result = parse(Wide(path).c_str(), nullptr, &item, 0, nullptr);
  if (SUCCEEDED(result)) result = open(item, 0, nullptr, 0);
  release(item);
  if (FAILED(result)) throw WindowsError(static_cast<DWORD>(result), "open the folder of", path);
}

std::unique_ptr<ShortcutReader> Win32Shell::OpenShortcuts() {
  StartCom();
  return OpenWin32Shortcuts();
}

}  // namespace quellix
