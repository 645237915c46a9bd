#include "platform/volume/name_index.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/text.h"
#include "platform/volume/folder_reader.h"
#include "platform/volume/unique_fd.h"

namespace quellix {
namespace {

bool IsSame(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::optional<std::string> Search(int readable, std::string_view name) {
  std::optional<std::string> found;
  ReadFolder(readable, [&](const char* entry, unsigned char) {
    if (EqualsNoCase(entry, name)) found = entry;
    return !found;
  });
  return found;
}

}  // namespace

bool NameIndex::IsOf(const struct stat& status) const {
  return status_.st_ino == status.st_ino && status_.st_dev == status.st_dev;
}

bool NameIndex::IsCurrent(const struct stat& status) const {
  return is_read_ && IsOf(status) && IsSame(status_.st_mtim, status.st_mtim) &&
         IsSame(status_.st_ctim, status.st_ctim);
}

void NameIndex::Read(int readable) {
  names_.clear();
  ReadFolder(readable, [this](const char* entry, unsigned char) {
    names_.emplace(UpCase(entry), entry);
    return true;
  });
  is_read_ = true;
}

std::optional<std::string> NameIndex::Find(int folder, std::string_view name, bool anew) {
  std::optional<std::string> found;
  struct stat status;
  const bool is_known = fstat(folder, &status) == 0;
  if (is_known && !anew && IsCurrent(status)) {
    const auto at = names_.find(UpCase(name));
    if (at != names_.end()) found = at->second;
  } else if (const UniqueFd readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
             readable) {
    const bool again = is_known && IsOf(status);
    is_read_ = false;
    if (is_known) status_ = status;
    if (again) {
      Read(readable.get());
      const auto at = names_.find(UpCase(name));
      if (at != names_.end()) found = at->second;
    } else {
      names_.clear();
      found = Search(readable.get(), name);
    }
  }
  if (!found) errno = ENOENT;
  return found;
}

void NameIndex::Add(int folder, std::string_view name) {
  struct stat status;
  if (!is_read_ || fstat(folder, &status) != 0 || !IsOf(status)) return;
  names_.insert_or_assign(UpCase(name), std::string(name));
  status_ = status;
}

}  // namespace quellix
