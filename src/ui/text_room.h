#pragma once

#include "ui/windows_api.h"

namespace quellix {

// What the text of a control needs, in pixels.
struct TextRoom {
  int width = 0, height = 0;
  int wrapped = 0;     // the least width on several lines; 0 for what stays on its line
  bool wraps = false;  // it stands on several lines already
  bool is_button = false;
};

// As the control is now; nothing for a control without a text of its own, and for one that cuts it.
TextRoom TextRoomOf(HWND control);

// What the rows of a list box need beside its scroll bar, in pixels.
int WidestRow(HWND list_box);

// The height of the control's text on several lines in a control of that width.
int WrappedHeight(HWND control, int width);

// Has a control show its text on several lines.
void Wrap(HWND control);

}  // namespace quellix
