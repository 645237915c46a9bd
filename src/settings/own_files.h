#pragma once

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// The program's own files are its user's, in the program folder. Where that is not the folder the
// program was installed to, what stands there is the default of what the user has not got.

// Where such a file is written; `name` may have folders in it.
std::string OwnPath(const Machine& machine, std::string_view name);

// Where it is read.
std::string FoundPath(const Machine& machine, std::string_view name);

// Before something is written: the program folder is there. Throws Error.
void MakeProgramFolder(const Machine& machine);

// Before a part of a file is written: the rest of it is as it was found. Throws Error.
void TakeOver(const Machine& machine, std::string_view name);

}  // namespace quellix
