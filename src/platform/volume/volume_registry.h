#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/volume/hive.h"

namespace quellix {

// Where the hive files of a volume are; empty paths are hives it does not have.
struct HivePaths {
  std::string software, system, defaults;  // of the machine
  std::string user, classes;               // NTUSER.DAT and UsrClass.dat of the chosen user
  std::string sid;                         // the user's, "" when it is not known
};

// The registry of a volume, from its hive files, in the places where Windows shows them: also
// CurrentControlSet, a user's Software\Classes, and HKEY_CLASSES_ROOT as the user's classes over
// the machine's. Hives are opened when first needed.
class VolumeRegistry : public Registry {
 public:
  VolumeRegistry(VolumeFileSystem& files, const HivePaths& paths);

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override;
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override;

  // Originals of hives that a killed run has replaced, and those that an earlier one was to keep,
  // unless this one is to keep them as well.
  void ClearLeftovers() override;
  std::vector<std::string> TakeOutdated() override;

  void CreateKey(RegistryRoot root, std::string_view path);

  // Beyond the port. Stores all changes and closes the hive files; open keys must not be used any
  // more, others are opened anew. Their originals go, unless they are to be kept. Throws Error.
  void CloseHives();
  void KeepHives(bool kept) { keeps_hives_ = kept; }

 private:
  friend class VolumeKey;

  struct Mount {
    std::string place;  // "HKLM\SOFTWARE"
    std::string path;   // the hive file
  };

  // What is true of a hive file, or of a place above all hives, with `rest` behind it.
  std::string TrueNameOf(std::string_view hive_or_place, const std::string& rest) const;

  // One key of one hive that stands for a place.
  struct Layer {
    std::shared_ptr<Hive> hive;
    HiveNode node;
  };

  std::shared_ptr<Hive> HiveAt(const std::string& path);
  const Mount* MountOf(std::string_view place) const;
  std::string WithControlSet(const Mount& mount, Hive& hive, std::string_view rest);
  void AddLayer(std::string_view place, std::vector<Layer>& layers);
  std::vector<Layer> Layers(std::string_view place);
  std::vector<std::string> MountNames(std::string_view place) const;
  std::unique_ptr<RegistryKey> OpenPlace(const std::string& place, RegistryAccess access);
  bool HasOwnSubKeysOnly(std::string_view place) const;

  VolumeFileSystem& files_;
  std::vector<Mount> mounts_;
  std::map<std::string, std::string> true_names_;  // of hive files and roots
  std::map<std::string, std::shared_ptr<Hive>> hives_;
  std::vector<std::string> outdated_;  // not yet told
  bool keeps_hives_ = false;
};

}  // namespace quellix
