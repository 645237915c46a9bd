#pragma once

#include <memory>

#include "platform/shell.h"

namespace quellix {

// Reads shortcuts through one WScript.Shell object; where it lacks a property, or is missing
// itself, the shell's own link object answers. COM must be started on this thread and stay so.
std::unique_ptr<ShortcutReader> OpenWin32Shortcuts();

}  // namespace quellix
