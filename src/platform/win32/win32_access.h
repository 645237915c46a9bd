#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/win32/unique.h"

namespace quellix {

// Who may change what a path leads to. A folder may be left out of it, or what is in it replaced,
// by who may add to it, remove from it, or change its access list.
enum class PathPart { kFile, kFolder, kRoot };

// Whether nobody but administrators, the system and its installer may, by owner and access list.
// Of a root it is enough that nothing in it can be removed, and no list changed.
bool OnlyAdministratorsChange(PSECURITY_DESCRIPTOR security, PathPart part);

// The same of what is open with READ_CONTROL; false where its list cannot be read.
bool OnlyAdministratorsChange(const UniqueFile& open, PathPart part);

// Puts the file at a final path ("\\?\C:\...") on the list of what the system removes at its next
// start. Throws Error. Whether that is safe is another matter.
void PutOnStartList(const std::wstring& path, std::string_view shown);

}  // namespace quellix
