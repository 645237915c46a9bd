#pragma once

#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// What a file's name tells about it, in folders where most files are needed.

// Logs, dumps and left-over temporary files: what a mask may take from a folder of Windows.
bool HasHarmlessExtension(std::string_view name_or_mask);

// A text: what a mask may take from the folder of Windows itself, but from no other folder that is
// precious.
bool IsText(std::string_view name_or_mask);

// What programs and drivers consist of.
bool IsProgram(std::string_view name);

// Programs, drivers, settings and what starts Windows, by extension or by having none.
bool MayBelongToWindows(std::string_view name);

// What an upgrade of Windows keeps of the Windows before and of its own work, folders in the root
// of a drive: "Windows.old", "Windows.old.000", "$Windows.~BT".
bool IsPreviousWindows(std::string_view name);

// Whether a mask has wildcards, and so names more than one file.
bool HasWildcards(std::string_view mask);

// Whether a file is a registry hive or belongs to one. Its name is a hint; what is named otherwise
// than a user's hive is read. A file that cannot be read is taken for one.
bool IsHiveOrItsLog(Folder& folder, std::string_view name);

}  // namespace quellix
