// Reading, overwriting and replacing whole files of a volume.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

#include <cerrno>

#include "platform/path.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/volume_attributes.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {
namespace {

constexpr const char* kCreatedName = "system.ntfs_crtime";

// A FILETIME of 0 leaves the time as it is.
timespec ToTimespec(int64_t filetime) {
  constexpr int64_t kSecondsTo1970 = 11644473600;
  if (filetime == 0) return {0, UTIME_OMIT};
  timespec time;
  time.tv_sec = filetime / 10'000'000 - kSecondsTo1970;
  time.tv_nsec = filetime % 10'000'000 * 100;
  return time;
}

// errno of a failure, or 0.
int WriteAll(int fd, std::string_view bytes, off_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = pwrite(fd, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<size_t>(written));
    offset += written;
  }
  return 0;
}

// Much at once starts on its way to the disk, so that a later Flush has little to wait for.
void StartWriting(int fd, uint64_t offset, size_t size) {
  constexpr size_t kMuch = 1 << 20;
  if (size < kMuch) return;
  sync_file_range(fd, static_cast<off_t>(offset), static_cast<off_t>(size), SYNC_FILE_RANGE_WRITE);
}

class VolumeRandomFile : public RandomFile {
 public:
  VolumeRandomFile(UniqueFd fd, const struct stat& status, AttributeSupport& support,
                   std::string_view path)
      : fd_(std::move(fd)), status_(status), support_(support), path_(path) {}

  uint64_t Size() const override { return static_cast<uint64_t>(status_.st_size); }
  size_t Read(uint64_t offset, std::span<char> buffer) override;
  void Write(uint64_t offset, std::string_view bytes) override {
    if (const int code = WriteAll(fd_.get(), bytes, static_cast<off_t>(offset))) {
      ThrowErrno(code, path_);
    }
    StartWriting(fd_.get(), offset, bytes.size());
  }
  void Resize(uint64_t size) override { Check(ftruncate(fd_.get(), static_cast<off_t>(size))); }
  void Flush() override { Check(fdatasync(fd_.get())); }
  FileTimes Times() override;
  uint32_t Attributes() override { return ReadAttributes(fd_.get(), status_.st_mode, support_); }
  void SetTimes(const FileTimes& times) override;

 private:
  void Check(int result) {
    if (result != 0) ThrowErrno(errno, path_);
  }

  UniqueFd fd_;
  const struct stat status_;  // when it was opened
  AttributeSupport& support_;
  std::string path_;
};

