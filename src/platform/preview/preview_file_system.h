#pragma once

#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/file_system.h"
#include "platform/preview/known_listings.h"
#include "platform/shell.h"

namespace quellix {

// The files of another file system, every change remembered instead of made: what was removed is no
// longer seen, what was written is kept in memory. `inner` is never asked to change anything, nor
// to open a file for writing. What could not be removed, because it is in use or denied, is asked
// of it, as far as it can tell.
//
// What became of a name is kept by the identity of its folder, so that every path to it tells the
// same. A folder's entries are those of the first time that it is read, but for these changes,
// until many others were read. A file opened with OpenMode::kWrite has no bytes, so that wiping a
// large one takes no time. Only files can be renamed.
class PreviewFileSystem : public FileSystem {
 public:
  // `shell` is that of the inner machine.
  PreviewFileSystem(FileSystem& inner, Shell& shell) : inner_(inner), shell_(shell) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override;
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override {
    return inner_.OpenLinked(path);
  }
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  std::shared_ptr<void> ExpectLooks(std::span<const FilesBelow> files) override;
  bool IsGone(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path,
                                           uint64_t limit = 16u << 20) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;

  // What was moved into the recycle bin since ForgetRecycled.
  const RecycleBinContent& recycled() const { return recycled_; }
  void ForgetRecycled() { recycled_ = {}; }

 private:
  friend class PreviewFolder;

  // What is seen under a name instead of what was there.
  struct Made {
    enum class Kind { kFolder, kFile, kMoved } kind;
    std::string name{};                    // as it is to be seen
    std::string real{};                    // kMoved: the file's name on the inner file system
    std::shared_ptr<std::string> bytes{};  // kFile
    FileId folder{};                       // kFolder: a number of its own
  };
  // What a name became: hundreds of thousands of them are held.
  struct Node {
    std::string_view gone{};                    // what went, as it was named; "" for nothing
    std::vector<std::string_view> also_gone{};  // on a volume names may differ in their case alone
    std::unique_ptr<Made> made{};               // null for nothing
  };
  using Nodes = std::pmr::unordered_map<std::string_view, Node>;  // by name in upper case

  bool is_changed() const { return !nodes_.empty(); }
  // The text, for as long as this object lives.
  std::string_view Hold(std::string_view text);

  FileSystem& inner_;
  Shell& shell_;
  // For what is never given back before the end: names and nodes.
  std::pmr::monotonic_buffer_resource memory_;
  std::pmr::unordered_map<FileId, Nodes, HashOfId> nodes_{&memory_};  // by folder
  std::unordered_set<FileId, HashOfId> gone_folders_;
  uint64_t changes_ = 0;  // so far
  KnownListings listings_;
  Listing spare_;  // where listings are gathered
  uint64_t folders_made_ = 0;
  RecycleBinContent recycled_;
};

}  // namespace quellix
