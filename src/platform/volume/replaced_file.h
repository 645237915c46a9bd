#pragma once

#include <functional>
#include <string_view>

#include "platform/volume/volume_drive.h"

namespace quellix {

// Creates `target`, or replaces it when it `exists`, in one step: `fill` writes a new file beside
// it, which gets the old one's owner, mode, access list, attributes, streams and creation time and
// is brought onto the disk. `before_placing`, if any, is called before it takes the name. Throws
// Error that names `path`; then, or after a crash, the old file is whole.
void ReplaceFile(const Located& target, bool exists, std::string_view path,
                 const std::function<void(int fd)>& fill,
                 const std::function<void()>& before_placing);

}  // namespace quellix
