#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/win32/win32_folder.h"

namespace quellix {

// The files of the running Windows. Paths beyond 260 characters work; a path that is not full, or
// holds a wildcard, names nothing.
class Win32FileSystem : public FileSystem {
 public:
  // Lends COM to the folders it opens; it must outlive them.
  explicit Win32FileSystem(Win32Com& com) : com_(com) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override;
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  bool IsGone(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path, uint64_t limit) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;

 private:
  // The folder a file lies in, links to it followed as well; nothing when it is missing.
  std::optional<Win32Folder> OpenFolderAbove(std::string_view path);

  Win32Com& com_;
};

// FileSystem::ReadWholeFile for a file whose folder is open.
std::optional<std::string> ReadWhole(Folder& folder, std::string_view path, uint64_t limit);

}  // namespace quellix
