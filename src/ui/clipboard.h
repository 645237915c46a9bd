#pragma once

#include <string>

#include "ui/windows_api.h"

namespace quellix {

// What the clipboard holds becomes this text; where another program keeps it open, nothing happens.
void PutIntoClipboard(HWND owner, const std::wstring& text);

}  // namespace quellix