size_t VolumeRandomFile::Read(uint64_t offset, std::span<char> buffer) {
  size_t filled = 0;
  while (filled < buffer.size()) {
    const ssize_t got = pread(fd_.get(), buffer.data() + filled, buffer.size() - filled,
                              static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ThrowErrno(errno, path_);
    if (got == 0) break;
    filled += static_cast<size_t>(got);
  }
  return filled;
}

FileTimes VolumeRandomFile::Times() {
  struct stat status;
  Check(fstat(fd_.get(), &status));
  FileTimes times{0, ToFileTime(status.st_atim), ToFileTime(status.st_mtim)};
  int64_t created = 0;  // NTFS drivers alone tell it and let it be set
  if (!support_.created) return times;
  if (fgetxattr(fd_.get(), kCreatedName, &created, sizeof created) == sizeof created) {
    times.created = created;
  } else if (errno == EOPNOTSUPP) {
    support_.created = false;
  }
  return times;
}

void VolumeRandomFile::SetTimes(const FileTimes& times) {
  if (times.created != 0) {
    fsetxattr(fd_.get(), kCreatedName, &times.created, sizeof times.created, XATTR_REPLACE);
  }
  const timespec both[] = {ToTimespec(times.last_access), ToTimespec(times.last_write)};
  Check(futimens(fd_.get(), both));
}

// Opens a regular file itself; others (pipes, devices, folders) are refused without waiting.
UniqueFd OpenRegular(const Located& entry, int flags, std::string_view path, struct stat& status) {
  if (S_ISDIR(entry.status.st_mode)) ThrowErrno(EISDIR, path);
  UniqueFd fd(
      openat(entry.folder.get(), entry.name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  if (!S_ISREG(status.st_mode)) ThrowErrno(EACCES, path);
  return fd;
}

// Makes an empty file whose name is on the disk at once.
UniqueFd CreateRegular(const Located& entry, std::string_view path, struct stat& status) {
  UniqueFd fd(openat(entry.folder.get(), entry.name.c_str(),
                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
  if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  const UniqueFd folder(openat(entry.folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder || fsync(fd.get()) != 0 || fsync(folder.get()) != 0) ThrowErrno(errno, path);
  return fd;
}

void KeepExtendedAttributes(int from, int to) {
  char names[4096];
  const ssize_t size = flistxattr(from, names, sizeof names);
  for (const char* name = names; name < names + size; name += std::string_view(name).size() + 1) {
    std::string value(64 << 10, '\0');
    const ssize_t length = fgetxattr(from, name, value.data(), value.size());
    if (length >= 0) fsetxattr(to, name, value.data(), static_cast<size_t>(length), 0);
  }
}

// What can be kept is kept; a disk without owners or attributes is no failure.
void KeepIdentity(const Located& old, int to) {
  const UniqueFd from(
      openat(old.folder.get(), old.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!from || !S_ISREG(old.status.st_mode)) return;
  if (fchown(to, old.status.st_uid, old.status.st_gid) != 0) errno = 0;
  KeepExtendedAttributes(from.get(), to);
  fchmod(to, old.status.st_mode & 07777);
}

// A new file beside the one to replace; removed again unless it takes its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(const Located& target) : target_(target) {
    for (int number = 0; !fd_ && number < 1000; ++number) {
      name_ = "quellix-" + std::to_string(getpid()) + "-" + std::to_string(number) + ".tmp";
      fd_ = UniqueFd(openat(target_.folder.get(), name_.c_str(),
                            O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
      if (!fd_ && errno != EEXIST) return;
    }
  }
  ~TemporaryFile() {
    if (fd_ && !placed_) unlinkat(target_.folder.get(), name_.c_str(), 0);
  }

  int fd() const { return fd_.get(); }
  bool Place() {
    if (fsync(fd_.get()) != 0) return false;
    placed_ = renameat(target_.folder.get(), name_.c_str(), target_.folder.get(),
                       target_.name.c_str()) == 0;
    if (placed_) {
      const UniqueFd folder(openat(target_.folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
      fsync(folder.get());
    }
    return placed_;
  }

 private:
  const Located& target_;
  std::string name_;
  UniqueFd fd_;
  bool placed_ = false;
};

}  // namespace

std::unique_ptr<RandomFile> VolumeFileSystem::Open(std::string_view path, OpenMode mode) {
  const auto parts = Parse(path);
  if (!parts) ThrowErrno(errno, path);
  struct stat status;
  const auto opened = [&](UniqueFd fd) {
    return std::make_unique<VolumeRandomFile>(std::move(fd), status,
                                              parts->drive->attribute_support(), path);
  };
  if (mode == OpenMode::kRead) {
    const auto entry = parts->drive->LocateNext(parts->folder, parts->name);
    if (!entry) ThrowErrno(errno, path);
    return opened(OpenRegular(*entry, O_RDONLY, path, status));
  }
  if (mode == OpenMode::kWrite) return opened(OpenRegular(Need(path), O_WRONLY, path, status));
  bool exists = false;
  const Located entry = NeedNew(path, exists);
  UniqueFd fd =
      exists ? OpenRegular(entry, O_RDWR, path, status) : CreateRegular(entry, path, status);
  // Held as long as the file is open: two writers at once would undo each other's work.
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
    ThrowErrno(errno == EWOULDBLOCK ? EBUSY : errno, path);
  return opened(std::move(fd));
}

UniqueFd VolumeFileSystem::OpenForRead(std::string_view path) {
  const std::optional<Located> entry = Find(path);
  if (!entry && (errno == ENOENT || errno == ENOTDIR)) return UniqueFd();
  if (!entry) ThrowErrno(errno, path);
  struct stat status;
  return OpenRegular(*entry, O_RDONLY, path, status);
}

std::optional<std::string> VolumeFileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  const UniqueFd fd = OpenForRead(path);
  if (!fd) return std::nullopt;
  struct stat status;
  if (fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  std::string bytes(static_cast<size_t>(std::min<uint64_t>(status.st_size, limit)) + 1, '\0');
  size_t used = 0;
  for (;;) {
    const ssize_t got = read(fd.get(), bytes.data() + used, bytes.size() - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ThrowErrno(errno, path);
    used += static_cast<size_t>(got);
    if (used > limit) ThrowErrno(EFBIG, path);
    if (got == 0) break;
    if (used == bytes.size()) bytes.resize(2 * used);
  }
  bytes.resize(used);
  return bytes;
}

void VolumeFileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  Replace(path, [&](int fd) {
    if (const int code = WriteAll(fd, bytes, 0)) ThrowErrno(code, path);
  });
}

void VolumeFileSystem::Replace(std::string_view path, const std::function<void(int fd)>& fill) {
  bool exists = false;
  const Located target = NeedNew(path, exists);
  if (exists && S_ISDIR(target.status.st_mode)) ThrowErrno(EISDIR, path);
  TemporaryFile file(target);
  if (file.fd() < 0) ThrowErrno(errno, path);
  fill(file.fd());
  if (exists) KeepIdentity(target, file.fd());
  if (!file.Place()) ThrowErrno(errno, path);
}

}  // namespace quellix
