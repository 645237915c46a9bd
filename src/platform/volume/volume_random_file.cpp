#include "platform/volume/volume_random_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/volume/entry_info.h"
#include "platform/volume/volume_attributes.h"
#include "platform/volume/volume_error.h"

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

// Held as long as the file is open: two writers at once would undo each other's work.
void Lock(int fd, std::string_view path) {
  if (flock(fd, LOCK_EX | LOCK_NB) == 0) return;
  ThrowErrno(errno == EWOULDBLOCK ? EBUSY : errno, path);
}

}  // namespace

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

// Looked at first by a descriptor that opens nothing: opening a device may do something already.
UniqueFd OpenRegular(const Located& entry, int flags, std::string_view path, struct stat& status) {
  const UniqueFd place(
      openat(entry.folder, entry.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!place || fstat(place.get(), &status) != 0) ThrowErrno(errno, path);
  if (S_ISDIR(status.st_mode)) ThrowErrno(EISDIR, path);
  if (S_ISLNK(status.st_mode)) ThrowErrno(ELOOP, path);
  if (!S_ISREG(status.st_mode)) ThrowErrno(EACCES, path);
  const std::string file = "/proc/self/fd/" + std::to_string(place.get());
  UniqueFd fd(open(file.c_str(), flags | O_CLOEXEC));
  if (!fd) ThrowErrno(errno, path);
  return fd;
}

std::unique_ptr<RandomFile> OpenVolumeFile(const Located& entry, int flags,
                                           AttributeSupport& support, std::string_view path) {
  struct stat status;
  UniqueFd fd = OpenRegular(entry, flags, path, status);
  if (flags == O_RDWR) Lock(fd.get(), path);
  return std::make_unique<VolumeRandomFile>(std::move(fd), status, support, path);
}

std::unique_ptr<RandomFile> CreateVolumeFile(const Located& entry, OpenMode mode,
                                             AttributeSupport& support, std::string_view path) {
  struct stat status;
  UniqueFd fd(openat(entry.folder, entry.name.c_str(),
                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
  if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  Lock(fd.get(), path);
  if (mode == OpenMode::kReadAndCreate) {
    const UniqueFd folder(openat(entry.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || fsync(fd.get()) != 0 || fsync(folder.get()) != 0) ThrowErrno(errno, path);
  }
  return std::make_unique<VolumeRandomFile>(std::move(fd), status, support, path);
}

}  // namespace quellix
