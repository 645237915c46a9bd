#pragma once

#include <string>

#include "platform/machine.h"

namespace quellix {

// Makes a folder for this program alone; throws Error, kExists when the name is taken. On a running
// Windows nobody may use it but its user, administrators and the system, and where the program has
// administrator rights its user's other programs may read there and remove, but put nothing into
// it.
void MakePrivateFolder(const Machine& machine, const std::string& path);

}  // namespace quellix
