#pragma once

#include <string>
#include <vector>

#include "platform/shell.h"
#include "platform/system.h"
#include "platform/volume/installed_windows.h"

namespace quellix {

// The recycle bins of a volume, as Windows keeps them in each drive's own folders: from Vista on
// "$Recycle.Bin", where "$R..." is the removed file and "$I..." tells where it was, before that
// "RECYCLER". With a user whose identity is known only that user's bins count, else all.
//
// Putting files into a bin of before Vista is not possible: its shared index belongs to a running
// Windows. Such bins are counted and emptied.
class VolumeShell : public Shell {
 public:
  VolumeShell(VolumeFileSystem& files, System& system, VolumeUser user)
      : files_(files), system_(system), user_(std::move(user)) {}

  void Recycle(std::string_view path) override;
  RecycleBinContent QueryRecycleBin() override;
  void EmptyRecycleBin() override;
  void ClearAddressHistory() override;
  void EmptyClipboard() override;
  void Require(ShellFeature feature) override;
  void ShowProperties(std::string_view path) override;
  void OpenFolderOf(std::string_view path) override;
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

  std::string UserBin(char drive);
  std::string FreeName(const std::string& bin, std::string_view extension);
  std::string IndexFile(std::string_view path, uint64_t size);
  std::vector<Bin> Bins();
  std::vector<Item> Items(const Bin& bin);
  uint64_t SizeOf(const Bin& bin, const Item& item);
  uint64_t TreeSize(const std::string& path);
  bool RemoveTree(const std::string& path);

  VolumeFileSystem& files_;
  System& system_;
  VolumeUser user_;
};

}  // namespace quellix
