#include "platform/volume/volume_drive.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/text.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

constexpr int kFolder = O_DIRECTORY | O_CLOEXEC;
constexpr int kFolderFlags = O_PATH | kFolder;

// What one system call may be given; longer paths are walked in pieces.
constexpr size_t kPieceSize = 4000;

// The kernel says ENOTDIR for a link where a folder was asked for; told apart for the message.
UniqueFd OpenOneFolder(int from, const char* name, Mounts mounts) {
  UniqueFd fd(openat(from, name, kFolderFlags | O_NOFOLLOW));
  struct stat status, above;
  if (!fd) {
    if (errno != ENOTDIR) return fd;
    const bool is_link =
        fstatat(from, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
    errno = is_link ? ELOOP : ENOTDIR;
  } else if (mounts == Mounts::kEnter) {
    return fd;
  } else if (fstat(fd.get(), &status) != 0 || fstat(from, &above) != 0) {
    return UniqueFd();
  } else if (status.st_dev != above.st_dev) {
    errno = EXDEV;
    return UniqueFd();
  }
  return fd;
}

// "a\b" as "a/b", a doubled separator as one; nothing (ENOENT) when a component cannot be a name.
std::optional<std::string> ToDiskPath(std::string_view folder) {
  std::string result;
  result.reserve(folder.size());
  while (!folder.empty()) {
    const size_t end = std::min(folder.find('\\'), folder.size());
    const std::string_view name = folder.substr(0, end);
    folder.remove_prefix(std::min(end + 1, folder.size()));
    if (name.empty()) continue;
    if (!IsUsableName(name)) {
      errno = ENOENT;
      return std::nullopt;
    }
    if (!result.empty()) result += '/';
    result += name;
  }
  return result;
}

// Whether `path` is `folder` or lies below it.
bool IsAtOrBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

timespec ToTimespec(const struct statx_timestamp& time) { return {time.tv_sec, time.tv_nsec}; }

constexpr std::array<bool, 256> MakeForbidden() {
  std::array<bool, 256> forbidden = {};
  for (size_t c = 0; c < 32; ++c) forbidden[c] = true;
  for (const char c : std::string_view("\\/:*?\"<>|"))
    forbidden[static_cast<unsigned char>(c)] = true;
  return forbidden;
}

}  // namespace

bool IsUsableName(std::string_view name) {
  static constexpr std::array<bool, 256> kForbidden = MakeForbidden();
  const auto is_forbidden = [](char c) { return kForbidden[static_cast<unsigned char>(c)]; };
  return !name.empty() && name != "." && name != ".." && std::ranges::none_of(name, is_forbidden);
}

FileId IdFrom(const struct stat& status) { return {status.st_dev, {status.st_ino, 0}}; }

bool See(int folder, const char* name, Seen& entry) {
  struct statx seen;
  if (statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_BASIC_STATS, &seen) != 0) {
    return false;
  }
  struct stat& status = entry.status;
  status.st_dev = makedev(seen.stx_dev_major, seen.stx_dev_minor);
  status.st_rdev = makedev(seen.stx_rdev_major, seen.stx_rdev_minor);
  status.st_ino = seen.stx_ino;
  status.st_mode = seen.stx_mode;
  status.st_nlink = seen.stx_nlink;
  status.st_uid = seen.stx_uid;
  status.st_gid = seen.stx_gid;
  status.st_size = static_cast<off_t>(seen.stx_size);
  status.st_blksize = seen.stx_blksize;
  status.st_blocks = static_cast<blkcnt_t>(seen.stx_blocks);
  status.st_atim = ToTimespec(seen.stx_atime);
  status.st_mtim = ToTimespec(seen.stx_mtime);
  status.st_ctim = ToTimespec(seen.stx_ctime);
  entry.is_immutable = (seen.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0;
  return true;
}

UniqueFd OpenBeneath(int from, const char* path, Mounts mounts, int access) {
  open_how how = {};
  how.flags = static_cast<unsigned>(access | kFolder);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  if (mounts == Mounts::kStay) how.resolve |= RESOLVE_NO_XDEV;
  for (;;) {
    const long fd = syscall(SYS_openat2, from, path, &how, sizeof how);
    if (fd >= 0 || errno != EAGAIN) return UniqueFd(static_cast<int>(fd));
  }
}

