#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/volume/name_index.h"
#include "platform/volume/unique_fd.h"

namespace quellix {

// Which extended attributes a disk can hold at all, learned while it is used.
struct AttributeSupport {
  bool ntfs = true, dos = true, samba = true, created = true;
};

// Whether a disk that is mounted in a folder on the way is entered.
enum class Mounts { kStay, kEnter };

// What lstat tells, and whether an entry is kept from removal by an attribute of its own.
struct Seen {
  struct stat status = {};
  bool is_immutable = false;
};

// One entry of an open folder, which whoever holds this keeps open.
struct Located : Seen {
  int folder = -1;
  std::string name;  // as spelled on the disk; "." is the folder itself
};

// A folder of this system that stands for one drive. Names are looked up as they are spelled, and,
// only where that is missing, without regard to case; those that Windows cannot have are missing.
// No link below the folder is ever followed, and nothing outside is ever reached; a disk that is
// mounted below it is entered by a path only, never from an open folder.
//
// Functions that fail leave the reason in errno: ELOOP when a link stands in the way, EXDEV when
// another disk does.
class VolumeDrive {
 public:
  // Throws Error when the folder cannot be opened. A link to it is followed.
  explicit VolumeDrive(const std::string& folder);

  // Open for looking up names only (O_PATH). `folder` is the Windows path behind the drive
  // ("Users\Me"); "" is the root.
  UniqueFd OpenFolder(std::string_view folder);
  // The same from an open folder on, and into no other disk that is mounted below it.
  // For kListing it can be read as well, where that is granted.
  UniqueFd OpenBelow(int from, std::string_view names, OpenFor use = OpenFor::kWork);

  // The entry itself, a link not followed. When it is missing (ENOENT) its name is as asked.
  bool Locate(int folder, std::string_view name, Located& entry);

  int root() const { return root_.get(); }
  NameIndex& names() { return names_; }
  AttributeSupport& attribute_support() { return support_; }

 private:
  // The last folder that had to be searched for, so that its content is found at once.
  struct Known {
    std::string asked, spelled;
  };

  UniqueFd Walk(int from, std::string_view spelled, Mounts mounts, int access);
  UniqueFd Step(int from, const std::string& spelled, Mounts mounts, int access = O_PATH);
  UniqueFd StepByStep(int from, const std::string& spelled, Mounts mounts, std::string* search);

  UniqueFd root_;
  bool has_openat2_ = true;
  Known known_;
  NameIndex names_;
  AttributeSupport support_;
};

// Whether `name` can be one component of a path here.
bool IsUsableName(std::string_view name);

FileId IdFrom(const struct stat& status);

// A link is not followed; false with errno set.
bool See(int folder, const char* name, Seen& seen);

// A folder below an open one, through no link, by names joined with "/"; ENOSYS where the system
// has no such call. `access`: O_PATH or O_RDONLY.
UniqueFd OpenBeneath(int from, const char* path, Mounts mounts, int access);

}  // namespace quellix
