#pragma once

#include "platform/machine.h"

namespace quellix {

// The entry "Remove with Quellix..." in Explorer's menus of files and folders, for this user.
// Another program may have changed it: it is there, but does not start this program as it should.
enum class ExplorerMenu { kMissing, kOurs, kChanged };

// Throws Error.
ExplorerMenu LookAtExplorerMenu(const Machine& machine);
// Makes it, or takes it away again with nothing left; what is as wanted stays as it is. Throws
// Error.
void SaveExplorerMenu(const Machine& machine, bool wanted);

}  // namespace quellix
