#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/selection.h"
#include "platform/machine.h"

namespace quellix {

// What needs administrator rights is cleaned by a second start of the program, for the same user:
// who he is goes along and is checked there, as rights may have been given in another's name, whose
// files would be cleaned then.
struct Profile {
  std::string user;    // security identifier
  std::string folder;  // full path
};

// Of who runs this program; texts that are not known are "".
Profile ProfileOf(const Machine& machine);

// The arguments of that start, in plain characters, and back: nothing where they are others.
std::string RightsArguments(const Profile& profile);
std::optional<Profile> ParseRightsArguments(std::string_view arguments);

// Why what was begun for one profile must not go on for another: sentences; "" for the same.
std::string WhyNotSame(const Profile& wanted, const Profile& here);

// Leaves ticked only what needs administrator rights.
void KeepOnlyRights(const Machine& machine, Selection& selection);

}  // namespace quellix
