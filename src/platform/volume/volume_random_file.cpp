#include "platform/volume/volume_random_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/volume_attributes.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

constexpr const char* kCreatedName = "system.ntfs_crtime";
constexpr const char* kShortName = "system.ntfs_dos_name";
// ntfs-3g shows streams so; on other disks these are what comes closest to them.
constexpr std::string_view kStreamStart = "user.";

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
  void BeginFlush() override { sync_file_range(fd_.get(), 0, 0, SYNC_FILE_RANGE_WRITE); }
  FileTimes Times() override;
  uint32_t Attributes() override { return ReadAttributes(fd_.get(), status_.st_mode, support_); }
  void SetTimes(const FileTimes& times) override;
  FileId Id() override { return IdFrom(status_); }
  uint32_t LinkCount() override;
  std::vector<Extent> Allocated() override;
  void SetAttributes(uint32_t attributes) override {
    const int code = WriteAttributes(fd_.get(), status_.st_mode, attributes, support_);
    if (code != 0) ThrowErrno(code, path_);
  }
  std::vector<StreamInfo> Streams() override;
  std::string ReadStream(std::string_view name) override;
  void WriteStream(std::string_view name, std::string_view bytes) override;

 private:
  std::vector<Extent> Seek();
  std::vector<Extent> ReadThrough(uint64_t allocated);
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

// The creation time last: with the other order ntfs-3g forgets the times that are set here.
void VolumeRandomFile::SetTimes(const FileTimes& times) {
  const timespec both[] = {ToTimespec(times.last_access), ToTimespec(times.last_write)};
  Check(futimens(fd_.get(), both));
  if (times.created == 0) return;
  fsetxattr(fd_.get(), kCreatedName, &times.created, sizeof times.created, XATTR_REPLACE);
}

// ntfs-3g counts the short name that a file may have beside its own. Of a file with several links
// it does not tell that name, nor is it needed to know that they are several.
uint32_t VolumeRandomFile::LinkCount() {
  struct stat status;
  Check(fstat(fd_.get(), &status));
  char short_name[64];
  const ssize_t size = status.st_nlink < 2 || !support_.ntfs
                           ? -1
                           : fgetxattr(fd_.get(), kShortName, short_name, sizeof short_name);
  const bool is_own =
      size > 0 && EqualsNoCase({short_name, static_cast<size_t>(size)}, NamePart(path_));
  return static_cast<uint32_t>(status.st_nlink) - (size > 0 && !is_own ? 1 : 0);
}

std::vector<Extent> VolumeRandomFile::Allocated() {
  struct stat status;
  Check(fstat(fd_.get(), &status));
  const auto size = static_cast<uint64_t>(status.st_size);
  const auto allocated = static_cast<uint64_t>(status.st_blocks) * 512;
  std::vector<Extent> extents = Seek();
  // Drivers that cannot tell call everything data.
  const bool is_told = allocated >= size || extents.size() != 1 || extents[0].size != size;
  return is_told ? extents : ReadThrough(allocated);
}

std::vector<Extent> VolumeRandomFile::Seek() {
  std::vector<Extent> extents;
  for (off_t at = 0;;) {
    const off_t start = lseek(fd_.get(), at, SEEK_DATA);
    if (start < 0 && errno == ENXIO) return extents;
    const off_t end = start < 0 ? start : lseek(fd_.get(), start, SEEK_HOLE);
    if (end < 0) return {{0, Size()}};
    extents.push_back({static_cast<uint64_t>(start), static_cast<uint64_t>(end - start)});
    at = end;
  }
}

// The parts that are not zero, until they make up all that is allocated; of a compressed file that
// tells nothing.
std::vector<Extent> VolumeRandomFile::ReadThrough(uint64_t allocated) {
  constexpr size_t kSector = 512, kPiece = 1 << 20;
  static constexpr char kZeros[kSector] = {};
  const bool is_compressed = (Attributes() & kCompressed) != 0;
  std::vector<Extent> extents;
  std::string piece(kPiece, '\0');
  uint64_t found = 0;
  for (uint64_t at = 0; allocated > 0 && (is_compressed || found < allocated); at += kPiece) {
    const size_t got = Read(at, piece);
    for (size_t i = 0; i < got; i += kSector) {
      const size_t size = std::min(kSector, got - i);
      if (std::memcmp(piece.data() + i, kZeros, size) == 0) continue;
      found += kSector;
      if (!extents.empty() && extents.back().offset + extents.back().size == at + i) {
        extents.back().size += size;
      } else {
        extents.push_back({at + i, size});
      }
    }
    if (got < kPiece) break;
  }
  return extents;
}

std::vector<StreamInfo> VolumeRandomFile::Streams() {
  std::vector<StreamInfo> streams;
  const ssize_t size = flistxattr(fd_.get(), nullptr, 0);
  std::string names(size > 0 ? static_cast<size_t>(size) : 0, '\0');
  if (size > 0 && flistxattr(fd_.get(), names.data(), names.size()) != size) {
    ThrowErrno(errno, path_);
  }
  for (const std::string& name : Split(names, '\0')) {
    if (!name.starts_with(kStreamStart) || name == kSambaName) continue;
    const ssize_t bytes = fgetxattr(fd_.get(), name.c_str(), nullptr, 0);
    if (bytes < 0) ThrowErrno(errno, path_ + ":" + name.substr(kStreamStart.size()));
    streams.push_back({name.substr(kStreamStart.size()), static_cast<uint64_t>(bytes)});
  }
  return streams;
}

