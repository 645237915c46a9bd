#pragma once

#include <windows.h>

namespace quellix {

// OpenClipboard, which fails while another program has it open: tries again for 200 ms.
inline bool OpenClipboardPatiently(HWND owner) {
  for (int attempt = 0; attempt < 10; ++attempt) {
    if (OpenClipboard(owner)) return true;
    Sleep(20);
  }
  return false;
}

}  // namespace quellix
