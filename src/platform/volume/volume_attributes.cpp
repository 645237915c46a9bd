#include "platform/volume/volume_attributes.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string>

#include "platform/file_system.h"

namespace quellix {
namespace {

constexpr uint32_t kSettable = kReadOnly | kHidden | kSystem | kArchive;
constexpr const char* kNtfsName = "system.ntfs_attrib";
constexpr const char* kDosName = "system.dos_attrib";
constexpr const char* kReparseName = "system.ntfs_reparse_data";
// Samba's binary form: an empty text, the version at 2, valid fields at 8, the attributes at 12.
constexpr size_t kSambaVersion = 2, kSambaValid = 8, kSambaBits = 12;

// Extended attributes cannot be read below a descriptor; through /proc they can, without a path
// that could lead elsewhere.
std::string ProcPath(const Located& entry) {
  return "/proc/self/fd/" + std::to_string(entry.folder) + "/" + entry.name;
}

// An entry by its path, or an open file.
struct Source {
  std::string path;
  int fd = -1;
};

std::optional<std::string> ReadRaw(const Source& source, const char* name, bool& supported) {
  if (!supported) return std::nullopt;
  char buffer[256];
  const ssize_t size = source.fd >= 0 ? fgetxattr(source.fd, name, buffer, sizeof buffer)
                                      : lgetxattr(source.path.c_str(), name, buffer, sizeof buffer);
  if (size >= 0) return std::string(buffer, static_cast<size_t>(size));
  if (errno == EOPNOTSUPP) supported = false;
  return std::nullopt;
}

uint32_t FromLittleEndian(std::string_view bytes) {
  uint32_t value = 0;
  for (size_t i = 0; i < bytes.size() && i < 4; ++i) {
    value |= uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  }
  return value;
}

std::string ToLittleEndian(uint32_t value, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

bool IsSambaBinary(std::string_view raw) {
  return raw.size() >= kSambaBits + 4 && raw[0] == 0 && raw[kSambaVersion] >= 3 &&
         raw[kSambaVersion] <= 5;
}

std::optional<uint32_t> FromSamba(std::string_view raw) {
  if (IsSambaBinary(raw)) return FromLittleEndian(raw.substr(kSambaBits, 4));
  uint32_t value = 0;
  if (!raw.starts_with("0x") ||
      std::from_chars(raw.data() + 2, raw.data() + raw.size(), value, 16).ec != std::errc()) {
    return std::nullopt;
  }
  return value;
}

std::string ToSamba(std::string raw, uint32_t value) {
  if (IsSambaBinary(raw)) {
    raw[kSambaValid] = static_cast<char>(raw[kSambaValid] | 1);
    return raw.replace(kSambaBits, 4, ToLittleEndian(value, 4));
  }
  char digits[8];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return "0x" + std::string(digits, end);
}

struct Stored {
  const char* name = nullptr;
  std::string raw;
  uint32_t bits = 0;
};

std::optional<Stored> ReadStored(const Source& source, AttributeSupport& support) {
  if (auto raw = ReadRaw(source, kNtfsName, support.ntfs); raw && !raw->empty()) {
    return Stored{kNtfsName, *raw, FromLittleEndian(*raw)};
  }
  if (auto raw = ReadRaw(source, kDosName, support.dos); raw && !raw->empty()) {
    return Stored{kDosName, *raw, FromLittleEndian(*raw)};
  }
  if (auto raw = ReadRaw(source, kSambaName, support.samba)) {
    if (const auto bits = FromSamba(*raw)) return Stored{kSambaName, *raw, *bits};
  }
  return std::nullopt;
}

int WriteRaw(const Source& source, const Stored& stored) {
  const int result =
      source.fd >= 0
          ? fsetxattr(source.fd, stored.name, stored.raw.data(), stored.raw.size(), 0)
          : lsetxattr(source.path.c_str(), stored.name, stored.raw.data(), stored.raw.size(), 0);
  return result == 0 ? 0 : errno;
}

// Through /proc, as chmod has no way not to follow a link that took the entry's place.
int SetOwnerWrite(int file, mode_t mode, bool writable) {
  mode &= 07777;
  if (writable && (mode & S_IWUSR) != 0) return 0;
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  const mode_t wanted = writable ? mode | S_IWUSR : mode & ~static_cast<mode_t>(0222);
  return chmod(path.c_str(), wanted) == 0 ? 0 : errno;
}

int StoreBits(const Source& source, const std::optional<Stored>& stored, uint32_t bits,
              const AttributeSupport& support) {
  Stored next = stored.value_or(Stored{kSambaName, {}, 0});
  const uint32_t value = (next.bits & ~(kSettable | kNormal)) | bits;
  if (stored ? stored->bits == value : (bits & ~kReadOnly) == 0 || !support.samba) return 0;
  next.raw =
      next.name == kSambaName ? ToSamba(next.raw, value) : ToLittleEndian(value, next.raw.size());
  const int code = WriteRaw(source, next);
  return stored ? code : 0;
}

// `place` is the entry itself, for its mode.
int Write(const Source& source, int place, mode_t mode, uint32_t attributes,
          AttributeSupport& support) {
  const uint32_t bits = attributes & kSettable;
  const std::optional<Stored> stored = ReadStored(source, support);
  // There the mode comes from the access list, which is to stay.
  if (stored && stored->name == kNtfsName) return StoreBits(source, stored, bits, support);
  // A read-only file takes no extended attributes, so it is writable meanwhile.
  if (const int code = SetOwnerWrite(place, mode, true)) return code;
  const int code = StoreBits(source, stored, bits, support);
  const bool lock = code == 0 ? (bits & kReadOnly) != 0 : (mode & S_IWUSR) == 0;
  const int locked = lock ? SetOwnerWrite(place, mode, false) : 0;
  return code == 0 ? locked : code;
}

}  // namespace

uint32_t ReadAttributes(const Located& entry, AttributeSupport& support) {
  const bool is_link = S_ISLNK(entry.status.st_mode);
  uint32_t bits = 0;
  if (is_link) bits |= kReparsePoint;
  if (S_ISDIR(entry.status.st_mode)) bits |= kFolderAttribute;
  if (const auto stored = ReadStored({ProcPath(entry)}, support)) return bits | stored->bits;
  const bool read_only = !is_link && (entry.status.st_mode & S_IWUSR) == 0;
  return read_only ? bits | kReadOnly : bits;
}

uint32_t ReadAttributes(int file, mode_t mode, AttributeSupport& support) {
  if (const auto stored = ReadStored({{}, file}, support)) return stored->bits;
  return (mode & S_IWUSR) == 0 ? uint32_t{kReadOnly} : 0;
}

int WriteAttributes(const Located& entry, uint32_t attributes, AttributeSupport& support) {
  if (S_ISLNK(entry.status.st_mode)) return 0;
  const UniqueFd place(openat(entry.folder, entry.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!place) return errno;
  return Write({ProcPath(entry)}, place.get(), entry.status.st_mode, attributes, support);
}

int WriteAttributes(int file, mode_t mode, uint32_t attributes, AttributeSupport& support) {
  return Write({{}, file}, file, mode, attributes, support);
}

bool IsJunction(const Located& entry, const AttributeSupport& support) {
  constexpr uint32_t kMountPointTag = 0xA0000003;
  if (!support.ntfs) return false;
  const std::string path = ProcPath(entry);
  // The size is asked first: a buffer that is too small is an error.
  const ssize_t size = lgetxattr(path.c_str(), kReparseName, nullptr, 0);
  if (size < 4) return false;
  std::string raw(static_cast<size_t>(size), '\0');
  return lgetxattr(path.c_str(), kReparseName, raw.data(), raw.size()) == size &&
         FromLittleEndian(raw.substr(0, 4)) == kMountPointTag;
}

}  // namespace quellix
