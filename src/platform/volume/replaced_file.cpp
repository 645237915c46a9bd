#include "platform/volume/replaced_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

#include <cerrno>
#include <string>

#include "platform/path.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

constexpr const char* kCreatedName = "system.ntfs_crtime";
// What NTFS keeps beside a file and does not list. The creation time comes last: whatever else is
// set moves times.
constexpr const char* kShortName = "system.ntfs_dos_name";
constexpr const char* kNtfsNames[] = {"system.ntfs_acl", "system.ntfs_ea", "system.ntfs_attrib",
                                      kCreatedName};

std::optional<std::string> ReadAttribute(int from, const char* name) {
  std::string value(64 << 10, '\0');
  const ssize_t length = fgetxattr(from, name, value.data(), value.size());
  if (length < 0) return std::nullopt;
  value.resize(static_cast<size_t>(length));
  return value;
}

// An errno value, or 0.
int KeepAttribute(int from, int to, const char* name) {
  const std::optional<std::string> value = ReadAttribute(from, name);
  if (!value) return 0;
  return fsetxattr(to, name, value->data(), value->size(), 0) == 0 ? 0 : errno;
}

// What can be kept is kept; a disk without owners or attributes is no failure. An access list that
// cannot be set again is one, as everyone might then read or change the file.
int KeepIdentity(int from, const struct stat& status, int to) {
  if (fchown(to, status.st_uid, status.st_gid) != 0) errno = 0;
  fchmod(to, status.st_mode & 07777);
  char names[4096];
  const ssize_t size = flistxattr(from, names, sizeof names);
  for (const char* name = names; name < names + size; name += std::string_view(name).size() + 1) {
    KeepAttribute(from, to, name);
  }
  int code = 0;
  for (const char* name : kNtfsNames) {
    const int failure = KeepAttribute(from, to, name);
    if (name == kNtfsNames[0]) code = failure;
  }
  return code;
}

// A new file beside the one to replace; removed again unless it takes its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(const Located& target) : target_(target) {
    while (!fd_) {
      name_ = TemporaryName();
      fd_ = UniqueFd(openat(target_.folder, name_.c_str(),
                            O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
      if (!fd_ && errno != EEXIST) return;
    }
    flock(fd_.get(), LOCK_EX | LOCK_NB);  // tells it from what a killed run left
  }
  ~TemporaryFile() {
    if (fd_ && !placed_) unlinkat(target_.folder, name_.c_str(), 0);
  }

  int fd() const { return fd_.get(); }
  bool Place() {
    if (fsync(fd_.get()) != 0) return false;
    placed_ = renameat(target_.folder, name_.c_str(), target_.folder, target_.name.c_str()) == 0;
    return placed_;
  }

 private:
  const Located& target_;
  std::string name_;
  UniqueFd fd_;
  bool placed_ = false;
};

}  // namespace

void ReplaceFile(const Located& target, bool exists, std::string_view path,
                 const std::function<void(int fd)>& fill) {
  TemporaryFile file(target);
  if (file.fd() < 0) ThrowErrno(errno, path);
  fill(file.fd());
  std::optional<std::string> short_name;
  if (exists && S_ISREG(target.status.st_mode)) {
    struct stat status;
    const UniqueFd old = OpenRegular(target, O_RDONLY, path, status);
    if (const int code = KeepIdentity(old.get(), status, file.fd())) ThrowErrno(code, path);
    short_name = ReadAttribute(old.get(), kShortName);
  }
  if (!file.Place()) ThrowErrno(errno, path);
  // It is free again only now, and moves the times.
  if (short_name) {
    const std::optional<std::string> created = ReadAttribute(file.fd(), kCreatedName);
    fsetxattr(file.fd(), kShortName, short_name->data(), short_name->size(), 0);
    if (created) fsetxattr(file.fd(), kCreatedName, created->data(), created->size(), 0);
  }
  const UniqueFd folder(openat(target.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder || fsync(folder.get()) != 0) ThrowErrno(errno, path);
}

}  // namespace quellix
