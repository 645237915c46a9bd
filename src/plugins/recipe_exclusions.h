#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "plugins/plugin_file.h"
#include "registry_tools/registry_eraser.h"

namespace quellix::modPlugin {

// What a recipe leaves in one walk, by paths as that walk spells them.
class WalkExclusions {
 public:
  void Add(std::string folder, bool below, std::string mask);

  // `folder` ends in "\".
  bool LeavesFile(std::string_view folder, std::string_view name) const;
  // With all that is in it.
  bool LeavesFolder(std::string_view folder) const;

 private:
  struct Row {
    std::string folder;  // in upper case, with "\" at its end
    bool below;
    std::string mask;
  };
  bool Fits(const Row& row, std::string_view upper) const;
  std::vector<Row> rows_;
};

// What a recipe's exclusions leave, folders and keys known by what they are: whatever is there when
// the recipe begins. Nothing is excluded from INI entries.
class Exclusions {
 public:
  Exclusions(const Machine& machine, const std::vector<Exclusion>& exclusions,
             const Pause& pause = {});

  // Why some of them mean nothing, a sentence each: then the recipe must not be carried out.
  const std::vector<Sentence>& refusals() const { return refusals_; }

  // For a walk that begins in an open folder; `path` is its own.
  WalkExclusions In(Folder& folder, std::string_view path) const;

  // The target, or what of it may go. Throws Error.
  std::vector<RegistryTarget> Without(Registry& registry, const RegistryTarget& target) const;

 private:
  struct Place {
    FileId id;
    std::vector<FileId> above;
    bool below;
    std::string mask;
  };

  void AddFiles(const Machine& machine, const Exclusion& exclusion, const Pause& pause);
  void AddFolder(const Machine& machine, const std::string& path, bool below,
                 const std::string& mask);
  void AddKeys(const Machine& machine, const Exclusion& exclusion, const Pause& pause);
  void Divide(RegistryKey& key, const RegistryTarget& target,
              std::vector<RegistryTarget>& targets) const;

  std::vector<Place> places_;
  std::vector<std::string> keys_;  // true names in upper case, with "\" at their ends
  std::vector<Sentence> refusals_;
};

}  // namespace quellix::modPlugin
