#pragma once

#include <string_view>

#include "settings/settings.h"
#include "ui/list_view.h"

namespace quellix {

// The widths a user gave the columns of a window, kept in Settings.ini: section "Columns", a key
// for the window, 96-DPI units with commas between.

// Widths that make no sense leave the columns as they are.
void RestoreColumnWidths(const Settings& settings, std::string_view window, ListView& list,
                         int dpi);
// A failure is no error: the widths are then forgotten.
void KeepColumnWidths(Settings& settings, std::string_view window, const ListView& list, int dpi);

}  // namespace quellix
