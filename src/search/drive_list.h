#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// "Hard drive" and the like, named for the catalogues; removable drives A and B are floppy drives.
std::string_view DriveTypeName(const Drive& drive);

// The entries of the list of drives to search: "C: Hard drive".
std::vector<std::string> DriveList(System& system);

// An entry of that list as windows show it.
std::string ShownDrive(std::string_view entry);

// The roots ("C:\") that the first line of srch.txt names, in its order. What stands behind its
// last colon is never searched.
std::vector<std::string> ParseDriveLine(std::string_view line);

// The root of the drive with Windows.
std::string WindowsDriveRoot(System& system);

}  // namespace quellix
