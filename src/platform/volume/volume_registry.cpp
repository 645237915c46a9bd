#include "platform/volume/volume_registry.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/hive_store.h"
#include "platform/volume/volume_key.h"

namespace quellix {
namespace {

constexpr std::string_view kMachineSystem = "HKLM\\SYSTEM";
constexpr std::string_view kUserClasses = "HKCU\\Software\\Classes";
constexpr std::string_view kMachineClasses = "HKLM\\SOFTWARE\\Classes";
constexpr std::string_view kMergedClasses = "HKCR";
constexpr const char* kUnknownUser = "S-1-0-0";

std::string_view ShortName(RegistryRoot root) {
  switch (root) {
    case RegistryRoot::kClassesRoot:
      return kMergedClasses;
    case RegistryRoot::kCurrentUser:
      return "HKCU";
    case RegistryRoot::kLocalMachine:
      return "HKLM";
    case RegistryRoot::kUsers:
      return "HKU";
  }
  return {};
}

std::string PlaceOf(RegistryRoot root, std::string_view path) {
  const std::string name(ShortName(root));
  return path.empty() ? name : name + "\\" + std::string(path);
}

// Behind `place` and a "\" in `path`, when it is at or below it.
std::optional<std::string_view> Below(std::string_view path, std::string_view place) {
  if (!EqualsNoCase(path.substr(0, place.size()), place)) return std::nullopt;
  path.remove_prefix(place.size());
  if (!path.empty() && path[0] != '\\') return std::nullopt;
  return path.empty() ? path : path.substr(1);
}

}  // namespace

VolumeRegistry::VolumeRegistry(VolumeFileSystem& files, const HivePaths& paths) : files_(files) {
  const std::string machine = "\\REGISTRY\\MACHINE", users = "\\REGISTRY\\USER";
  const std::string user = users + "\\" + (paths.sid.empty() ? kUnknownUser : paths.sid);
  true_names_ = {{"HKLM", machine},
                 {"HKU", users},
                 {"HKCU", user},
                 {std::string(kMergedClasses), machine + "\\SOFTWARE\\Classes"},
                 {paths.software, machine + "\\SOFTWARE"},
                 {paths.system, machine + "\\SYSTEM"},
                 {paths.defaults, users + "\\.DEFAULT"},
                 {paths.user, user},
                 {paths.classes, user + "_Classes"}};
  const auto mount = [this](const std::string& place, const std::string& path) {
    if (!path.empty()) mounts_.push_back({place, path});
  };
  mount("HKLM\\SOFTWARE", paths.software);
  mount(std::string(kMachineSystem), paths.system);
  mount("HKCU", paths.user);
  mount(std::string(kUserClasses), paths.classes);
  mount("HKU\\.DEFAULT", paths.defaults);
  if (paths.sid.empty()) return;
  mount("HKU\\" + paths.sid, paths.user);
  mount("HKU\\" + paths.sid + "\\Software\\Classes", paths.classes);
  mount("HKU\\" + paths.sid + "_Classes", paths.classes);
}

std::string VolumeRegistry::TrueNameOf(std::string_view hive_or_place,
                                       const std::string& rest) const {
  const auto known = true_names_.find(std::string(hive_or_place));
  return (known == true_names_.end() ? std::string(hive_or_place) : known->second) + rest;
}

std::shared_ptr<Hive> VolumeRegistry::HiveAt(const std::string& path) {
  std::shared_ptr<Hive>& hive = hives_[path];
  if (hive) return hive;
  hive = Hive::Open(files_, path);
  if (hive && !hive->read_only_reason().empty()) outdated_.push_back(hive->read_only_reason());
  return hive;
}

// The innermost mount that holds a place.
const VolumeRegistry::Mount* VolumeRegistry::MountOf(std::string_view place) const {
  const Mount* best = nullptr;
  for (const Mount& mount : mounts_) {
    if (Below(place, mount.place) && (!best || mount.place.size() > best->place.size())) {
      best = &mount;
    }
  }
  return best;
}

// CurrentControlSet is a link Windows makes at its start, to the set that Select names.
std::string VolumeRegistry::WithControlSet(const Mount& mount, Hive& hive, std::string_view rest) {
  const auto behind = Below(rest, "CurrentControlSet");
  if (mount.place != kMachineSystem || !behind) return std::string(rest);
  const auto select = hive.Descend(hive.root(), "Select");
  const Hive::Value* current = select ? hive.FindValue(*select, "Current") : nullptr;
  const std::string bytes = current ? hive.Bytes(*current) : std::string();
  const int number = bytes.empty() ? 1 : static_cast<unsigned char>(bytes[0]);
  char name[24];
  std::snprintf(name, sizeof name, "ControlSet%03d\\", number);
  return name + std::string(*behind);
}

void VolumeRegistry::AddLayer(std::string_view place, std::vector<Layer>& layers) {
  const Mount* mount = MountOf(place);
  if (!mount) return;
  const std::shared_ptr<Hive> hive = HiveAt(mount->path);
  if (!hive) return;
  const std::string path = WithControlSet(*mount, *hive, *Below(place, mount->place));
  if (const auto node = hive->Descend(hive->root(), path)) layers.push_back({hive, *node});
}

std::vector<VolumeRegistry::Layer> VolumeRegistry::Layers(std::string_view place) {
  place = WithoutBackslash(place);
  std::vector<Layer> layers;
  const auto classes = Below(place, kMergedClasses);
  if (!classes) {
    AddLayer(place, layers);
    return layers;
  }
  for (const std::string_view part : {kUserClasses, kMachineClasses}) {
    AddLayer(std::string(part) + "\\" + std::string(*classes), layers);
  }
  return layers;
}

// What a place shows beside the keys of its hive.
std::vector<std::string> VolumeRegistry::MountNames(std::string_view place) const {
  std::vector<std::string> names;
  for (const Mount& mount : mounts_) {
    const auto rest = Below(mount.place, place);
    if (rest && !rest->empty() && rest->find('\\') == std::string_view::npos) {
      names.emplace_back(*rest);
    }
  }
  if (EqualsNoCase(place, kMachineSystem)) names.emplace_back("CurrentControlSet");
  return names;
}

std::unique_ptr<RegistryKey> VolumeRegistry::OpenPlace(const std::string& place,
                                                       RegistryAccess access) {
  const std::string path(WithoutBackslash(place));
  std::vector<Layer> layers = Layers(path);
  const bool is_root = path.find('\\') == std::string::npos;
  if (layers.empty() && !is_root) return nullptr;
  if (access == RegistryAccess::kWrite) {
    for (const Layer& layer : layers) layer.hive->RequireWritable();
  }
  return std::make_unique<VolumeKey>(*this, path, std::move(layers), access);
}

std::unique_ptr<RegistryKey> VolumeRegistry::Open(RegistryRoot root, std::string_view path,
                                                  RegistryAccess access) {
  return OpenPlace(PlaceOf(root, path), access);
}

std::unique_ptr<RegistryKey> VolumeRegistry::Create(RegistryRoot root, std::string_view path) {
  CreateKey(root, path);
  return Open(root, path, RegistryAccess::kWrite);
}

// Whether all below a place is in its own hive, by its own names.
bool VolumeRegistry::HasOwnSubKeysOnly(std::string_view place) const {
  if (EqualsNoCase(place, kMachineSystem)) return false;
  return std::ranges::none_of(mounts_, [place](const Mount& mount) {
    const auto rest = Below(mount.place, place);
    return rest && !rest->empty();
  });
}

void VolumeRegistry::CreateKey(RegistryRoot root, std::string_view path) {
  std::string place = PlaceOf(root, WithoutBackslash(path));
  if (const auto classes = Below(place, kMergedClasses); classes && Layers(place).empty()) {
    place = std::string(kMachineClasses) + "\\" + std::string(*classes);
  }
  if (!Layers(place).empty()) return;
  const Mount* mount = MountOf(place);
  const std::shared_ptr<Hive> hive = mount ? HiveAt(mount->path) : nullptr;
  if (!hive) throw Error(Error::Kind::kMissing, "The volume has no hive for " + place);
  HiveNode node = hive->root();
  hive->RequireWritable();
  for (const std::string& name :
       Split(WithControlSet(*mount, *hive, *Below(place, mount->place)), '\\')) {
    if (!name.empty()) node = hive->CreateSubKey(node, name);
  }
}

std::vector<std::string> VolumeRegistry::TakeOutdated() { return std::exchange(outdated_, {}); }

void VolumeRegistry::ClearLeftovers() {
  if (keeps_hives_) return;
  for (const Mount& mount : mounts_) {
    const auto open = hives_.find(mount.path);
    if (ClearOriginal(files_, mount.path) && open != hives_.end() && open->second)
      open->second->Restamp();
  }
}

void VolumeRegistry::CloseHives() {
  std::optional<Error> first;
  const auto each = [&](const auto& step) {
    for (const auto& [path, hive] : hives_) {
      try {
        if (hive) step(*hive);
      } catch (const Error& error) {
        if (!first) first = error;
      }
    }
  };
  each([](Hive& hive) { hive.Commit(); });
  each([this](Hive& hive) { hive.Finish(keeps_hives_); });
  hives_.clear();
  if (first) throw Error(*first);
}

}  // namespace quellix
