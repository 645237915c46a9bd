#pragma once

#include <string>
#include <vector>

#include "platform/registry.h"

namespace quellix {

// The registry of the running Windows, in the view of a 64-bit program.
class Win32Registry : public Registry {
 public:
  // As who runs the program; below HKEY_USERS what is another person's is changed only where it is
  // truly his, as below.
  Win32Registry() = default;
  // With HKEY_CURRENT_USER as another user has it, and everything else for reading alone (else
  // kDenied), also where his links lead to it: keys below HKEY_USERS, `classes` "" for none.
  // `lasting`: the key that is his own whenever he is logged on.
  Win32Registry(std::string user, std::string classes, std::string lasting)
      : user_(std::move(user)), classes_(std::move(classes)), lasting_(std::move(lasting)) {}

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override;
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override;
  KeyHome LastingName(RegistryRoot root, std::string_view key) override;

 private:
  // Where that is in the registry as the system has it.
  KeyHome Place(RegistryRoot root, std::string_view path) const;
  // The keys below HKEY_USERS that are the user's own to whom the place belongs; none where
  // Windows alone judges.
  std::vector<std::string> OwnAt(const KeyHome& place) const;

  std::string user_, classes_, lasting_;  // "" for who runs the program
};

}  // namespace quellix
