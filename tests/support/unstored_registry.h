#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/machine.h"

namespace quellix {

// A real key of a registry whose disk takes nothing: changes are made, storing them fails.
class UnstoredKey : public RegistryKey {
 public:
  explicit UnstoredKey(std::unique_ptr<RegistryKey> key) : key_(std::move(key)) {}
  static std::unique_ptr<RegistryKey> Wrap(std::unique_ptr<RegistryKey> key) {
    return key ? std::make_unique<UnstoredKey>(std::move(key)) : nullptr;
  }

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override {
    return Wrap(key_->Open(path, access));
  }
  std::optional<RegistryValue> QueryValue(std::string_view name) override {
    return key_->QueryValue(name);
  }
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override { return key_->ValueAt(index); }
  std::optional<std::string> SubKeyAt(uint32_t index) override { return key_->SubKeyAt(index); }
  bool IsLink(std::string_view path) override { return key_->IsLink(path); }
  std::string TrueName() override { return key_->TrueName(); }
  void SetValue(std::string_view name, const RegistryValue& value) override {
    key_->SetValue(name, value);
  }
  bool DeleteValue(std::string_view name) override { return key_->DeleteValue(name); }
  bool DeleteSubKey(std::string_view path) override { return key_->DeleteSubKey(path); }
  void Flush() override { throw Error(Error::Kind::kFull, "The disk is full."); }

 private:
  std::unique_ptr<RegistryKey> key_;
};

class UnstoredRegistry : public Registry {
 public:
  explicit UnstoredRegistry(Registry& registry) : registry_(registry) {}

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override {
    return UnstoredKey::Wrap(registry_.Open(root, path, access));
  }
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override {
    return UnstoredKey::Wrap(registry_.Create(root, path));
  }

 private:
  Registry& registry_;
};

}  // namespace quellix
