#include "platform/volume/volume_drive.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <cerrno>
#include <vector>

#include "platform/text.h"
#include "platform/volume/folder_reader.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

// What one system call may be given; longer paths are walked in pieces.
constexpr size_t kPieceSize = 4000;

UniqueFd OpenBeneath(int from, const char* path, int flags) {
  open_how how = {};
  how.flags = static_cast<uint64_t>(flags | O_DIRECTORY | O_CLOEXEC);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  for (;;) {
    const long fd = syscall(SYS_openat2, from, path, &how, sizeof how);
    if (fd >= 0 || errno != EAGAIN) return UniqueFd(static_cast<int>(fd));
  }
}

// The kernel says ENOTDIR for a link where a folder was asked for; told apart for the message.
UniqueFd OpenOneFolder(int from, const char* name, int flags) {
  UniqueFd fd(openat(from, name, flags | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
  if (fd || errno != ENOTDIR) return fd;
  struct stat status;
  const bool is_link =
      fstatat(from, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
  errno = is_link ? ELOOP : ENOTDIR;
  return fd;
}

// "a\b" as "a/b"; nothing (ENOENT) when a component cannot be a name.
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

}  // namespace

bool IsUsableName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("\\/\0", 3)) == std::string_view::npos;
}

std::optional<std::string> FindName(int folder, std::string_view name) {
  const UniqueFd readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::optional<std::string> found;
  if (readable) {
    ReadFolder(readable.get(), [&](const char* entry, unsigned char) {
      if (EqualsNoCase(entry, name)) found = entry;
      return !found;
    });
  }
  if (!found) errno = ENOENT;
  return found;
}

VolumeDrive::VolumeDrive(const std::string& folder)
    : root_(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  if (!root_) ThrowErrno(errno, folder);
  has_openat2_ = static_cast<bool>(OpenBeneath(root_.get(), ".", O_PATH));
}

UniqueFd VolumeDrive::Step(int from, const std::string& spelled, int flags) const {
  if (has_openat2_) return OpenBeneath(from, spelled.c_str(), flags);
  UniqueFd here(openat(from, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (const std::string& name : Split(spelled, '/')) {
    here = OpenOneFolder(here.get(), name.c_str(), O_PATH);
    if (!here) return here;
  }
  return UniqueFd(openat(here.get(), ".", flags | O_DIRECTORY | O_CLOEXEC));
}

UniqueFd VolumeDrive::Walk(std::string_view spelled, int flags) const {
  if (spelled.empty()) return UniqueFd(openat(root_.get(), ".", flags | O_DIRECTORY | O_CLOEXEC));
  UniqueFd piece_folder;
  int from = root_.get();
  while (spelled.size() > kPieceSize) {
    const size_t end = spelled.rfind('/', kPieceSize);
    if (end == std::string_view::npos) break;
    piece_folder = Step(from, std::string(spelled.substr(0, end)), O_PATH);
    if (!piece_folder) return piece_folder;
    from = piece_folder.get();
    spelled.remove_prefix(end + 1);
  }
  return Step(from, std::string(spelled), flags);
}

std::optional<std::string> VolumeDrive::Search(const std::string& asked) {
  UniqueFd here(openat(root_.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  std::string spelled;
  for (std::string name : Split(asked, '/')) {
    UniqueFd next = OpenOneFolder(here.get(), name.c_str(), O_PATH);
    if (!next && errno == ENOENT) {
      const std::optional<std::string> found = FindName(here.get(), name);
      if (!found) return std::nullopt;
      name = *found;
      next = OpenOneFolder(here.get(), name.c_str(), O_PATH);
    }
    if (!next) return std::nullopt;
    here = std::move(next);
    spelled += (spelled.empty() ? "" : "/") + name;
  }
  return spelled;
}

UniqueFd VolumeDrive::OpenFolder(std::string_view folder, int flags) {
  const std::optional<std::string> asked = ToDiskPath(folder);
  if (!asked) return UniqueFd();
  const bool known = !known_.asked.empty() && IsAtOrBelow(*asked, known_.asked);
  UniqueFd fd = Walk(known ? known_.spelled + asked->substr(known_.asked.size()) : *asked, flags);
  if (fd || errno != ENOENT) return fd;
  const std::optional<std::string> spelled = Search(*asked);
  if (!spelled) return fd;
  known_ = {*asked, *spelled};
  return Walk(*spelled, flags);
}

std::optional<Located> VolumeDrive::LookIn(SharedFd folder, std::string_view name, bool& exists) {
  Located result{std::move(folder), name.empty() ? "." : std::string(name), {}};
  if (!result.folder) return std::nullopt;
  if (!name.empty() && !IsUsableName(name)) {
    errno = ENOENT;
    return std::nullopt;
  }
  const auto look = [&result] {
    return fstatat(result.folder.get(), result.name.c_str(), &result.status,
                   AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0;
  };
  exists = look();
  if (exists) return result;
  if (errno != ENOENT) return std::nullopt;
  if (const auto found = FindName(result.folder.get(), name)) {
    result.name = *found;
    exists = look();
  }
  return result;
}

std::optional<Located> VolumeDrive::LocateNew(std::string_view folder, std::string_view name,
                                              bool& exists) {
  held_ = {};
  return LookIn(OpenFolder(folder, O_PATH), name, exists);
}

std::optional<Located> VolumeDrive::LocateNext(std::string_view folder, std::string_view name) {
  if (held_.fd && held_.folder == folder) {
    bool exists = false;
    std::optional<Located> result = LookIn(held_.fd, name, exists);
    if (result && exists) return result;
  }
  std::optional<Located> result = Locate(folder, name);
  if (result) held_ = {std::string(folder), result->folder};
  return result;
}

std::optional<Located> VolumeDrive::Locate(std::string_view folder, std::string_view name) {
  bool exists = false;
  std::optional<Located> result = LocateNew(folder, name, exists);
  if (result && !exists) {
    errno = ENOENT;
    result.reset();
  }
  return result;
}

}  // namespace quellix
