#include "platform/volume/volume_shell.h"

#include <algorithm>
#include <chrono>
#include <random>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/volume_shortcuts.h"

namespace quellix {
namespace {

constexpr std::string_view kBinFolder = ":\\$Recycle.Bin";
constexpr std::string_view kOldBinFolder = ":\\RECYCLER";
constexpr std::string_view kDesktopIni = "desktop.ini";
constexpr std::string_view kDesktopIniText =
    "[.ShellClassInfo]\r\nCLSID={645FF040-5081-101B-9F08-00AA002F954E}\r\n"
    "LocalizedResourceName=@%SystemRoot%\\system32\\shell32.dll,-8964\r\n";
constexpr size_t kSizeOffset = 8;
constexpr size_t kOldPathBytes = 520;  // of version 1: 260 characters, whatever the path's length

std::string LittleEndian(uint64_t value, int bytes) {
  std::string result;
  for (int i = 0; i < bytes; ++i) result += static_cast<char>(value >> (8 * i) & 0xFF);
  return result;
}

uint64_t FileTimeNow() {
  constexpr uint64_t kSecondsTo1970 = 11644473600;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto steps = std::chrono::duration_cast<std::chrono::microseconds>(now).count() * 10;
  return static_cast<uint64_t>(steps) + kSecondsTo1970 * 10'000'000;
}

std::string Extension(std::string_view path) {
  const std::string_view name = NamePart(path);
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string() : std::string(name.substr(dot));
}

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
  if (user_.sid.empty()) {
    throw NotAvailable("The user's identity is not known, so there is no recycle bin to use.");
  }
  if (system_.Version().major < 6) {
    throw NotAvailable("The recycle bin of this Windows cannot be filled from outside.");
  }
}

std::string VolumeShell::UserBin(char drive) {
  Require(ShellFeature::kRecycleBin);
  const std::string bins = drive + std::string(kBinFolder);
  std::string bin = bins + "\\" + user_.sid;
  if (files_.Look(bin)) return bin;
  files_.CreateFolder(bins);
  files_.SetAttributes(bins, kHidden | kSystem);
  files_.CreateFolder(bin);
  files_.SetAttributes(bin, kHidden | kSystem);
  const std::string ini = bin + "\\" + std::string(kDesktopIni);
  files_.WriteWholeFile(ini, kDesktopIniText);
  files_.SetAttributes(ini, kHidden | kSystem);
  return bin;
}

// Six random characters and the extension, free both as "$R" and "$I".
std::string VolumeShell::FreeName(const std::string& bin, std::string_view extension) {
  static constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::random_device random;
  for (;;) {
    std::string name;
    for (int i = 0; i < 6; ++i) name += kCharacters[random() % kCharacters.size()];
    name += extension;
    if (!files_.Look(bin + "\\$R" + name) && !files_.Look(bin + "\\$I" + name)) return name;
  }
}

std::string VolumeShell::IndexFile(std::string_view path, uint64_t size) {
  const bool is_10 = system_.Version().major >= 10;
  const std::string head =
      LittleEndian(is_10 ? 2 : 1, 8) + LittleEndian(size, 8) + LittleEndian(FileTimeNow(), 8);
  std::string text = ToUtf16Bytes(path) + std::string(2, '\0');
  if (is_10) return head + LittleEndian(text.size() / 2, 4) + text;
  if (text.size() > kOldPathBytes) {
    throw NotAvailable("The path is too long for the recycle bin: " + std::string(path));
  }
  text.resize(kOldPathBytes);
  return head + text;
}

void VolumeShell::Recycle(std::string_view path) {
  path = WithoutBackslash(path);
  const auto info = files_.Look(path);
  if (!info) {
    throw Error(Error::Kind::kMissing, "There is no such file or folder: " + std::string(path));
  }
  const uint64_t size = info->is_folder ? TreeSize(std::string(path)) : info->size;
  const std::string bin = UserBin(path[0]);
  const std::string name = FreeName(bin, Extension(path));
  const std::string index = bin + "\\$I" + name;
  files_.WriteWholeFile(index, IndexFile(path, size));
  try {
    files_.Rename(path, bin + "\\$R" + name);
  } catch (const Error&) {
    files_.RemoveFile(index);
    throw;
  }
}

std::vector<VolumeShell::Bin> VolumeShell::Bins() {
  std::vector<Bin> bins;
  for (const Drive& drive : system_.Drives()) {
    for (const std::string_view folder : {kBinFolder, kOldBinFolder}) {
      const std::string parent = drive.letter + std::string(folder);
      const std::vector<std::string> sids =
          user_.sid.empty() ? Names(files_, parent) : std::vector<std::string>{user_.sid};
      for (const std::string& sid : sids) {
        bins.push_back({parent + "\\" + sid, folder == kBinFolder});
      }
    }
  }
  return bins;
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
  const auto index = files_.ReadWholeFile(bin.folder + "\\" + item.index);
  uint64_t size = 0;
  for (size_t i = 0; index && index->size() >= kSizeOffset + 8 && i < 8; ++i) {
    size |= uint64_t{static_cast<unsigned char>((*index)[kSizeOffset + i])} << (8 * i);
  }
  return size;
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

std::unique_ptr<ShortcutReader> VolumeShell::OpenShortcuts() { return OpenVolumeShortcuts(files_); }

}  // namespace quellix
