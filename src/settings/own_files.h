#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// The program's own files are its user's, in the program folder. Where that is not the folder the
// program was installed to, what stands there is the default of what the user has not got.

// Where such a file is written; `name` may have folders in it.
std::string OwnPath(const Machine& machine, std::string_view name);

// Where it is read.
std::string FoundPath(const Machine& machine, std::string_view name);

// Both folders, the own one first; one where they are the same. A copy with other rights may have
// kept in the second what this user's own folder has in the first.
std::vector<std::string> FoundFolders(const Machine& machine);

// The machine as such a copy has it: what is beside the program is its own. The same machine where
// there is one folder only.
Machine BesideProgram(const Machine& machine);

// Before something is written: the program folder is there, and where the program is installed
// elsewhere, names that folder, by which an uninstaller knows whose it is. Throws Error.
void MakeProgramFolder(const Machine& machine);

// Before a part of a file is written: the rest of it is as it was found. Throws Error.
void TakeOver(const Machine& machine, std::string_view name);

}  // namespace quellix
