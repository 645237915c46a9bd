#include "ui/dropped_files.h"

#include <shellapi.h>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/open_clipboard.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary shell(L"shell32.dll");

std::vector<std::string> PathsOf(HDROP drop) {
  std::vector<std::string> paths;
  try {
    const auto query = shell.Find<decltype(&DragQueryFileW)>("DragQueryFileW");
    const UINT count = query(drop, UINT_MAX, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
      std::wstring path(query(drop, i, nullptr, 0), L'\0');
      query(drop, i, path.data(), static_cast<UINT>(path.size() + 1));
      if (!path.empty()) paths.push_back(Narrow(path));
    }
  } catch (const Error&) {
  }
  return paths;
}

}  // namespace

std::vector<std::string> TakeDropped(WPARAM dropped) {
  const auto drop = reinterpret_cast<HDROP>(dropped);
  std::vector<std::string> paths = PathsOf(drop);
  try {
    shell.Find<decltype(&DragFinish)>("DragFinish")(drop);
  } catch (const Error&) {
  }
  return paths;
}

std::vector<std::string> CopiedFiles(HWND owner) {
  if (!OpenClipboardPatiently(owner)) return {};
  std::vector<std::string> paths;
  if (const HANDLE drop = GetClipboardData(CF_HDROP)) paths = PathsOf(static_cast<HDROP>(drop));
  CloseClipboard();
  return paths;
}

}  // namespace quellix
