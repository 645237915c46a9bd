#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file_system.h"
#include "platform/volume/volume_drive.h"
#include "platform/volume/volume_folder.h"

namespace quellix {

// The pseudo drive of the program's own settings folder; never listed as a drive.
inline constexpr char kSettingsDrive = '@';

// The files of a mounted Windows volume: each drive letter is a folder of this system. Nothing is
// reached through a link or a mount point, wherever it stands, but for OpenLinked.
class VolumeFileSystem : public FileSystem {
 public:
  // Upper-case letters and their folders. Throws Error when one cannot be opened.
  explicit VolumeFileSystem(const std::map<char, std::string>& drives);

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override;
  // May lead out of the volume, as the driver shows the link.
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  std::shared_ptr<void> ExpectLooks(std::span<const FilesBelow> files) override;
  // Only the running Windows knows other drives, the network, what stands behind a link, variables
  // and short names.
  bool IsGone(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path,
                                           uint64_t limit = 16u << 20) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;

  // The mapped letters in order, without the settings drive.
  std::string Letters() const;

  // Beyond the port, for the machine's own use; all throw Error.

  // An open file, not through a link; none when it is missing.
  UniqueFd OpenForRead(std::string_view path);
  // The folder a file is in, kMissing when there is none.
  std::unique_ptr<VolumeFolder> OpenFolderOf(std::string_view path);
  // Throws when the disk does not let the file be replaced, as a write-protected one. Clears away
  // what killed runs left in its folder.
  void RequireWritable(std::string_view path);

  // Moves an entry, whose path is given, into the recycle bin of its drive.
  using Recycler = std::function<void(const Located& entry, const std::string& path)>;
  // The files know no bin until the machine names one.
  void SetRecycler(Recycler recycler) { recycler_ = std::move(recycler); }
  void Recycle(const Located& entry, const std::string& path);

 private:
  // A path taken apart: "C:\a\b" is the drive's folder "a" and the name "b".
  struct Parts {
    VolumeDrive* drive;
    std::string_view folder, name;
  };

  std::optional<Parts> Parse(std::string_view path);
  bool Find(std::string_view path, UniqueFd& folder, Located& entry);

  std::map<char, std::unique_ptr<VolumeDrive>> drives_;
  Recycler recycler_;
  std::shared_ptr<LookAhead> look_ahead_;
};

}  // namespace quellix
