#include "ui/progress_sign.h"

#include <algorithm>

#include <objbase.h>
#include <shobjidl.h>

#include "platform/win32/lazy_library.h"

namespace quellix {
namespace {

// Null where there is none. It lives as long as the program.
ITaskbarList3* Taskbar() {
  static ITaskbarList3* const taskbar = [] {
    static LazyLibrary ole32(L"ole32.dll");
    ole32.Find<decltype(&CoInitialize)>("CoInitialize")(nullptr);
    ITaskbarList3* made = nullptr;
    const HRESULT result = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance")(
        CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
        reinterpret_cast<void**>(&made));
    if (FAILED(result)) return static_cast<ITaskbarList3*>(nullptr);
    if (SUCCEEDED(made->HrInit())) return made;
    made->Release();
    return static_cast<ITaskbarList3*>(nullptr);
  }();
  return taskbar;
}

// The window that has the button: the one that no shown window owns.
HWND WithButton(HWND window) {
  for (HWND owner = window; (owner = GetWindow(owner, GW_OWNER)) != nullptr;) {
    if (IsWindowVisible(owner)) window = owner;
  }
  return window;
}

std::wstring TitleOf(HWND window) {
  std::wstring title(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  title.resize(
      static_cast<size_t>(GetWindowTextW(window, title.data(), static_cast<int>(title.size()))));
  return title;
}

}  // namespace

void ProgressSign::Show(HWND window, const Progress& progress) {
  if (progress.total == 0) return Clear();
  const double part = static_cast<double>(std::min(progress.done, progress.total)) /
                      static_cast<double>(progress.total);
  const int percent = static_cast<int>(part * 100);
  if (window == window_ && percent == percent_) return;
  if (window != window_) {
    Clear();
    window_ = window;
    title_ = TitleOf(window);
  }
  percent_ = percent;
  SetWindowTextW(window, (std::to_wstring(percent) + L" % - " + title_).c_str());
  if (ITaskbarList3* const taskbar = Taskbar()) {
    taskbar->SetProgressValue(WithButton(window), static_cast<ULONGLONG>(percent), 100);
  }
}

void ProgressSign::Clear() {
  if (!window_) return;
  if (IsWindow(window_)) SetWindowTextW(window_, title_.c_str());
  if (ITaskbarList3* const taskbar = Taskbar()) {
    taskbar->SetProgressState(WithButton(window_), TBPF_NOPROGRESS);
  }
  window_ = nullptr;
  percent_ = -1;
}

}  // namespace quellix
