#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/volume/volume_drive.h"

namespace quellix {

class LookAhead;
class VolumeFileSystem;

// A folder of a mounted volume, held by a descriptor that no rename or replacement moves. Below it
// no link is followed and no other disk entered.
//
// Names that cannot exist on Windows are not seen. A link whose target is missing counts as a link
// to a file, unless it is an NTFS junction. A link is only ever asked whether it leads to a folder.
class VolumeFolder : public Folder {
 public:
  // `fd` may be one for looking up names only. `path` is what errors call it.
  VolumeFolder(VolumeFileSystem& files, VolumeDrive& drive, UniqueFd fd, std::string path);

  FileId Id() override;
  std::vector<FileId> Above() override;
  DiskRoom Room() override;
  void Enumerate(Detail detail, const EntryVisitor& visit) override;
  std::optional<FileInfo> Look(std::string_view name, Detail detail = Detail::kFull) override;
  std::optional<FileId> IdOf(std::string_view name) override;
  std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override;
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override;
  void CreateFolder(std::string_view name) override;
  // Where the driver knows no renaming that keeps what is there, the look before it must do.
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override;
  void MoveTo(std::string_view from, Folder& folder, std::string_view to) override;
  void Flush() override;
  void RemoveFile(std::string_view name) override;
  bool RemoveAsSpelled(std::string_view name, FileInfo& seen) override;
  void RemoveFolder(std::string_view name) override;
  void RequireRemovable(std::string_view name) override;
  void Recycle(std::string_view name) override;
  void SetAttributes(std::string_view name, uint32_t attributes) override;

  // Beyond the port.
  int fd() const { return fd_.get(); }
  // As FileSystem's: looked at on a thread of its own.
  static std::shared_ptr<void> ExpectLooks(LookAhead& look_ahead,
                                           std::span<const FilesBelow> files);
  // Creates or replaces a file in one step, as FileSystem::WriteWholeFile; `fill` writes the new
  // one, and `before_placing` is called when nothing but the renaming is left to do.
  void Replace(std::string_view name, const std::function<void(int fd)>& fill,
               const std::function<void()>& before_placing = {});
  void Replace(std::string_view name, std::string_view bytes);
  // Gives a file a second name; false where the disk knows no such thing.
  bool Link(std::string_view name, std::string_view second);
  // Overwrites and removes what killed runs left of Replace, where it can; not what another run
  // works on.
  void ClearTemporaryFiles();
  // The file, open for reading; none when it is missing. Throws Error.
  UniqueFd OpenForRead(std::string_view name);

 private:
  std::string PathOf(std::string_view name) const;
  [[noreturn]] void Fail(int code, std::string_view name) const;
  bool Find(std::string_view name, Located& entry);
  Located Need(std::string_view name);
  bool FindPlace(std::string_view name, Located& entry);
  bool IsFolderLink(const Located& entry);
  bool TakeExpected(std::string_view name, Located& entry);
  std::string PathNow() const;

  VolumeFileSystem& files_;
  VolumeDrive& drive_;
  UniqueFd fd_;
  bool is_unread_ = false;  // fd_ may be for reading, and stands at its beginning
  std::string path_;
  std::optional<FileId> id_;        // once it was asked for
  bool is_immutable_ = false;       // known with it: kept from changes by an attribute of its own
  std::weak_ptr<LookAhead> ahead_;  // of a folder above, or of this one
  // The file looked at last: who removes it next need not look again.
  Located looked_;
  std::optional<int> holds_names_;  // errno of whoever removes something here; 0 for none
};

// Throws the Error for a folder that could not be opened, unless errno says that it is missing.
void RequireMissing(int code, std::string_view path);

}  // namespace quellix
