#pragma once

#include <string_view>

#include "platform/win32/nt_file.h"

namespace quellix {

// Where Wine, which the program is developed on, does otherwise than Windows. Nothing here changes
// what happens on Windows.

// Whether this is Wine.
bool IsStandIn();

// It follows a Unix symlink whatever it is told, and an opened one bears no mark; only the name in
// its folder tells. Throws Error (kDenied) when `name` in the open `folder` is a link to a folder.
void RefuseFollowedLink(const UniqueFile& folder, std::wstring_view name, const char* cannot,
                        std::string_view shown);

// It removes and renames by the path a folder had when it was opened: where that leads elsewhere by
// now, a removal does nothing and says so to nobody, and a renaming meets another file. Whether an
// open folder is still at `path`, its FinalPath; asking for a missing name instead would make it
// read the whole folder each time.
bool IsWhereItWasOpened(const UniqueFile& folder, std::wstring_view path);

// Throws Error (kDenied) when it is not.
void RefuseMovedFolder(const UniqueFile& folder, std::wstring_view path, const char* cannot,
                       std::string_view shown);

// It cannot look at a name in an open folder; this looks by the path. Neither success nor missing
// where the folder has been moved.
NTSTATUS LookByPath(const UniqueFile& folder, std::wstring_view path, std::wstring_view name,
                    NtOverview& overview);

}  // namespace quellix
