#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/file_system.h"
#include "platform/preview/change_log.h"

namespace quellix {

// The files of another file system, every change recorded instead of made: what was removed is no
// longer seen, what was written is kept in memory. `inner` is never asked to change anything, nor
// to open a file for writing; so what is in use or denied is not known here.
//
// A file opened with OpenMode::kWrite has no bytes, so that wiping a large one takes no time. Only
// files can be renamed.
class PreviewFileSystem : public FileSystem {
 public:
  PreviewFileSystem(FileSystem& inner, ChangeLog& log) : inner_(inner), log_(log) {}

  bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) override;
  bool IsGone(std::string_view path) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  void SetAttributes(std::string_view path, uint32_t attributes) override;
  void RemoveFile(std::string_view path) override;
  void RemoveFolder(std::string_view path) override;
  void Rename(std::string_view from, std::string_view to) override;
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) override;
  void CreateFolder(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path,
                                           uint64_t limit = 16u << 20) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;
  std::string RealPath(std::string_view path) override { return inner_.RealPath(path); }
  void Anchor(std::string_view folder) override { inner_.Anchor(folder); }

  // A file goes in another way than by RemoveFile. Throws as that does.
  void Take(std::string_view path, ChangeKind kind);
  // A file goes with something that is recorded itself.
  void Forget(std::string_view path) { Put(path, {}); }

 private:
  // What a path became.
  struct Node {
    enum class Kind { kGone, kFolder, kFile, kMoved } kind = Kind::kGone;
    std::string name;                    // last component
    std::string real;                    // kMoved: where the file is on the inner file system
    std::shared_ptr<std::string> bytes;  // kFile
  };
  // Where a path leads by now: to a node, to a path of the inner file system, or nowhere.
  struct Place {
    const Node* node = nullptr;
    std::string real;
  };

  Place Find(std::string_view path) const;
  FileInfo Need(std::string_view path, Detail detail);
  void NeedFolderOf(std::string_view path);
  void Put(std::string_view path, Node node);
  bool VisitAdded(const std::string& folder, const EntryVisitor& visit);

  FileSystem& inner_;
  ChangeLog& log_;
  std::unordered_map<std::string, Node> nodes_;  // by comparable path
  std::map<std::string, bool> added_;            // comparable paths of nodes that are there
};

}  // namespace quellix
