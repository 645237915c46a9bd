#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/win32/win32_anchor.h"

namespace quellix {

// The files of the running Windows. Paths beyond 260 characters work; a path that is not full, or
// holds a wildcard, names nothing.
class Win32FileSystem : public FileSystem {
 public:
  // Shares the anchor with whoever else removes files; it must outlive this object.
  explicit Win32FileSystem(Win32Anchor& anchor) : anchor_(anchor) {}

  bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  bool IsGone(std::string_view path) override;
  void SetAttributes(std::string_view path, uint32_t attributes) override;
  void RemoveFile(std::string_view path) override;
  void RemoveFolder(std::string_view path) override;
  void Rename(std::string_view from, std::string_view to) override;
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) override;
  void CreateFolder(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path, uint64_t limit) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;
  std::string RealPath(std::string_view path) override;
  void Anchor(std::string_view folder) override { anchor_.Set(folder); }

 private:
  Win32Anchor& anchor_;
};

}  // namespace quellix
