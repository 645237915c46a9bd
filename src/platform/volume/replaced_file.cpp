#include "platform/volume/replaced_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "platform/path.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

// What NTFS keeps beside a file and does not list.
constexpr const char* kAccessList = "system.ntfs_acl";
constexpr const char* kExtended = "system.ntfs_ea";
// What is set when the new file has its name: the short name is free only then, renaming marks the
// file as one to be archived, and the creation time comes last because the others move times.
constexpr const char* kSetLast[] = {"system.ntfs_dos_name", "system.ntfs_attrib",
                                    "system.ntfs_crtime"};

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
  KeepAttribute(from, to, kExtended);
  return KeepAttribute(from, to, kAccessList);
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
                 const std::function<void(int fd)>& fill,
                 const std::function<void()>& before_placing) {
  TemporaryFile file(target);
  if (file.fd() < 0) ThrowErrno(errno, path);
  fill(file.fd());
  UniqueFd old;
  if (exists && S_ISREG(target.status.st_mode)) {
    struct stat status;
    old = OpenRegular(target, O_RDONLY, path, status);
    if (const int code = KeepIdentity(old.get(), status, file.fd())) ThrowErrno(code, path);
  }
  std::vector<std::optional<std::string>> last;
  for (const char* name : kSetLast) last.push_back(ReadAttribute(old.get(), name));
  old = UniqueFd();
  if (before_placing) before_placing();
  if (!file.Place()) ThrowErrno(errno, path);
  for (size_t i = 0; i < last.size(); ++i) {
    if (last[i]) fsetxattr(file.fd(), kSetLast[i], last[i]->data(), last[i]->size(), 0);
  }
  const UniqueFd folder(openat(target.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder || fsync(folder.get()) != 0) ThrowErrno(errno, path);
}

}  // namespace quellix
