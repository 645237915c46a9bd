#include "backup/backup_folder.h"

#include "backup/new_file.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr size_t kProbe = 64 << 10;  // a disk with less room holds no archive worth the name

// Does `step` with the folder, made where it is missing; why that failed.
template <typename Step>
Sentence Attempt(FileSystem& files, std::string_view folder, const Step& step) try {
  MakeFolders(files, folder);
  const auto open = files.OpenFolder(folder);
  if (!open) return Say("The backup folder %1 is missing.", folder);
  step(*open);
  return {};
} catch (const Error& error) {
  return Say("The backup folder %1 cannot be used: %2", WithoutBackslash(folder),
             SentenceOf(error));
}

void RequireRoom(Folder& folder) {
  const DiskRoom room = folder.Room();
  if (room.is_read_only) throw Error(Error::Kind::kDenied, Say("The disk can only be read."));
  if (room.free < kProbe) throw Error(Error::Kind::kOther, Say("The disk is full."));
}

}  // namespace

Sentence WhyBackupFolderCannotBeUsed(FileSystem& files, std::string_view folder) {
  return Attempt(files, folder, [](Folder& open) {
    NewFile probe(open);
    probe.file().Write(0, std::string(kProbe, '\xA5'));
    probe.file().Flush();
  });
}

Sentence WhyBackupFolderLooksUnusable(FileSystem& preview, std::string_view folder) {
  return Attempt(preview, folder, RequireRoom);
}

}  // namespace quellix
