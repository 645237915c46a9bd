#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace quellix {

// One user of a Windows.
struct UserProfile {
  std::string name;     // as the profile folder is named
  std::string sid;      // "" when the registry does not tell
  std::string profile;  // the profile folder, without trailing "\"
};

// Whether an identifier is that of an account of a machine or domain or of the Microsoft cloud.
bool IsPerson(std::string_view sid);

// Those that the registry lists, whether or not their folders are there: of persons, with accounts
// of a machine or domain or of the Microsoft cloud, or of the services.
enum class Persons { kNo, kYes };
std::vector<UserProfile> ListedProfiles(Registry& registry, const std::string& windows_folder,
                                        Persons persons = Persons::kYes);

// A text value, without what follows its NUL; nothing when key or value is missing.
std::optional<std::string> ReadText(Registry& registry, RegistryRoot root, std::string_view key,
                                    std::string_view name);

// The environment variables that a user has when he is logged on, from his registry and the
// machine's.
class UserVariables {
 public:
  using OfWindows = std::function<std::optional<std::string>(std::string_view name)>;

  // `of_windows`: what Windows sets by itself for everybody. `is_new`: whether its users have
  // AppData, as since Windows Vista. The registry, whose user this is, must outlive it.
  UserVariables(Registry& registry, UserProfile user, OfWindows of_windows,
                std::function<bool()> is_new)
      : registry_(registry),
        user_(std::move(user)),
        of_windows_(std::move(of_windows)),
        is_new_(std::move(is_new)) {}

  // With the variables in it replaced; nothing when it is not set. Names compare without regard to
  // case.
  std::optional<std::string> Value(std::string_view name) const;
  std::string TempFolder() const;  // with trailing "\"

 private:
  // How far one look-up of a variable has gone.
  struct Expansion {
    int depth = 0, count = 0;
  };

  std::optional<std::string> Variable(std::string_view name, Expansion& expansion) const;
  std::optional<std::string> RawVariable(std::string_view name) const;
  std::optional<std::string> OfUser(std::string_view name) const;
  std::string Expand(std::string_view text, Expansion& expansion) const;
  std::string LocalFolder(std::string_view now, std::string_view before_vista) const;

  Registry& registry_;
  UserProfile user_;
  OfWindows of_windows_;
  std::function<bool()> is_new_;
};

}  // namespace quellix
