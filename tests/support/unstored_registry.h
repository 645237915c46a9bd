#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/error.h"
#include "platform/machine.h"

namespace quellix {

// What becomes of changes: they are made, and storing them fails; or they are undone at once; or
// keys called "denied" stay, or those called "link" are links.
enum class Fault { kNotStored, kUndone, kDenied, kLinked };

// A real key of such a registry.
class UnstoredKey : public RegistryKey {
 public:
  UnstoredKey(std::unique_ptr<RegistryKey> key, Fault fault)
      : key_(std::move(key)), fault_(fault) {}
  static std::unique_ptr<RegistryKey> Wrap(std::unique_ptr<RegistryKey> key, Fault fault) {
    return key ? std::make_unique<UnstoredKey>(std::move(key), fault) : nullptr;
  }

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override {
    return Wrap(key_->Open(path, access), fault_);
  }
  std::optional<RegistryValue> QueryValue(std::string_view name) override {
    return key_->QueryValue(name);
  }
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override { return key_->ValueAt(index); }
  std::optional<std::string> SubKeyAt(uint32_t index) override { return key_->SubKeyAt(index); }
  bool IsLink(std::string_view path) override {
    return (fault_ == Fault::kLinked && path == "link") || key_->IsLink(path);
  }
  std::string TrueName() override { return key_->TrueName(); }
  void SetValue(std::string_view name, const RegistryValue& value) override {
    key_->SetValue(name, value);
  }
  bool DeleteValue(std::string_view name) override {
    return fault_ == Fault::kUndone || key_->DeleteValue(name);
  }
  bool DeleteSubKey(std::string_view path) override {
    if (fault_ == Fault::kDenied && path == "denied") {
      throw Error(Error::Kind::kDenied, "It is denied.");
    }
    return fault_ == Fault::kUndone || key_->DeleteSubKey(path);
  }
  void Flush() override {
    if (fault_ == Fault::kNotStored) throw Error(Error::Kind::kFull, "The disk is full.");
  }

 private:
  std::unique_ptr<RegistryKey> key_;
  Fault fault_;
};

class UnstoredRegistry : public Registry {
 public:
  explicit UnstoredRegistry(Registry& registry, Fault fault = Fault::kNotStored)
      : registry_(registry), fault_(fault) {}

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override {
    return UnstoredKey::Wrap(registry_.Open(root, path, access), fault_);
  }
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override {
    return UnstoredKey::Wrap(registry_.Create(root, path), fault_);
  }

 private:
  Registry& registry_;
  Fault fault_;
};

// The same machine with another registry.
inline Machine WithRegistry(const Machine& machine, Registry& registry) {
  return {machine.files,  registry,        machine.shell,    machine.url_cache,     machine.profile,
          machine.system, machine.session, machine.cleaners, machine.program_folder};
}

}  // namespace quellix
