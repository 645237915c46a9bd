#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/user_profiles.h"

namespace quellix {

// The registry of a user who need not be logged on, for as long as this lives: what is in use, or
// his own files of it, loaded beside it and unloaded again. A user who logs on meanwhile gets a
// profile that lasts for that session only, so it should not live long.
class UserHive {
 public:
  // Throws Error: the files are missing, or a link, or may not be loaded, as by who is no
  // administrator.
  UserHive(FileSystem& files, const UserProfile& user);
  // All keys below must be closed by now.
  ~UserHive();
  UserHive(const UserHive&) = delete;
  UserHive& operator=(const UserHive&) = delete;

  // Keys below HKEY_USERS: of the user, and of his classes; "" where he has none of his own.
  const std::string& root() const { return root_; }
  const std::string& classes() const { return classes_; }

 private:
  std::string Find(FileSystem& files, const std::string& in_use, const std::string& file);

  std::string root_, classes_;
  std::vector<std::string> loaded_;
};

}  // namespace quellix
