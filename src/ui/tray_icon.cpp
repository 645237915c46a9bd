#include "ui/tray_icon.h"

#include <shellapi.h>

#include <cwchar>
#include <iterator>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr UINT kIcon = 1;

UINT TaskbarCreated() {
  static const UINT message = RegisterWindowMessageW(L"TaskbarCreated");
  return message;
}

// The shell is loaded only for those who have the icon.
BOOL Notify(DWORD what, NOTIFYICONDATAW& data) {
  static LazyLibrary shell(L"shell32.dll");
  try {
    return shell.Find<decltype(&Shell_NotifyIconW)>("Shell_NotifyIconW")(what, &data);
  } catch (const Error&) {
    return FALSE;
  }
}

}  // namespace

bool TrayIcon::Show(HWND window, const wchar_t* text) {
  Hide();
  icon_ = LoadProgramIcon(icoQuellix, GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON));
  SetText(text);
  // Without leave, a program that runs as administrator does not hear of a new taskbar.
  ChangeWindowMessageFilterEx(window, TaskbarCreated(), MSGFLT_ALLOW, nullptr);
  window_ = window;
  if (Tell(NIM_ADD)) return true;
  Hide();  // an icon that was added but sends nothing of use
  return false;
}

void TrayIcon::SetText(const wchar_t* text) {
  std::wcsncpy(text_, text, std::size(text_) - 1);
  if (window_) Tell(NIM_MODIFY);
}

void TrayIcon::Hide() {
  if (window_) Tell(NIM_DELETE);
  window_ = nullptr;
}

void TrayIcon::Follow(UINT message) const {
  if (window_ && message == TaskbarCreated()) Tell(NIM_ADD);
}

bool TrayIcon::Tell(DWORD what) const {
  NOTIFYICONDATAW data{};
  data.cbSize = sizeof(data);
  data.hWnd = window_;
  data.uID = kIcon;
  data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP | NIF_SHOWTIP;
  data.uCallbackMessage = kMessage;
  data.hIcon = icon_.Get();
  std::wcsncpy(data.szTip, text_, std::size(data.szTip) - 1);
  if (!Notify(what, data)) return false;
  data.uVersion = NOTIFYICON_VERSION_4;
  return what != NIM_ADD || Notify(NIM_SETVERSION, data);
}

}  // namespace quellix
