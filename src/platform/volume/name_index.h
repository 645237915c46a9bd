#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quellix {

// Finds names without regard to case. A folder that is searched twice in a row is kept in memory,
// so that many names missing from a large one cost no reading of it each; it is read again when
// its times tell of a change by others. What another program adds within the grain of those times
// may be missed, as when it comes a moment later.
class NameIndex {
 public:
  // The name in the open folder that equals `name`, as it is spelled there; nothing (errno ENOENT)
  // when there is none. `anew`: what is in memory proved to be out of date.
  std::optional<std::string> Find(int folder, std::string_view name, bool anew = false);
  // The entry was just made here, right after Find had said that it is missing.
  void Add(int folder, std::string_view name);

 private:
  bool IsOf(const struct stat& status) const;
  bool IsCurrent(const struct stat& status) const;
  void Read(int readable);

  struct stat status_ = {};  // of the folder searched last
  bool is_read_ = false;
  std::unordered_map<std::string, std::string> names_;  // as spelled, by their upper case
};

}  // namespace quellix
