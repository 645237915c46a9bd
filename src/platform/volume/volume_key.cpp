#include "platform/volume/volume_key.h"

#include <unordered_set>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {

std::unique_ptr<RegistryKey> VolumeKey::Open(std::string_view path, RegistryAccess access) {
  return registry_.OpenPlace(path.empty() ? place_ : place_ + "\\" + std::string(path), access);
}

std::optional<RegistryValue> VolumeKey::QueryValue(std::string_view name) {
  for (const Layer& layer : layers_) {
    if (const Hive::Value* value = layer.hive->FindValue(layer.node, name)) {
      return RegistryValue{value->type, layer.hive->Bytes(*value)};
    }
  }
  return std::nullopt;
}

void VolumeKey::Refresh() {
  uint64_t generation = 0;
  for (const Layer& layer : layers_) generation += layer.hive->generation();
  if (is_fresh_ && generation == generation_) return;
  names_ = MergedNames();
  values_ = MergedValues();
  generation_ = generation;
  is_fresh_ = true;
}

std::vector<std::string> VolumeKey::MergedNames() const {
  std::vector<std::string> names;
  std::unordered_set<std::string> seen;
  const auto add = [&](const std::vector<std::string>& more) {
    for (const std::string& name : more) {
      if (seen.insert(UpCase(std::string_view(name))).second) names.push_back(name);
    }
  };
  for (const Layer& layer : layers_) add(layer.hive->SubKeys(layer.node));
  add(registry_.MountNames(place_));
  return names;
}

std::vector<RegistryValueInfo> VolumeKey::MergedValues() const {
  std::vector<RegistryValueInfo> values;
  std::unordered_set<std::string> seen;
  for (const Layer& layer : layers_) {
    for (const Hive::Value& value : layer.hive->Values(layer.node)) {
      if (!seen.insert(UpCase(std::string_view(value.name))).second) continue;
      values.push_back({value.name, value.type, value.size});
    }
  }
  return values;
}

std::optional<RegistryValueInfo> VolumeKey::ValueAt(uint32_t index) {
  Refresh();
  if (index >= values_.size()) return std::nullopt;
  return values_[index];
}

std::optional<std::string> VolumeKey::SubKeyAt(uint32_t index) {
  Refresh();
  if (index >= names_.size()) return std::nullopt;
  return names_[index];
}

void VolumeKey::RequireWrite() const {
  if (access_ != RegistryAccess::kWrite || layers_.empty()) {
    throw Error(Error::Kind::kDenied, "The registry key is open for reading only: " + place_);
  }
}

// Windows writes to the user's classes where the user has the key, and else to the machine's.
void VolumeKey::SetValue(std::string_view name, const RegistryValue& value) {
  RequireWrite();
  layers_.front().hive->SetValue(layers_.front().node, name, value);
}

bool VolumeKey::DeleteValue(std::string_view name) {
  RequireWrite();
  for (const Layer& layer : layers_) {
    if (layer.hive->DeleteValue(layer.node, name)) return true;
  }
  return false;
}

bool VolumeKey::DeleteSubKey(std::string_view path) {
  RequireWrite();
  if (WithoutBackslash(path).empty()) {
    throw Error(Error::Kind::kOther, "No registry key is named to be deleted.");
  }
  const std::vector<Layer> layers = registry_.Layers(place_ + "\\" + std::string(path));
  if (layers.empty()) return false;
  layers.front().hive->DeleteKey(layers.front().node);
  return true;
}

void VolumeKey::Flush() {
  for (const Layer& layer : layers_) layer.hive->Commit();
}

}  // namespace quellix
