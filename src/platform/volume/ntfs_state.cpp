#include "platform/volume/ntfs_state.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/volume/hive_format.h"
#include "platform/volume/unique_fd.h"

namespace quellix {
namespace {

// As published: the boot sector tells where the file table begins, whose fourth record is that of
// the volume; an attribute of it holds the flags.
constexpr size_t kSector = 512;
constexpr size_t kBytesPerSector = 11, kSectorsPerCluster = 13, kTable = 48, kRecordSize = 64;
constexpr size_t kVolumeRecord = 3, kFirstAttribute = 20, kContent = 20, kFlags = 10;
constexpr uint32_t kVolumeInformation = 0x70, kNoMore = 0xFFFFFFFF, kDirty = 1;

std::string ReadAt(int fd, uint64_t at, size_t size) {
  std::string bytes(size, '\0');
  const ssize_t got = pread(fd, bytes.data(), size, static_cast<off_t>(at));
  bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));
  return bytes;
}

// A negative power of two, or a number of `unit`s.
uint64_t SizeIn(uint32_t stored, uint64_t unit) {
  const int power = static_cast<int>(stored) - (stored < 0x80 ? 0 : 0x100);
  return power > 0 ? static_cast<uint64_t>(power) * unit : uint64_t{1} << std::min(-power, 30);
}

std::string VolumeRecord(int fd, std::string_view boot) {
  const uint64_t sector = NumberAt(boot, kBytesPerSector, 2);
  const uint64_t cluster = SizeIn(NumberAt(boot, kSectorsPerCluster, 1), 1) * sector;
  const uint64_t record = SizeIn(NumberAt(boot, kRecordSize, 1), cluster);
  constexpr uint64_t kLargest = 64 << 10;
  if (record < kSector || record > kLargest) throw UnsoundHive();
  return ReadAt(fd, NumberAt(boot, kTable) * cluster + kVolumeRecord * record, record);
}

bool IsDirty(std::string_view record) {
  if (!record.starts_with("FILE")) return false;
  for (size_t at = NumberAt(record, kFirstAttribute, 2); NumberAt(record, at) != kNoMore;) {
    if (NumberAt(record, at) == kVolumeInformation) {
      return (NumberAt(record, at + NumberAt(record, at + kContent, 2) + kFlags, 2) & kDirty) != 0;
    }
    const size_t length = NumberAt(record, at + 4);
    if (length == 0) return false;
    at += length;
  }
  return false;
}

// By the marks that the published formats begin with; a VDI's follows its free text.
std::string VirtualFormat(std::string_view start) {
  struct Mark {
    size_t at;
    std::string_view text;
    const char* format;
  };
  static constexpr Mark kMarks[] = {{0, "QFI\xFB", "qcow2"}, {0, "vhdxfile", "vhdx"},
                                    {0, "KDMV", "vmdk"},     {0, "# Disk Descriptor", "vmdk"},
                                    {0, "conectix", "vpc"},  {64, "\x7F\x10\xDA\xBE", "vdi"}};
  for (const Mark& mark : kMarks) {
    if (start.substr(mark.at).starts_with(mark.text)) return mark.format;
  }
  return {};
}

}  // namespace

DiskState LookAtDisk(const std::string& file) {
  using Kind = DiskState::Kind;
  const UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!fd) return {.is_hidden = errno == EACCES || errno == EPERM};
  const std::string boot = ReadAt(fd.get(), 0, kSector);
  if (boot.size() < kSector) return {};
  if (std::string format = VirtualFormat(boot); !format.empty())
    return {.kind = Kind::kVirtual, .format = std::move(format)};
  const std::string_view maker = std::string_view(boot).substr(3, 8);
  if (maker == "-FVE-FS-") return {Kind::kBitLocker, false};
  try {
    if (maker == "NTFS    ") return {Kind::kNtfs, IsDirty(VolumeRecord(fd.get(), boot))};
  } catch (const UnsoundHive&) {
    return {Kind::kNtfs, false};
  }
  return {boot.ends_with("\x55\xAA") ? Kind::kPartitioned : Kind::kUnknown, false};
}

}  // namespace quellix
