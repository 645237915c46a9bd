#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/volume/volume_drive.h"

namespace quellix {

// A regular file as it was located, not through a link that took its place; pipes, devices and
// folders are never opened. `flags` are those of open(2). Throws Error that names `path`.
UniqueFd OpenRegular(const Located& entry, int flags, std::string_view path, struct stat& status);

// The same as a file of the port; `support` must outlive it. Not in the mode kCreateNew.
std::unique_ptr<RandomFile> OpenVolumeFile(const Located& entry, OpenMode mode,
                                           AttributeSupport& support, std::string_view path);
// A new one, in the mode kReadAndCreate or kCreateNew.
std::unique_ptr<RandomFile> CreateVolumeFile(const Located& entry, OpenMode mode,
                                             AttributeSupport& support, std::string_view path);

// Writes zeros over all of a file that takes room on the disk. Throws Error.
void Overwrite(RandomFile& file);

// Writes all of it: an errno value, or 0.
int WriteAll(int fd, std::string_view bytes, off_t offset);

// A whole file. Throws Error that names `path`, kOther when there is more than `limit`.
std::string ReadAll(int fd, uint64_t limit, std::string_view path);

}  // namespace quellix
