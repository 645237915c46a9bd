#pragma once

#include <functional>
#include <string>
#include <vector>

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
  // administrator; kInUse: another process works on this user. Large files take seconds: with
  // `breathe` they are loaded by another thread, and this one calls it some fifty times a second.
  UserHive(FileSystem& files, const UserProfile& user, const std::function<void()>& breathe = {});
  // Tries for as long as Unload, unless that has given up.
  ~UserHive() { has_given_up_ ? TryToUnload() : Unload(); }
  UserHive(const UserHive&) = delete;
  UserHive& operator=(const UserHive&) = delete;

  // Keys below HKEY_USERS: of the user, and of his classes; "" where he has none of his own.
  // All keys below must be closed by now. Tries for about two seconds, calling `breathe` likewise;
  // false when something stays loaded.
  bool Unload(const std::function<void()>& breathe = {});

  const std::string& root() const { return root_; }
  const std::string& classes() const { return classes_; }

 private:
  void LoadBoth(FileSystem& files, const UserProfile& user);
  bool TryToUnload();
  std::string Find(FileSystem& files, const std::string& in_use, const std::string& file);

  UniqueHandle turn_;
  std::string root_, classes_;
  std::vector<std::string> loaded_;
  bool has_given_up_ = false;
};

}  // namespace quellix
