#pragma once

#include <string>

#include "platform/machine.h"
#include "plugins/plugin_file.h"

namespace quellix::modPlugin {

// Whether a detection holds on this machine; what is named without a wildcard and cannot be
// read counts as there. %ProgramFiles% is each folder for programs, and HKEY_LOCAL_MACHINE\Software
// also what programs of 32 bits see.
bool Holds(const Machine& machine, const Detection& detection);

// What is wrong with one that can hold nowhere, a sentence; "" for a good one.
std::string FaultOf(const Machine& machine, const Detection& detection);

// Whether a recipe has something to do here: without files and keys to look for it has; with them
// one that is there suffices. Beside that Windows has to be of one of the versions, if any are
// named.
bool IsFound(const Machine& machine, const Plugin& plugin);

}  // namespace quellix::modPlugin
