#pragma once

#include "platform/win32/unique.h"
#include "ui/windows_api.h"

namespace quellix {

using UniqueFont = Unique<NullHandleTraits<HFONT, DeleteObject>>;
using UniqueImages = Unique<NullHandleTraits<HIMAGELIST, ImageList_Destroy>>;
using UniqueMenu = Unique<NullHandleTraits<HMENU, DestroyMenu>>;

}  // namespace quellix
