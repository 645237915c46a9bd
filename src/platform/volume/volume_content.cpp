// Reading, overwriting and replacing whole files of a volume.
#include <fcntl.h>
#include <sys/xattr.h>

#include <cerrno>

#include "platform/path.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {
namespace {

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

class VolumeRandomFile : public RandomFile {
 public:
  VolumeRandomFile(UniqueFd fd, uint64_t size, std::string_view path)
      : fd_(std::move(fd)), size_(size), path_(path) {}

  uint64_t Size() const override { return size_; }
  void Write(uint64_t offset, std::string_view bytes) override {
    if (const int code = WriteAll(fd_.get(), bytes, static_cast<off_t>(offset))) {
      ThrowErrno(code, path_);
    }
  }
  void Flush() override {
    if (fdatasync(fd_.get()) != 0) ThrowErrno(errno, path_);
  }

 private:
  UniqueFd fd_;
  uint64_t size_;
  std::string path_;
};

// Opens a regular file itself; others (pipes, devices, folders) are refused without waiting.
UniqueFd OpenRegular(const Located& entry, int flags, std::string_view path, struct stat& status) {
  if (S_ISDIR(entry.status.st_mode)) ThrowErrno(EISDIR, path);
  UniqueFd fd(
      openat(entry.folder.get(), entry.name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  if (!S_ISREG(status.st_mode)) ThrowErrno(EACCES, path);
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

std::unique_ptr<RandomFile> VolumeFileSystem::OpenForWrite(std::string_view path) {
  struct stat status;
  UniqueFd fd = OpenRegular(Need(path), O_WRONLY, path, status);
  return std::make_unique<VolumeRandomFile>(std::move(fd), static_cast<uint64_t>(status.st_size),
                                            path);
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
