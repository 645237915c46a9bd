#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/preview/preview_file_system.h"

namespace quellix {

// A folder as it would be after the changes that are remembered.
class PreviewFolder : public Folder {
 public:
  // `path` ends in "\"; `inner` is null for a folder that was made here, with a number of its own.
  PreviewFolder(PreviewFileSystem& files, std::unique_ptr<Folder> inner, FileId id,
                std::string path)
      : files_(files), inner_(std::move(inner)), id_(id), path_(std::move(path)) {}

  FileId Id() override { return id_; }
  std::vector<FileId> Above() override;
  DiskRoom Room() override;
  void Enumerate(Detail detail, const EntryVisitor& visit) override;
  std::optional<FileInfo> Look(std::string_view name, Detail detail) override;
  std::optional<FileId> IdOf(std::string_view name) override;
  std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override;
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override;
  void CreateFolder(std::string_view name) override;
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override;
  void Flush() override {}
  void RemoveFile(std::string_view name) override;
  void RemoveFolder(std::string_view name) override;
  void RequireRemovable(std::string_view name) override;
  void Recycle(std::string_view name) override;
  void SetAttributes(std::string_view name, uint32_t attributes) override;

  // A whole file's bytes, or its new ones.
  std::string Read(std::string_view name, uint64_t limit);
  void Write(std::string_view name, std::string_view bytes);
  // What lies under it; null for one that was made here.
  Folder* inner() const { return inner_.get(); }
  // Whether a name became something else here; `is_there` is then set.
  bool IsChanged(std::string_view name, bool& is_there);

 private:
  using Node = PreviewFileSystem::Node;
  using Made = PreviewFileSystem::Made;

  // What a name became; null for what is still as it is on the inner file system.
  Node* Find(std::string_view name);
  // Those of the inner folder that are still so; false when the visitor has ended it.
  bool EnumerateReal(Detail detail, const EntryVisitor& visit);
  bool EnumerateKnown(KnownListings::Known known, const EntryVisitor& visit);
  // What of it has not gone by now.
  Listing LeftOf(const KnownListings::Known& known);
  // The name of an unchanged or renamed file on the inner file system, "" for another.
  std::string RealName(std::string_view name);
  FileInfo Need(std::string_view name, Detail detail);
  FileInfo NeedFile(std::string_view name);
  bool HasGone(const Node& node, std::string_view name);
  // A name becomes something else, or nothing; the inner folder has something of that name or not.
  void Put(std::string_view name, bool is_there, std::optional<Made> made);
  void Put(std::string_view name, std::optional<Made> made);
  bool IsAsLooked(std::string_view name) const;
  std::unique_ptr<PreviewFolder> OpenOne(std::string_view name);
  std::unique_ptr<PreviewFolder> OpenUnchanged(std::string_view names, OpenFor use);
  std::string PathOf(std::string_view name) const { return path_ + std::string(name); }

  PreviewFileSystem& files_;
  std::unique_ptr<Folder> inner_;
  FileId id_;
  std::string path_;
  PreviewFileSystem::Nodes* nodes_ = nullptr;  // of this folder, once there are any
  // The unchanged file looked at last, and when: who removes it next need not look again.
  std::string looked_;
  std::string upper_;  // of what was found last; of looked_, or "", while that is set
  FileInfo info_looked_;
  uint64_t changes_looked_ = 0;
};

}  // namespace quellix
