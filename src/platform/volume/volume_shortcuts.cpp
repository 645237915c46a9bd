#include "platform/volume/volume_shortcuts.h"

#include <liblnk.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

// A shortcut takes a few kilobytes; what is much larger is none, and not worth reading.
constexpr off_t kLargest = 1 << 20;

struct FileCloser {
  void operator()(liblnk_file_t* file) const { liblnk_file_free(&file, nullptr); }
};
using LnkFile = std::unique_ptr<liblnk_file_t, FileCloser>;

// Whether the file can hold its location information, for whose size the library takes memory
// without a look at the file. Documented by Microsoft (Shell Link Binary File Format): behind a
// header of 76 bytes with flags at 20 come an item list and the location, each with its size first.
bool HoldsLocation(int fd, off_t file_size) {
  constexpr uint32_t kHasItemList = 1, kHasLocation = 2;
  const uint32_t flags = ReadNumber(fd, 20);
  const off_t location = 76 + ((flags & kHasItemList) != 0 ? 2 + ReadNumber(fd, 76, 2) : 0);
  return (flags & kHasLocation) == 0 || location + ReadNumber(fd, location) <= file_size;
}

// Null for what is no shortcut.
LnkFile OpenLnk(VolumeFileSystem& files, std::string_view path) {
  const UniqueFd fd = files.OpenForRead(path);
  struct stat status;
  if (!fd || fstat(fd.get(), &status) != 0 || status.st_size > kLargest) return nullptr;
  if (!HoldsLocation(fd.get(), status.st_size)) return nullptr;
  liblnk_file_t* raw = nullptr;
  if (liblnk_file_initialize(&raw, nullptr) != 1) return nullptr;
  LnkFile file(raw);
  // The library takes names only; this one is the file that is open already, not a link.
  const std::string name = "/proc/self/fd/" + std::to_string(fd.get());
  const int opened =
      liblnk_file_open(file.get(), name.c_str(), liblnk_get_access_flags_read(), nullptr);
  return opened == 1 ? std::move(file) : nullptr;
}

using SizeFunction = int (*)(liblnk_file_t*, size_t*, liblnk_error_t**);
using TextFunction = int (*)(liblnk_file_t*, uint8_t*, size_t, liblnk_error_t**);

std::string ReadText(liblnk_file_t* file, SizeFunction size_of, TextFunction read) {
  size_t size = 0;
  if (size_of(file, &size, nullptr) != 1 || size == 0 || size > kLargest) return {};
  std::string text(size, '\0');
  if (read(file, reinterpret_cast<uint8_t*>(text.data()), size, nullptr) != 1) return {};
  return std::string(TrimNull(text));
}

std::string ReadTarget(liblnk_file_t* file) {
  std::string target =
      ReadText(file, liblnk_file_get_utf8_local_path_size, liblnk_file_get_utf8_local_path);
  if (!target.empty()) return target;
  return ReadText(file, liblnk_file_get_utf8_network_path_size, liblnk_file_get_utf8_network_path);
}

class LnkReader : public ShortcutReader {
 public:
  explicit LnkReader(VolumeFileSystem& files) : files_(files) {}

  std::optional<Shortcut> Read(std::string_view path) override {
    const LnkFile file = Open(path);
    if (!file) return Shortcut{};
    Shortcut shortcut{ReadTarget(file.get()),
                      ReadText(file.get(), liblnk_file_get_utf8_working_directory_size,
                               liblnk_file_get_utf8_working_directory)};
    if (shortcut.target.empty() && LeadsThroughTheShell(file.get())) return std::nullopt;
    return shortcut;
  }

 private:
  // What may not be read counts as what cannot be opened.
  LnkFile Open(std::string_view path) {
    try {
      return OpenLnk(files_, path);
    } catch (const Error&) {
      return nullptr;
    }
  }

  // An item list, an installer's product or a path with variables: Windows makes a path of them.
  static bool LeadsThroughTheShell(liblnk_file_t* file) {
    constexpr uint32_t kFlags = LIBLNK_DATA_FLAG_HAS_LINK_TARGET_IDENTIFIER |
                                LIBLNK_DATA_FLAG_HAS_ENVIRONMENT_VARIABLES_LOCATION_BLOCK |
                                LIBLNK_DATA_FLAG_HAS_DARWIN_IDENTIFIER;
    uint32_t flags = 0;
    return liblnk_file_get_data_flags(file, &flags, nullptr) == 1 && (flags & kFlags) != 0;
  }

  VolumeFileSystem& files_;
};

}  // namespace

std::unique_ptr<ShortcutReader> OpenVolumeShortcuts(VolumeFileSystem& files) {
  return std::make_unique<LnkReader>(files);
}

}  // namespace quellix
