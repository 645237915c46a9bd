#pragma once

#include <string_view>

#include "platform/win32/unique.h"

namespace quellix {

// Where Wine, which the program is developed on, does otherwise than Windows. Nothing here changes
// what happens on Windows.

// Whether this is Wine.
bool IsStandIn();

// It follows a Unix symlink whatever it is told, and an opened one bears no mark; only the name in
// its folder tells. Throws Error (kDenied) when `name` in the open `folder` is a link to a folder.
void RefuseFollowedLink(const UniqueFile& folder, std::wstring_view name, std::string_view action,
                        std::string_view shown);

// It removes by the path a folder had when it was opened, and says nothing when that does not lead
// to the file any more. Finding that a name is missing makes it read the whole folder, so the folder
// is looked at instead: whether it is still at `path`, its FinalPath.
bool IsWhereItWasOpened(const UniqueFile& folder, std::wstring_view path);

}  // namespace quellix
