#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace quellix {

// Another folder as it is, to be changed in part by those derived from it. Files are removed one
// after the other, and folders below are not derived themselves.
class ForwardingFolder : public Folder {
 public:
  explicit ForwardingFolder(std::unique_ptr<Folder> folder) : folder_(std::move(folder)) {}
  FileId Id() override { return folder_->Id(); }
  std::vector<FileId> Above() override { return folder_->Above(); }
  DiskRoom Room() override { return folder_->Room(); }
  void Enumerate(Detail detail, const EntryVisitor& visit) override {
    folder_->Enumerate(detail, visit);
  }
  std::optional<FileInfo> Look(std::string_view name, Detail detail) override {
    return folder_->Look(name, detail);
  }
  std::optional<FileId> IdOf(std::string_view name) override { return folder_->IdOf(name); }
  std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override {
    return folder_->OpenFolder(names, use);
  }
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    return folder_->Open(name, mode);
  }
  void CreateFolder(std::string_view name) override { folder_->CreateFolder(name); }
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override {
    folder_->Rename(from, to, if_there);
  }
  void MoveTo(std::string_view from, Folder& folder, std::string_view to) override {
    folder_->MoveTo(from, folder, to);
  }
  void Flush() override { folder_->Flush(); }
  void RemoveFile(std::string_view name) override { folder_->RemoveFile(name); }
  void RemoveFolder(std::string_view name) override { folder_->RemoveFolder(name); }
  void RequireRemovable(std::string_view name) override { folder_->RequireRemovable(name); }
  void Recycle(std::string_view name) override { folder_->Recycle(name); }
  void RemoveAtStart(std::string_view name) override { folder_->RemoveAtStart(name); }
  void SetAttributes(std::string_view name, uint32_t attributes) override {
    folder_->SetAttributes(name, attributes);
  }

 private:
  std::unique_ptr<Folder> folder_;
};

}  // namespace quellix
