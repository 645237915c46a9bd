#include "platform/volume/entry_info.h"

#include <fcntl.h>

#include "platform/volume/volume_attributes.h"

namespace quellix {

int64_t ToFileTime(const timespec& time) {
  constexpr int64_t kSecondsTo1970 = 11644473600;
  return (time.tv_sec + kSecondsTo1970) * 10'000'000 + time.tv_nsec / 100;
}

bool LeadsToFolder(const Located& link, const AttributeSupport& support) {
  struct stat target;
  if (fstatat(link.folder, link.name.c_str(), &target, AT_NO_AUTOMOUNT) == 0) {
    return S_ISDIR(target.st_mode);
  }
  return IsJunction(link, support);
}

FileInfo MakeInfo(const Located& entry, AttributeSupport& support, Detail detail) {
  FileInfo info;
  info.is_link = S_ISLNK(entry.status.st_mode);
  info.is_folder = S_ISDIR(entry.status.st_mode) || (info.is_link && LeadsToFolder(entry, support));
  if (S_ISREG(entry.status.st_mode)) info.size = static_cast<uint64_t>(entry.status.st_size);
  info.last_write = ToFileTime(entry.status.st_mtim);
  if (detail != Detail::kFull) return info;
  info.attributes = ReadAttributes(entry, support);
  if (info.is_folder) info.attributes |= kFolderAttribute;
  return info;
}

}  // namespace quellix
