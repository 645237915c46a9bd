#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// A control's text, in UTF-8.
std::string ControlText(HWND control);

// Lists that windows fill with texts: combo boxes and list boxes.
void FillCombo(HWND combo, const std::vector<std::string>& texts);
void FillList(HWND list, const std::vector<std::string>& texts);

bool IsTicked(HWND dialog, int box);

}  // namespace quellix
