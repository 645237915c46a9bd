#include "platform/volume/volume_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include "platform/path.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/look_ahead.h"
#include "platform/volume/replaced_file.h"
#include "platform/volume/volume_attributes.h"
#include "platform/volume/volume_enumeration.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_file_system.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

// Readable, from one that is for looking up names only.
UniqueFd OpenReadable(int folder) {
  return UniqueFd(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// What a descriptor is called now; "" when that is too long to be told.
std::string NameOfFd(int fd) {
  char name[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  const ssize_t size = readlink(link.c_str(), name, sizeof name);
  return size <= 0 || size == sizeof name ? "" : std::string(name, static_cast<size_t>(size));
}

}  // namespace

void RequireMissing(int code, std::string_view path) {
  if (code == ENOENT || code == ENAMETOOLONG) return;
  if (code == ENOTDIR) {
    throw Error(Error::Kind::kOther, "This is a file, not a folder: " + std::string(path));
  }
  ThrowErrno(code, path);
}

VolumeFolder::VolumeFolder(VolumeFileSystem& files, VolumeDrive& drive, UniqueFd fd,
                           std::string path)
    : files_(files), drive_(drive), fd_(std::move(fd)), path_(std::move(path)) {}

std::string VolumeFolder::PathOf(std::string_view name) const {
  return WithBackslash(path_).append(name);
}

void VolumeFolder::Fail(int code, std::string_view name) const { ThrowErrno(code, PathOf(name)); }

// False when it is missing.
bool VolumeFolder::Find(std::string_view name, Located& entry) {
  if (drive_.Locate(fd(), name, entry)) return true;
  if (errno != ENOENT && errno != ENAMETOOLONG) Fail(errno, name);
  return false;
}

Located VolumeFolder::Need(std::string_view name) {
  Located entry;
  if (!Find(name, entry)) Fail(ENOENT, name);
  return entry;
}

// Where an entry is or would be made; false when it is missing.
bool VolumeFolder::FindPlace(std::string_view name, Located& entry) {
  if (!IsUsableName(name)) Fail(ENOENT, name);
  if (drive_.Locate(fd(), name, entry)) return true;
  if (errno != ENOENT) Fail(errno, name);
  return false;
}

bool VolumeFolder::IsFolderLink(const Located& entry) {
  return S_ISLNK(entry.status.st_mode) && LeadsToFolder(entry, drive_.attribute_support());
}

FileId VolumeFolder::Id() {
  if (id_) return *id_;
  struct statx seen;
  if (statx(fd(), "", AT_EMPTY_PATH, STATX_INO, &seen) != 0) ThrowErrno(errno, path_);
  is_immutable_ = (seen.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0;
  return *(id_ = FileId{makedev(seen.stx_dev_major, seen.stx_dev_minor), {seen.stx_ino, 0}});
}

std::vector<FileId> VolumeFolder::Above() {
  std::vector<FileId> above;
  struct stat root, status;
  if (fstat(drive_.root(), &root) != 0 || fstat(fd(), &status) != 0) ThrowErrno(errno, path_);
  if (status.st_nlink == 0) ThrowErrno(ENOENT, path_);  // removed, it lies nowhere
  UniqueFd here;
  while (IdFrom(status) != IdFrom(root)) {
    const FileId below = IdFrom(status);
    here = UniqueFd(openat(here ? here.get() : fd(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!here || fstat(here.get(), &status) != 0) ThrowErrno(errno, path_);
    if (IdFrom(status) == below || status.st_dev != root.st_dev) ThrowErrno(EXDEV, path_);
    above.push_back(IdFrom(status));
  }
  return above;
}

DiskRoom VolumeFolder::Room() {
  struct statvfs disk;
  if (fstatvfs(fd(), &disk) != 0) ThrowErrno(errno, path_);
  return {(disk.f_flag & ST_RDONLY) != 0, uint64_t{disk.f_bavail} * disk.f_frsize,
          uint64_t{disk.f_blocks} * disk.f_frsize};
}

void VolumeFolder::Enumerate(Detail detail, const EntryVisitor& visit) {
  AttributeSupport& support = drive_.attribute_support();
  int code = EBADF;
  if (std::exchange(is_unread_, false)) {
    code = EnumerateFolder(fd(), fd(), detail, support, visit);
  }
  if (code == EBADF) {
    const UniqueFd readable = OpenReadable(fd());
    code = readable ? EnumerateFolder(fd(), readable.get(), detail, support, visit) : errno;
  }
  if (code != 0) ThrowErrno(code, path_);
}

std::shared_ptr<void> VolumeFolder::ExpectLooks(LookAhead& look_ahead,
                                                std::span<const FilesBelow> files) {
  std::vector<VolumeFolder*> folders;
  std::vector<LookAhead::Files> expected;
  for (const auto& [of, paths, start] : files) {
    auto* const folder = dynamic_cast<VolumeFolder*>(of);
    if (folder == nullptr || !folder->ahead_.expired()) return nullptr;
    folders.push_back(folder);
    expected.push_back({folder->fd(), paths, start});
  }
  if (expected.empty()) return nullptr;
  const std::shared_ptr<LookAhead> ahead = look_ahead.Expect(expected);
  for (VolumeFolder* const folder : folders) folder->ahead_ = ahead;
  return ahead;
}

bool VolumeFolder::TakeExpected(std::string_view name, Located& entry) {
  const std::shared_ptr<LookAhead> ahead = ahead_.lock();
  const std::optional<Seen> seen = ahead ? ahead->Take(Id(), name) : std::nullopt;
  if (!seen) return false;
  static_cast<Seen&>(entry) = *seen;
  entry.folder = fd();
  entry.name = name;
  return true;
}

std::optional<FileInfo> VolumeFolder::Look(std::string_view name, Detail detail) {
  Located entry = std::move(looked_);  // for the room that its name has
  looked_.name.clear();
  const bool is_expected = detail == Detail::kSize && TakeExpected(name, entry);
  if (!is_expected && !Find(name, entry)) return std::nullopt;
  const FileInfo info = MakeInfo(entry, drive_.attribute_support(), detail);
  if (!info.is_folder) looked_ = std::move(entry);
  return info;
}

std::optional<FileId> VolumeFolder::IdOf(std::string_view name) {
  Located entry;
  if (!Find(name, entry)) return std::nullopt;
  return IdFrom(entry.status);
}

std::unique_ptr<Folder> VolumeFolder::OpenFolder(std::string_view names, OpenFor use) {
  UniqueFd below = drive_.OpenBelow(fd(), names, use);
  if (below) {
    auto folder = std::make_unique<VolumeFolder>(files_, drive_, std::move(below), PathOf(names));
    folder->is_unread_ = use == OpenFor::kListing;
    folder->ahead_ = ahead_;
    return folder;
  }
  RequireMissing(errno, PathOf(names));
  return nullptr;
}

std::unique_ptr<RandomFile> VolumeFolder::Open(std::string_view name, OpenMode mode) {
  const std::string path = PathOf(name);
  AttributeSupport& support = drive_.attribute_support();
  if (mode == OpenMode::kRead || mode == OpenMode::kReadKept || mode == OpenMode::kWrite)
    return OpenVolumeFile(Need(name), mode, support, path);
  Located entry;
  const bool exists = FindPlace(name, entry);
  if (exists && mode == OpenMode::kCreateNew) Fail(EEXIST, name);
  std::unique_ptr<RandomFile> file = exists ? OpenVolumeFile(entry, mode, support, path)
                                            : CreateVolumeFile(entry, mode, support, path);
  if (!exists) drive_.names().Add(fd(), entry.name);
  return file;
}

UniqueFd VolumeFolder::OpenForRead(std::string_view name) {
  Located entry;
  if (!Find(name, entry)) return UniqueFd();
  struct stat status;
  return OpenRegular(entry, O_RDONLY, PathOf(name), status);
}

void VolumeFolder::Replace(std::string_view name, const std::function<void(int fd)>& fill,
                           const std::function<void()>& before_placing) {
  looked_.name.clear();
  Located entry;
  const bool exists = FindPlace(name, entry);
  if (exists && (S_ISDIR(entry.status.st_mode) || IsFolderLink(entry))) Fail(EISDIR, name);
  ReplaceFile(entry, exists, PathOf(name), fill, before_placing);
  drive_.names().Add(fd(), entry.name);
}

bool VolumeFolder::Link(std::string_view name, std::string_view second) {
  const Located entry = Need(name);
  const std::string added(second);
  if (linkat(fd(), entry.name.c_str(), fd(), added.c_str(), 0) != 0) {
    if (errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK) return false;
    Fail(errno, second);
  }
  drive_.names().Add(fd(), added);
  return true;
}

void VolumeFolder::Replace(std::string_view name, std::string_view bytes) {
  Replace(name, [&](int file) {
    if (const int code = WriteAll(file, bytes, 0)) Fail(code, name);
  });
}

void VolumeFolder::ClearTemporaryFiles() {
  std::vector<std::string> names;
  Enumerate(Detail::kKind, [&names](const Entry& entry) {
    if (!entry.info.is_folder && IsTemporaryName(entry.name)) names.emplace_back(entry.name);
    return true;
  });
  for (const std::string& name : names) {
    try {
      const auto file = Open(name, OpenMode::kReadAndCreate);  // by one at a time
      if (file->LinkCount() == 1) Overwrite(*file);
      RemoveFile(name);
    } catch (const Error&) {
      continue;
    }
  }
}

void VolumeFolder::CreateFolder(std::string_view name) {
  Located entry;
  if (FindPlace(name, entry)) {
    if (!S_ISDIR(entry.status.st_mode)) Fail(EEXIST, name);
    return;
  }
  if (mkdirat(fd(), entry.name.c_str(), 0755) != 0) Fail(errno, name);
  drive_.names().Add(fd(), entry.name);
}

void VolumeFolder::Rename(std::string_view from, std::string_view to, IfThere if_there) {
  looked_.name.clear();
  const Located source = Need(from);
  Located target;
  const bool exists = FindPlace(to, target);
  const bool is_itself = exists && target.name == source.name;  // the case alone changes
  const auto is_folder = [this](const Located& entry) {
    return S_ISDIR(entry.status.st_mode) || IsFolderLink(entry);
  };
  if (exists && !is_itself) {
    if (if_there == IfThere::kFail) Fail(EEXIST, to);
    if (is_folder(source) || is_folder(target)) Fail(EEXIST, to);
  }
  if (is_itself || !exists) target.name = to;
  if (if_there == IfThere::kReplace && S_ISREG(source.status.st_mode)) {
    struct stat status;
    const UniqueFd file = OpenRegular(source, O_RDONLY, PathOf(from), status);
    if (fsync(file.get()) != 0) Fail(errno, from);
  }
  const auto rename = [&](unsigned flags) {
    return renameat2(fd(), source.name.c_str(), fd(), target.name.c_str(), flags) == 0;
  };
  const bool replaces = exists && !is_itself;
  if (!rename(replaces ? 0 : RENAME_NOREPLACE)) {
    const bool is_refused = !replaces && (errno == EINVAL || (errno == EEXIST && is_itself));
    if (!is_refused || !rename(0)) Fail(errno, errno == EEXIST ? to : from);
  }
  // Two names of one file: there renaming does nothing.
  if (replaces && IdFrom(source.status) == IdFrom(target.status)) {
    unlinkat(fd(), source.name.c_str(), 0);
  }
  drive_.names().Add(fd(), target.name);
}

// Where the driver knows no renaming that replaces nothing, the look before must do.
void VolumeFolder::MoveTo(std::string_view from, Folder& folder, std::string_view to) {
  auto& target = static_cast<VolumeFolder&>(folder);
  const Located source = Need(from);
  Located taken;
  if (target.FindPlace(to, taken)) target.Fail(EEXIST, to);
  const std::string name(to);
  const auto rename = [&](unsigned flags) {
    return renameat2(fd(), source.name.c_str(), target.fd(), name.c_str(), flags) == 0;
  };
  if (!rename(RENAME_NOREPLACE) && (errno != EINVAL || !rename(0)))
    target.Fail(errno, errno == EEXIST ? to : from);
  target.drive_.names().Add(target.fd(), name);
}

void VolumeFolder::Flush() {
  const UniqueFd readable = OpenReadable(fd());
  if (!readable || fsync(readable.get()) != 0) ThrowErrno(errno, path_);
}

void VolumeFolder::RemoveFile(std::string_view name) {
  const std::string looked = std::exchange(looked_.name, {});
  if (!name.empty() && looked == name && unlinkat(fd(), looked.c_str(), 0) == 0) return;
  const Located entry = Need(name);
  if (IsFolderLink(entry)) Fail(EISDIR, name);
  if (unlinkat(fd(), entry.name.c_str(), 0) != 0) Fail(errno, name);
}

// Uses nothing of this object that changes. A look is taken: unlink would take a link to a folder.
bool VolumeFolder::RemoveAsSpelled(std::string_view name, FileInfo& seen) {
  if (!IsUsableName(name)) return false;
  const std::string spelled(name);
  Located entry;
  if (!See(fd(), spelled.c_str(), entry) || !S_ISREG(entry.status.st_mode)) return false;
  seen = MakeInfo(entry, drive_.attribute_support(), Detail::kSize);
  return unlinkat(fd(), spelled.c_str(), 0) == 0;
}

void VolumeFolder::RemoveFolder(std::string_view name) {
  // Tried at once: this takes neither a file nor a link.
  if (IsUsableName(name) && unlinkat(fd(), std::string(name).c_str(), AT_REMOVEDIR) == 0) return;
  const Located entry = Need(name);
  const bool is_link = S_ISLNK(entry.status.st_mode);
  if (!S_ISDIR(entry.status.st_mode) && !IsFolderLink(entry)) {
    throw Error(Error::Kind::kOther, "This is a file, not a folder: " + PathOf(name));
  }
  if (unlinkat(fd(), entry.name.c_str(), is_link ? 0 : AT_REMOVEDIR) != 0) Fail(errno, name);
}

void VolumeFolder::RequireRemovable(std::string_view name) {
  if (!holds_names_) {
    Id();  // tells of an attribute that keeps it from changes as well
    const bool may_write = faccessat(fd(), ".", W_OK | X_OK, AT_EACCESS) == 0;
    holds_names_ = !may_write ? errno : is_immutable_ ? EPERM : 0;
  }
  const bool is_known = !name.empty() && looked_.name == name;
  const bool is_immutable = is_known ? looked_.is_immutable : Need(name).is_immutable;
  const int code = *holds_names_ == 0 && is_immutable ? EPERM : *holds_names_;
  if (code != 0) Fail(code, name);
}

void VolumeFolder::SetAttributes(std::string_view name, uint32_t attributes) {
  const int code = WriteAttributes(Need(name), attributes, drive_.attribute_support());
  if (code != 0) Fail(code, name);
}

// Its Windows path at this moment, wherever it was moved since it was opened.
std::string VolumeFolder::PathNow() const {
  const std::string root = NameOfFd(drive_.root()), name = NameOfFd(fd());
  if (root.empty() || name.empty()) return path_;
  std::string rest = name.substr(std::min(root.size(), name.size()));
  const bool is_below = name.starts_with(root) && (rest.empty() || rest[0] == '/');
  if (!is_below) ThrowErrno(ENOENT, path_);
  std::replace(rest.begin(), rest.end(), '/', '\\');
  return path_.substr(0, 2) + rest;
}

void VolumeFolder::Recycle(std::string_view name) {
  const Located entry = Need(name);
  files_.Recycle(entry, WithBackslash(PathNow()) + entry.name);
}

}  // namespace quellix
