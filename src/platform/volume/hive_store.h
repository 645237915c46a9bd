#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/volume/volume_file_system.h"

namespace quellix {

// What a hive's original, or a log's, is called until the run has ended well.
std::string OriginalName(std::string_view path);

// Replaces a hive file in one step by what `fill` writes; it keeps what the disk keeps of the old
// one, its times included. While `original_is_due` the old one stays beside it, in the place of one
// that an earlier run left, which is overwritten, and it is due no more. Else it is returned, to be
// overwritten, unless it has further names. `check` is called when nothing of that was done yet but
// all is written, and may throw to leave it so. Throws Error; the old file then is in its place, or
// the new one where only bringing that onto the disk failed.
std::unique_ptr<RandomFile> StoreHive(VolumeFileSystem& files, const std::string& path,
                                      bool& original_is_due,
                                      const std::function<void(int fd)>& fill,
                                      const std::function<void()>& check);

// Overwrites the logs beside a hive that was replaced, with the state that belongs to it, and the
// original, which then is removed. When they are to be `kept`, the original stays, and the logs
// stay beside it under such names. Throws Error.
void FinishHive(VolumeFileSystem& files, const std::string& path, bool kept);

// The same for an original that is there from another run, once the hive itself is as it must be. A
// disk that lets nothing be written is no error. True when there was one.
bool ClearOriginal(VolumeFileSystem& files, const std::string& path);

}  // namespace quellix
