#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/user_profiles.h"
#include "platform/win32/unique.h"

namespace quellix {

// The registry of a user who need not be logged on, for as long as this lives: what is in use, or
// his own files of it, loaded beside it and unloaded again. A user who logs on meanwhile gets a
// profile that lasts for that session only, so it should not live long.
class UserHive {
 public:
  // Throws Error: the files are missing, or a link, or may not be loaded, as by who is no
  // administrator; kInUse: another process works on this user.
  UserHive(FileSystem& files, const UserProfile& user);
  ~UserHive() { Unload(); }
  UserHive(const UserHive&) = delete;
  UserHive& operator=(const UserHive&) = delete;

  // Keys below HKEY_USERS: of the user, and of his classes; "" where he has none of his own.
  // All keys below must be closed by now. Tries for about two seconds; false when something stays
  // loaded.
  bool Unload();

  const std::string& root() const { return root_; }
  const std::string& classes() const { return classes_; }

 private:
  std::string Find(FileSystem& files, const std::string& in_use, const std::string& file);

  UniqueHandle turn_;
  std::string root_, classes_;
  std::vector<std::string> loaded_;
};

}  // namespace quellix
