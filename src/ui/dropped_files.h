#pragma once

#include <string>
#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// Full paths, UTF-8, of the files and folders that were dropped on a window with WS_EX_ACCEPTFILES
// (the wParam of WM_DROPFILES), which are let go of then.
std::vector<std::string> TakeDropped(WPARAM drop);

// The same of those that a file manager has put into the clipboard; none for anything else.
std::vector<std::string> CopiedFiles(HWND owner);

}  // namespace quellix
