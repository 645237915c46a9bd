#include "backup/backup_folder.h"

#include "backup/new_file.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

constexpr size_t kProbe = 64 << 10;  // a disk with less room holds no archive worth the name

}  // namespace

std::string WhyBackupFolderCannotBeUsed(FileSystem& files, std::string_view folder) try {
  MakeFolders(files, folder);
  const auto open = files.OpenFolder(folder);
  if (!open) return "The backup folder " + std::string(folder) + " is missing.";
  NewFile probe(*open);
  probe.file().Write(0, std::string(kProbe, '\xA5'));
  probe.file().Flush();
  return "";
} catch (const Error& error) {
  return "The backup folder " + std::string(WithoutBackslash(folder)) +
         " cannot be used: " + error.what();
}

}  // namespace quellix