VolumeDrive::VolumeDrive(const std::string& folder) : root_(open(folder.c_str(), kFolderFlags)) {
  if (!root_) ThrowErrno(errno, folder);
  has_openat2_ = static_cast<bool>(OpenBeneath(root_.get(), ".", Mounts::kStay, O_PATH));
}

// Name by name. With `search` a name that is missing is searched for, and the path is spelled there
// as it is on the disk.
UniqueFd VolumeDrive::StepByStep(int from, const std::string& asked, Mounts mounts,
                                 std::string* search) {
  UniqueFd here(openat(from, ".", kFolderFlags));
  for (std::string name : Split(asked, '/')) {
    UniqueFd next = OpenOneFolder(here.get(), name.c_str(), mounts);
    if (!next && errno == ENOENT && search != nullptr) {
      const std::optional<std::string> found = names_.Find(here.get(), name);
      if (!found) return next;
      name = *found;
      next = OpenOneFolder(here.get(), name.c_str(), mounts);
    }
    here = std::move(next);
    if (!here) return here;
    if (search != nullptr) *search += (search->empty() ? "" : "/") + name;
  }
  return here;
}

UniqueFd VolumeDrive::Step(int from, const std::string& spelled, Mounts mounts, int access) {
  return has_openat2_ ? OpenBeneath(from, spelled.c_str(), mounts, access)
                      : StepByStep(from, spelled, mounts, nullptr);
}

UniqueFd VolumeDrive::Walk(int from, std::string_view spelled, Mounts mounts, int access) {
  if (spelled.empty()) return UniqueFd(openat(from, ".", kFolderFlags));
  UniqueFd piece_folder;
  while (spelled.size() > kPieceSize) {
    const size_t end = spelled.rfind('/', kPieceSize);
    if (end == std::string_view::npos) break;
    piece_folder = Step(from, std::string(spelled.substr(0, end)), mounts);
    if (!piece_folder) return piece_folder;
    from = piece_folder.get();
    spelled.remove_prefix(end + 1);
  }
  return Step(from, std::string(spelled), mounts, access);
}

UniqueFd VolumeDrive::OpenFolder(std::string_view folder) {
  const std::optional<std::string> asked = ToDiskPath(folder);
  if (!asked) return UniqueFd();
  const bool known = !known_.asked.empty() && IsAtOrBelow(*asked, known_.asked);
  UniqueFd fd = Walk(root(), known ? known_.spelled + asked->substr(known_.asked.size()) : *asked,
                     Mounts::kEnter, O_PATH);
  if (fd || errno != ENOENT) return fd;
  std::string spelled;
  fd = StepByStep(root(), *asked, Mounts::kEnter, &spelled);
  if (fd) known_ = {*asked, spelled};
  return fd;
}

UniqueFd VolumeDrive::OpenBelow(int from, std::string_view names, OpenFor use) {
  const bool is_strict = !names.empty() && !names.starts_with('\\') && !names.ends_with('\\') &&
                         names.find("\\\\") == names.npos;
  errno = ENOENT;
  const std::optional<std::string> asked = is_strict ? ToDiskPath(names) : std::nullopt;
  if (!asked) return UniqueFd();
  UniqueFd fd = Walk(from, *asked, Mounts::kStay, use == OpenFor::kListing ? O_RDONLY : O_PATH);
  if (!fd && errno == EACCES) fd = Walk(from, *asked, Mounts::kStay, O_PATH);
  if (fd || errno != ENOENT) return fd;
  std::string spelled;
  return StepByStep(from, *asked, Mounts::kStay, &spelled);
}

bool VolumeDrive::Locate(int folder, std::string_view name, Located& entry) {
  entry.folder = folder;
  entry.name = name;
  errno = ENOENT;
  if (!IsUsableName(name)) return false;
  if (See(folder, entry.name.c_str(), entry)) return true;
  if (errno != ENOENT) return false;
  for (const bool anew : {false, true}) {
    const std::optional<std::string> found = names_.Find(folder, name, anew);
    if (!found) break;
    entry.name = *found;
    if (See(folder, entry.name.c_str(), entry)) return true;
  }
  entry.name = name;
  errno = ENOENT;
  return false;
}

}  // namespace quellix
