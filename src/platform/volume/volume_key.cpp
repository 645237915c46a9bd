#include "platform/volume/volume_key.h"

#include <unordered_set>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {

// A walk opens one sub-key after another: those of a hive alone are found from this key on.
std::unique_ptr<RegistryKey> VolumeKey::OpenBelow(std::string_view path, RegistryAccess access) {
  const Layer& layer = layers_.front();
  const auto node = layer.hive->Descend(layer.node, path);
  if (!node) return nullptr;
  if (access == RegistryAccess::kWrite) layer.hive->RequireWritable();
  auto key = std::make_unique<VolumeKey>(registry_, place_ + "\\" + std::string(path),
                                         std::vector<Layer>{{layer.hive, *node}}, access);
  key->own_sub_keys_only_ = true;
  return key;
}

std::unique_ptr<RegistryKey> VolumeKey::Open(std::string_view path, RegistryAccess access) {
  if (!own_sub_keys_only_) {
    own_sub_keys_only_ = layers_.size() == 1 && registry_.HasOwnSubKeysOnly(place_);
  }
  path = WithoutBackslash(path);
  if (*own_sub_keys_only_ && !path.empty()) return OpenBelow(path, access);
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
  // In one hive, names may differ in case alone where Windows did not make it.
  const auto add = [&](const std::vector<std::string>& more) {
    const std::unordered_set<std::string> before = seen;
    for (const std::string& name : more) {
      std::string upper = UpCase(std::string_view(name));
      if (!before.contains(upper)) names.push_back(name);
      seen.insert(std::move(upper));
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
    const std::unordered_set<std::string> before = seen;
    for (const Hive::Value& value : layer.hive->Values(layer.node)) {
      std::string upper = UpCase(std::string_view(value.name));
      if (!before.contains(upper)) values.push_back({value.name, value.type, value.size});
      seen.insert(std::move(upper));
    }
  }
  return values;
}

std::optional<RegistryValueInfo> VolumeKey::ValueAt(uint32_t index) {
  Refresh();
  if (index >= values_.size()) return std::nullopt;
  return values_[index];
}

bool VolumeKey::ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) {
  if (layers_.size() != 1) return RegistryKey::ReadValueAt(index, name, value);
  Hive& hive = *layers_[0].hive;
  const std::vector<Hive::Value>& values = hive.Values(layers_[0].node);
  if (index >= values.size()) return false;
  name = values[index].name;
  value.type = values[index].type;
  hive.ReadBytes(values[index], value.bytes);
  return true;
}

std::optional<std::string> VolumeKey::SubKeyAt(uint32_t index) {
  if (own_sub_keys_only_.value_or(false)) {
    const std::vector<std::string>& names = layers_[0].hive->SubKeys(layers_[0].node);
    if (index >= names.size()) return std::nullopt;
    return names[index];
  }
  Refresh();
  if (index >= names_.size()) return std::nullopt;
  return names_[index];
}

// Of what stands above the hives the place is the name.
std::string VolumeKey::TrueName() {
  if (layers_.empty()) return registry_.TrueNameOf(place_, "");
  const Layer& layer = layers_.front();
  return registry_.TrueNameOf(layer.hive->path(), layer.hive->PathOf(layer.node));
}

int64_t VolumeKey::LastWrite() {
  return layers_.empty() ? 0 : layers_.front().hive->LastWrite(layers_.front().node);
}

void VolumeKey::RequireWrite() const {
  if (access_ != RegistryAccess::kWrite) {
    throw Error(Error::Kind::kDenied, "The registry key is open for reading only: " + place_);
  }
}

// Windows writes to the user's classes where the user has the key, and else to the machine's.
void VolumeKey::SetValue(std::string_view name, const RegistryValue& value) {
  RequireWrite();
  if (layers_.empty()) {
    throw Error(Error::Kind::kDenied, "The volume keeps no values of the key " + place_);
  }
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
  changed_.push_back(layers.front().hive);
  return true;
}

void VolumeKey::Flush() {
  for (const Layer& layer : layers_) layer.hive->Commit();
  for (const std::shared_ptr<Hive>& hive : changed_) hive->Commit();
  changed_.clear();
}

}  // namespace quellix
