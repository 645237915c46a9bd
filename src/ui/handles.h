#pragma once

#include "platform/win32/unique.h"
#include "ui/windows_api.h"

namespace quellix {

using UniqueFont = Unique<NullHandleTraits<HFONT, DeleteObject>>;
using UniqueIcon = Unique<NullHandleTraits<HICON, DestroyIcon>>;
using UniqueImages = Unique<NullHandleTraits<HIMAGELIST, ImageList_Destroy>>;
using UniqueMenu = Unique<NullHandleTraits<HMENU, DestroyMenu>>;

// An icon of the program in a size of its own. Not shared: Windows hands a shared icon out again in
// whatever size it was loaded first.
inline UniqueIcon LoadProgramIcon(int id, int width, int height) {
  const HANDLE icon = LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), IMAGE_ICON, width,
                                 height, LR_DEFAULTCOLOR);
  return UniqueIcon(static_cast<HICON>(icon));
}

// The font of a control, in bold.
inline UniqueFont BoldFontOf(HWND control) {
  LOGFONTW description{};
  const auto font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
  GetObjectW(font, sizeof(description), &description);
  description.lfWeight = FW_BOLD;
  return UniqueFont(CreateFontIndirectW(&description));
}

}  // namespace quellix
