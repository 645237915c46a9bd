#pragma once

#include "platform/registry.h"

namespace quellix {

// The registry of the running Windows, in the view of a 64-bit program.
class Win32Registry : public Registry {
 public:
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

  std::string user_, classes_, lasting_;  // "" for who runs the program
};

}  // namespace quellix
