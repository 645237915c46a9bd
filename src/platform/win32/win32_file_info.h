#pragma once

#include <windows.h>

#include "platform/file_system.h"

namespace quellix {

// What a search found, as the program's own. A reparse point is a link when its tag says that it
// stands for another name (junction, symbolic link); others, such as the placeholders of a cloud
// folder, are ordinary files and folders. Without a tag, as Wine reports a Unix symlink, it is
// taken for a link.
FileInfo ToFileInfo(const WIN32_FIND_DATAW& found);

// The entry itself, by the path the wide calls take.
std::optional<FileInfo> LookAt(const std::wstring& wide);

}  // namespace quellix
