#pragma once

#include "platform/registry.h"

namespace quellix {

// The registry of the running Windows, in the view of a 64-bit program.
class Win32Registry : public Registry {
 public:
  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override;
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override;
};

}  // namespace quellix
