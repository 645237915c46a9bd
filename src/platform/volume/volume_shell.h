#pragma once

#include <string>
#include <vector>

#include "platform/shell.h"
#include "platform/system.h"
#include "platform/volume/installed_windows.h"
#include "platform/volume/recycler.h"

namespace quellix {

// The recycle bins of a volume, as Windows keeps them in each drive's own folders: from Vista on
// "$Recycle.Bin", before that "RECYCLER". With a user whose identity is known only that user's bins
// count, else all.
class VolumeShell : public Shell {
 public:
  VolumeShell(VolumeFileSystem& files, System& system, VolumeUser user)
      : files_(files), system_(system), user_(user), recycler_(files, system, user) {
    files.SetRecycler(
        [this](const Located& file, const std::string& path) { recycler_.Recycle(file, path); });
  }
  ~VolumeShell() override { files_.SetRecycler(nullptr); }

  RecycleBinContent QueryRecycleBin() override;
  void EmptyRecycleBin() override;
  std::vector<std::string> RecycleBins() override;
  void ClearAddressHistory() override;
  void EmptyClipboard() override;
  void Require(ShellFeature feature) override;
  void ShowProperties(std::string_view path) override;
  void OpenFolderOf(std::string_view path) override;
  bool StartProgram(std::string_view path, std::string_view arguments) override;
  std::unique_ptr<ShortcutReader> OpenShortcuts() override;

 private:
  // One user's bin on one drive.
  struct Bin {
    std::string folder;
    bool is_new = true;  // of Vista and later
  };

  // What lies in a bin: its name and, where it has one, the name of its index.
  struct Item {
    std::string name, index;
  };

  std::vector<Bin> Bins();
  std::vector<Item> Items(const Bin& bin);
  uint64_t SizeOf(const Bin& bin, const Item& item);
  uint64_t TreeSize(const std::string& path);
  bool RemoveTree(const std::string& path);

  VolumeFileSystem& files_;
  System& system_;
  VolumeUser user_;
  Recycler recycler_;
};

}  // namespace quellix
