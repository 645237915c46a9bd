#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/volume/unique_fd.h"

namespace quellix {

// Which extended attributes a disk can hold at all, learned while it is used.
struct AttributeSupport {
  bool ntfs = true, dos = true, samba = true, created = true;
};

// One entry found on a disk: its folder, its name there, and what lstat tells.
struct Located {
  SharedFd folder;   // O_PATH; none when the entry was not found
  std::string name;  // as spelled on the disk; "." is the folder itself
  struct stat status = {};
};

// A folder of this system that stands for one drive. Names are looked up as they are spelled, and,
// only where that is missing, without regard to case. No link below the folder is ever followed,
// and nothing outside is ever reached; every look-up starts at the drive's own folder, so that
// folders that were moved or replaced meanwhile cannot lead astray.
//
// Functions that return nothing leave the reason in errno: ELOOP when a link stands in the way.
class VolumeDrive {
 public:
  // Throws Error when the folder cannot be opened. A link to it is followed.
  explicit VolumeDrive(const std::string& folder);

  // `folder` is the Windows path behind the drive ("Users\Me"); "" is the root. `flags` are those
  // of open(2): O_PATH or O_RDONLY.
  UniqueFd OpenFolder(std::string_view folder, int flags);

  // The entry itself, a link not followed.
  std::optional<Located> Locate(std::string_view folder, std::string_view name);
  // The same where one file is read and removed after the other: in the folder of the one before,
  // when nothing else came between.
  std::optional<Located> LocateNext(std::string_view folder, std::string_view name);

  // Where a missing entry would be created: `name` as asked. With an existing entry as Locate.
  std::optional<Located> LocateNew(std::string_view folder, std::string_view name, bool& exists);

  AttributeSupport& attribute_support() { return support_; }

 private:
  // The last folder that had to be searched for, so that its content is found at once.
  struct Known {
    std::string asked, spelled;
  };

  // The folder that removals and the reading before them work in.
  struct Held {
    std::string folder;
    SharedFd fd;
  };

  std::optional<Located> LookIn(SharedFd folder, std::string_view name, bool& exists);
  UniqueFd Walk(std::string_view spelled, int flags) const;
  UniqueFd Step(int from, const std::string& spelled, int flags) const;
  std::optional<std::string> Search(const std::string& asked);

  UniqueFd root_;
  bool has_openat2_ = true;
  Known known_;
  Held held_;
  AttributeSupport support_;
};

// Whether `name` can be one component of a path here.
bool IsUsableName(std::string_view name);

// The name in an open folder that equals `name` without regard to case.
std::optional<std::string> FindName(int folder, std::string_view name);

}  // namespace quellix
