#pragma once

#include <string>
#include <string_view>

#include "backup/reg_file.h"
#include "platform/machine.h"

namespace quellix {

// Keeps what a window or a run is about to delete from the registry in one .reg file, named like
// the archives with "R_" in front. Entries are added, then stored, and only then deleted.
class RegistryUndo {
 public:
  // What is not there adds nothing, but for AddState: that there was none comes back as well. Each
  // throws Error when an entry cannot be read, or not be kept
  // in such a file; Forget drops what was added by then, as it is to do behind a stop.
  void AddValue(Registry& registry, RegistryRoot root, std::string_view key, std::string_view name);
  void AddState(Registry& registry, RegistryRoot root, std::string_view key, std::string_view name);
  // A key with its values, if it has no sub-keys: others cannot be deleted at once.
  void AddKey(Registry& registry, RegistryRoot root, std::string_view key, const Pause& pause = {});
  void AddTree(Registry& registry, RegistryRoot root, std::string_view key,
               const Pause& pause = {});

  // Writes what was added behind what the file has already and returns when it is on the disk.
  // `folder` ends in "\" and is made where it is missing. Throws Error; the file is then as it was,
  // and nothing is left added.
  void Store(const Machine& machine, std::string_view folder);
  void Forget() { added_ = {}; }

  // The file, "" before the first Store.
  const std::string& path() const { return path_; }

 private:
  bool AddPresent(Registry& registry, RegistryRoot root, std::string_view key,
                  std::string_view name);
  void AddOpenKey(RegistryRoot root, const std::string& path, RegistryKey& key, const Pause& pause);

  RegFileText added_;
  std::string path_;
};

}  // namespace quellix
