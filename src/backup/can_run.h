#pragma once

#include <string_view>

#include "platform/machine.h"

namespace quellix {

// Whether opening a file may start a program in it: programs, scripts, shortcuts, installers and
// disk images by their extension, what PATHEXT names, and every type that this Windows does not
// know.
bool CanRun(const Machine& machine, std::string_view path);

}  // namespace quellix
