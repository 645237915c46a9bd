#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/volume/volume_registry.h"

namespace quellix {

// A place in the registry of a volume: usually one key of one hive, in HKEY_CLASSES_ROOT the user's
// key over the machine's, and none for what stands above the hives.
class VolumeKey : public RegistryKey {
 public:
  using Layer = VolumeRegistry::Layer;

  VolumeKey(VolumeRegistry& registry, std::string place, std::vector<Layer> layers,
            RegistryAccess access)
      : registry_(registry),
        place_(std::move(place)),
        layers_(std::move(layers)),
        access_(access) {}

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override;
  std::optional<RegistryValue> QueryValue(std::string_view name) override;
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override;
  bool ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) override;
  std::optional<std::string> SubKeyAt(uint32_t index) override;
  std::string TrueName() override;
  int64_t LastWrite() override;
  void SetValue(std::string_view name, const RegistryValue& value) override;
  bool DeleteValue(std::string_view name) override;
  bool DeleteSubKey(std::string_view path) override;
  void Flush() override;

 private:
  std::unique_ptr<RegistryKey> OpenBelow(std::string_view path, RegistryAccess access);
  void RequireWrite() const;
  void Refresh();
  std::vector<std::string> MergedNames() const;
  std::vector<RegistryValueInfo> MergedValues() const;

  VolumeRegistry& registry_;
  std::string place_;
  std::vector<Layer> layers_;
  RegistryAccess access_;
  std::vector<std::shared_ptr<Hive>> changed_;  // beside those of the layers
  std::optional<bool> own_sub_keys_only_;       // nothing while it has not mattered

  // Of the layers together, as of the sum of their generations.
  bool is_fresh_ = false;
  uint64_t generation_ = 0;
  std::vector<std::string> names_;
  std::vector<RegistryValueInfo> values_;
};

}  // namespace quellix
