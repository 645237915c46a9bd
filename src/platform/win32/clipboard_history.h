#pragma once

namespace quellix {

// Clears the history of the clipboard but for what is pinned there. COM must have been started.
// Nothing where Windows keeps none (before Windows 10 1809, or switched off) or does not let it be
// cleared. Never throws.
void ClearClipboardHistory();

}  // namespace quellix
