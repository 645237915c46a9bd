#pragma once

#include "ui/windows_api.h"

namespace quellix {

// Opens the manual at one of its anchors, in the program Windows has for web pages. Where the
// manual or such a program is missing, a message before `owner` says so.
void ShowHelp(HWND owner, const char* topic);

}  // namespace quellix
