#pragma once

#include "platform/file_system.h"
#include "platform/volume/volume_drive.h"

namespace quellix {

// What FileSystem tells about an entry of a disk. The kind alone leaves the other fields empty.
FileInfo MakeInfo(const Located& entry, AttributeSupport& support, Detail detail);

// Whether a link leads to a folder; its target is asked for its kind only.
bool LeadsToFolder(const Located& link, const AttributeSupport& support);

// A time of this system as FILETIME.
int64_t ToFileTime(const timespec& time);

}  // namespace quellix
