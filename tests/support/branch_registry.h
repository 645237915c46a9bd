#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/machine.h"

namespace quellix {

// Shows one branch of the user's registry ("" for all of it) as all there is: a Windows of its own
// has hundreds of thousands of keys that a walk would go through.
class BranchRegistry : public Registry {
 public:
  explicit BranchRegistry(Registry& inner, std::string branch = "")
      : inner_(inner), branch_(std::move(branch)) {}

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override {
    if (root != RegistryRoot::kCurrentUser) return nullptr;
    if (branch_.empty()) return inner_.Open(root, path, access);
    return inner_.Open(root, path.empty() ? branch_ : branch_ + "\\" + std::string(path), access);
  }
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override {
    return inner_.Create(root, path);
  }
  // The machine with this registry.
  Machine On(const Machine& machine) {
    return {machine.files,         *this,          machine.shell,   machine.url_cache,
            machine.profile,       machine.system, machine.session, machine.cleaners,
            machine.program_folder};
  }

 private:
  Registry& inner_;
  std::string branch_;
};

}  // namespace quellix
