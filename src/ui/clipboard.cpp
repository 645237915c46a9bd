#include "ui/clipboard.h"

#include <cstring>

#include "platform/win32/open_clipboard.h"

namespace quellix {

void PutIntoClipboard(HWND owner, const std::wstring& text) {
  if (!OpenClipboardPatiently(owner)) return;
  EmptyClipboard();
  const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  if (const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes)) {
    std::memcpy(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    if (!SetClipboardData(CF_UNICODETEXT, memory)) GlobalFree(memory);
  }
  CloseClipboard();
}

}  // namespace quellix
