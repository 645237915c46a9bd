#include "platform/volume/volume_shell.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/recycle_index.h"
#include "platform/text.h"
#include "platform/volume/volume_shortcuts.h"

namespace quellix {
namespace {

constexpr std::string_view kOldBinFolder = "RECYCLER";
constexpr std::string_view kDesktopIni = "desktop.ini";

// Entry names of a folder, read before anything in it is changed.
std::vector<std::string> Names(FileSystem& files, const std::string& folder) {
  std::vector<std::string> names;
  files.Enumerate(folder, Detail::kKind, [&names](const Entry& entry) {
    names.emplace_back(entry.name);
    return true;
  });
  return names;
}

}  // namespace

void VolumeShell::Require(ShellFeature feature) {
  if (feature == ShellFeature::kAddressHistory) {
    throw NotAvailable("The address history is cleared by a running Windows only.");
  }
  if (feature == ShellFeature::kClipboard) {
    throw NotAvailable("The clipboard belongs to a running Windows.");
  }
  recycler_.Require();
}

std::vector<VolumeShell::Bin> VolumeShell::Bins() {
  std::vector<Bin> bins;
  for (const Drive& drive : system_.Drives()) {
    for (const std::string_view folder : {kBinFolder, kOldBinFolder}) {
      const std::string parent = drive.letter + std::string(":\\").append(folder);
      const std::vector<std::string> sids =
          user_.sid.empty() ? Names(files_, parent) : std::vector<std::string>{user_.sid};
      for (const std::string& sid : sids) {
        bins.push_back({parent + "\\" + sid, folder == kBinFolder});
      }
    }
  }
  return bins;
}

std::vector<std::string> VolumeShell::RecycleBins() {
  std::vector<std::string> folders;
  if (user_.sid.empty()) return folders;
  for (const Bin& bin : Bins()) {
    if (bin.is_new) folders.push_back(bin.folder);
  }
  return folders;
}

// In the newer bins "$R" files alone or "$I" files alone are leftovers, which Windows does not
// show.
std::vector<VolumeShell::Item> VolumeShell::Items(const Bin& bin) {
  std::vector<Item> items;
  for (const std::string& name : Names(files_, bin.folder)) {
    if (!bin.is_new) {
      const bool own = EqualsNoCase(name, kDesktopIni) || EqualsNoCase(name, "INFO2");
      if (!own) items.push_back({name, ""});
    } else if (EqualsNoCase(name.substr(0, 2), "$I")) {
      const std::string content = "$R" + name.substr(2);
      if (files_.Look(bin.folder + "\\" + content)) items.push_back({content, name});
    }
  }
  return items;
}

uint64_t VolumeShell::SizeOf(const Bin& bin, const Item& item) {
  if (item.index.empty()) return TreeSize(bin.folder + "\\" + item.name);
  return ReadRecycleIndex(files_.ReadWholeFile(bin.folder + "\\" + item.index).value_or("")).size;
}

// Bytes of a file or of all files in a folder; links count nothing.
uint64_t VolumeShell::TreeSize(const std::string& path) {
  const auto info = files_.Look(path);
  if (!info || info->is_link) return 0;
  if (!info->is_folder) return info->size;
  uint64_t size = 0;
  for (const std::string& name : Names(files_, path)) size += TreeSize(path + "\\" + name);
  return size;
}

RecycleBinContent VolumeShell::QueryRecycleBin() {
  RecycleBinContent content;
  for (const Bin& bin : Bins()) {
    for (const Item& item : Items(bin)) {
      ++content.items;
      content.bytes += SizeOf(bin, item);
    }
  }
  return content;
}

// False when something of it is left.
bool VolumeShell::RemoveTree(const std::string& path) {
  const auto info = files_.Look(path);
  if (!info) return true;
  bool all = true;
  if (info->is_folder && !info->is_link) {
    for (const std::string& name : Names(files_, path)) all &= RemoveTree(path + "\\" + name);
  }
  try {
    info->is_folder ? files_.RemoveFolder(path) : files_.RemoveFile(path);
  } catch (const Error& error) {
    all &= error.kind() == Error::Kind::kMissing;
  }
  return all;
}

void VolumeShell::EmptyRecycleBin() {
  bool all = true;
  for (const Bin& bin : Bins()) {
    for (const std::string& name : Names(files_, bin.folder)) {
      const std::string start = UpCase(std::string_view(name).substr(0, 2));
      const bool keep =
          bin.is_new ? start != "$R" && start != "$I" : EqualsNoCase(name, kDesktopIni);
      // The file goes before its index, so that what is left can still be restored.
      if (keep || (bin.is_new && start == "$I")) continue;
      all &= RemoveTree(bin.folder + "\\" + name);
    }
    for (const std::string& name : Names(files_, bin.folder)) {
      const bool is_index = bin.is_new && EqualsNoCase(name.substr(0, 2), "$I");
      const std::string content = bin.folder + "\\$R" + (is_index ? name.substr(2) : "");
      if (is_index && !files_.Look(content)) all &= RemoveTree(bin.folder + "\\" + name);
    }
  }
  if (!all) {
    throw Error(Error::Kind::kDenied, "Some files in the recycle bin could not be removed.");
  }
}

void VolumeShell::ClearAddressHistory() { Require(ShellFeature::kAddressHistory); }

void VolumeShell::EmptyClipboard() { Require(ShellFeature::kClipboard); }

void VolumeShell::ShowProperties(std::string_view) {
  throw NotAvailable("Properties are shown by a running Windows only.");
}

void VolumeShell::OpenFolderOf(std::string_view) {
  throw NotAvailable("Folders are opened by a running Windows only.");
}

bool VolumeShell::StartProgram(std::string_view, std::string_view) {
  throw NotAvailable("Programs are started by a running Windows only.");
}

std::unique_ptr<ShortcutReader> VolumeShell::OpenShortcuts() { return OpenVolumeShortcuts(files_); }

}  // namespace quellix