std::string VolumeRandomFile::ReadStream(std::string_view name) {
  std::string bytes(64 << 10, '\0');  // what the system hands out at most
  const std::string attribute = std::string(kStreamStart).append(name);
  const ssize_t size = fgetxattr(fd_.get(), attribute.c_str(), bytes.data(), bytes.size());
  if (size < 0) {
    ThrowErrno(errno == ENODATA ? ENOENT : errno, std::string(path_).append(":").append(name));
  }
  bytes.resize(static_cast<size_t>(size));
  return bytes;
}

void VolumeRandomFile::WriteStream(std::string_view name, std::string_view bytes) {
  const std::string attribute = std::string(kStreamStart).append(name);
  if (fsetxattr(fd_.get(), attribute.c_str(), bytes.data(), bytes.size(), 0) == 0) return;
  const std::string stream = std::string(path_).append(":").append(name);
  if (errno == EOPNOTSUPP || errno == E2BIG || errno == ERANGE) {
    throw NotAvailable("This disk cannot hold the stream " + stream);
  }
  ThrowErrno(errno, stream);
}

// Held as long as the file is open: two writers at once would undo each other's work, and who reads
// what he keeps would read half of it.
void Lock(int fd, int kind, std::string_view path) {
  if (flock(fd, kind | LOCK_NB) == 0) return;
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

std::string ReadAll(int fd, uint64_t limit, std::string_view path) {
  struct stat status;
  if (fstat(fd, &status) != 0) ThrowErrno(errno, path);
  std::string bytes(static_cast<size_t>(std::min<uint64_t>(status.st_size, limit)) + 1, '\0');
  for (size_t used = 0;;) {
    const ssize_t got =
        pread(fd, bytes.data() + used, bytes.size() - used, static_cast<off_t>(used));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ThrowErrno(errno, path);
    used += static_cast<size_t>(got);
    if (used > limit) ThrowErrno(EFBIG, path);
    if (got == 0) {
      bytes.resize(used);
      return bytes;
    }
    if (used == bytes.size()) bytes.resize(2 * used);
  }
}

// Looked at first by a descriptor that opens nothing: opening a device may do something already.
UniqueFd OpenRegular(const Located& entry, int flags, std::string_view path, struct stat& status) {
  const UniqueFd place(openat(entry.folder, entry.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!place || fstat(place.get(), &status) != 0) ThrowErrno(errno, path);
  if (S_ISDIR(status.st_mode)) ThrowErrno(EISDIR, path);
  if (S_ISLNK(status.st_mode)) ThrowErrno(ELOOP, path);
  if (!S_ISREG(status.st_mode)) ThrowErrno(EACCES, path);
  const std::string file = "/proc/self/fd/" + std::to_string(place.get());
  UniqueFd fd(open(file.c_str(), flags | O_CLOEXEC));
  if (!fd) ThrowErrno(errno, path);
  return fd;
}

std::unique_ptr<RandomFile> OpenVolumeFile(const Located& entry, OpenMode mode,
                                           AttributeSupport& support, std::string_view path) {
  const bool only_reads = mode == OpenMode::kRead || mode == OpenMode::kReadKept;
  const int flags = only_reads ? O_RDONLY : mode == OpenMode::kWrite ? O_WRONLY : O_RDWR;
  struct stat status;
  UniqueFd fd = OpenRegular(entry, flags, path, status);
  if (mode == OpenMode::kReadKept) Lock(fd.get(), LOCK_SH, path);
  if (mode == OpenMode::kReadAndCreate) Lock(fd.get(), LOCK_EX, path);
  return std::make_unique<VolumeRandomFile>(std::move(fd), status, support, path);
}

std::unique_ptr<RandomFile> CreateVolumeFile(const Located& entry, OpenMode mode,
                                             AttributeSupport& support, std::string_view path) {
  struct stat status;
  UniqueFd fd(openat(entry.folder, entry.name.c_str(),
                     O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
  if (!fd || fstat(fd.get(), &status) != 0) ThrowErrno(errno, path);
  Lock(fd.get(), LOCK_EX, path);
  if (mode == OpenMode::kReadAndCreate) {
    const UniqueFd folder(openat(entry.folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || fsync(fd.get()) != 0 || fsync(folder.get()) != 0) ThrowErrno(errno, path);
  }
  return std::make_unique<VolumeRandomFile>(std::move(fd), status, support, path);
}

void Overwrite(RandomFile& file) {
  static const std::string kZeros(1 << 20, '\0');
  for (const Extent& extent : file.Allocated()) {
    const uint64_t end = extent.offset + extent.size;
    for (uint64_t at = extent.offset; at < end; at += kZeros.size())
      file.Write(at, std::string_view(kZeros).substr(0, end - at));
  }
  file.Flush();
}

}  // namespace quellix
