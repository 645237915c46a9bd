#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_system.h"
#include "platform/volume/volume_drive.h"

namespace quellix {

// The pseudo drive of the program's own settings folder; never listed as a drive.
inline constexpr char kSettingsDrive = '@';

// The files of a mounted Windows volume: each drive letter is a folder of this system.
//
// Names that cannot exist on Windows are not enumerated. A link whose target is missing counts as a
// link to a file, unless it is an NTFS junction. A link is only ever asked whether it leads to a
// folder; nothing is reached through one.
class VolumeFileSystem : public FileSystem {
 public:
  // Upper-case letters and their folders. Throws Error when one cannot be opened.
  explicit VolumeFileSystem(const std::map<char, std::string>& drives);

  bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  // Only the running Windows knows other drives, the network, what stands behind a link, variables
  // and short names.
  bool IsGone(std::string_view path) override;
  void SetAttributes(std::string_view path, uint32_t attributes) override;
  void RemoveFile(std::string_view path) override;
  void RemoveFolder(std::string_view path) override;
  void Rename(std::string_view from, std::string_view to) override;
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) override;
  void CreateFolder(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path,
                                           uint64_t limit = 16u << 20) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;
  // Nothing to do: no look-up here ever goes through a link, so none can lead out of any folder.
  void Anchor(std::string_view) override {}

  // The mapped letters in order, without the settings drive.
  std::string Letters() const;

  // Beyond the port, for the machine's own use; all throw Error.

  // An open file, not through a link; none when it is missing.
  UniqueFd OpenForRead(std::string_view path);
  // Creates or replaces a file in one step: `fill` writes the new one. Owner, mode and extended
  // attributes of an old file are kept.
  void Replace(std::string_view path, const std::function<void(int fd)>& fill);

 private:
  // A path taken apart: "C:\a\b" is the drive's folder "a" and the name "b".
  struct Parts {
    VolumeDrive* drive;
    std::string_view folder, name;
  };

  std::optional<Parts> Parse(std::string_view path);
  std::optional<Located> Find(std::string_view path);
  Located Need(std::string_view path);
  Located NeedNew(std::string_view path, bool& exists);

  std::map<char, std::unique_ptr<VolumeDrive>> drives_;
};

}  // namespace quellix
