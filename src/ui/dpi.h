#pragma once

#include "ui/windows_api.h"

namespace quellix {

inline constexpr int kDesignDpi = 96;

// The resolution a window is shown at; that of the screen where Windows tells no window's own.
int DpiOf(HWND window);

// 96-DPI units to pixels.
inline int Scale(int units, int dpi) { return MulDiv(units, dpi, kDesignDpi); }

// Keeps Windows from laying out a dialog by itself when its resolution changes.
void LayOutByOurselves(HWND dialog);

}  // namespace quellix
