#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/machine.h"

namespace quellix {

// Real files, for decorators that change what one of them tells or takes.
class ForwardingFile : public RandomFile {
 public:
  explicit ForwardingFile(std::unique_ptr<RandomFile> file) : file_(std::move(file)) {}
  uint64_t Size() const override { return file_->Size(); }
  size_t Read(uint64_t offset, std::span<char> buffer) override {
    return file_->Read(offset, buffer);
  }
  void Write(uint64_t offset, std::string_view bytes) override { file_->Write(offset, bytes); }
  void Resize(uint64_t size) override { file_->Resize(size); }
  void Flush() override { file_->Flush(); }
  FileTimes Times() override { return file_->Times(); }
  uint32_t Attributes() override { return file_->Attributes(); }
  void SetTimes(const FileTimes& times) override { file_->SetTimes(times); }

 private:
  std::unique_ptr<RandomFile> file_;
};

// The real file system, with every file it opens handed through `decorate`.
class ForwardingFiles : public FileSystem {
 public:
  using Decorate = std::function<std::unique_ptr<RandomFile>(std::string_view path,
                                                             std::unique_ptr<RandomFile> file)>;
  ForwardingFiles(FileSystem& files, Decorate decorate)
      : files_(files), decorate_(std::move(decorate)) {}

  bool Enumerate(std::string_view folder, Detail detail, const EntryVisitor& visit) override {
    return files_.Enumerate(folder, detail, visit);
  }
  std::optional<FileInfo> Look(std::string_view path, Detail detail) override {
    return files_.Look(path, detail);
  }
  bool IsGone(std::string_view path) override { return files_.IsGone(path); }
  void SetAttributes(std::string_view path, uint32_t attributes) override {
    files_.SetAttributes(path, attributes);
  }
  void RemoveFile(std::string_view path) override { files_.RemoveFile(path); }
  void RemoveFolder(std::string_view path) override { files_.RemoveFolder(path); }
  void Rename(std::string_view from, std::string_view to) override { files_.Rename(from, to); }
  std::unique_ptr<RandomFile> Open(std::string_view path, OpenMode mode) override {
    return decorate_(path, files_.Open(path, mode));
  }
  void CreateFolder(std::string_view path) override { files_.CreateFolder(path); }
  std::optional<std::string> ReadWholeFile(std::string_view path, uint64_t limit) override {
    return files_.ReadWholeFile(path, limit);
  }
  void WriteWholeFile(std::string_view path, std::string_view bytes) override {
    files_.WriteWholeFile(path, bytes);
  }
  void Anchor(std::string_view folder) override { files_.Anchor(folder); }

 private:
  FileSystem& files_;
  Decorate decorate_;
};

// A machine with other files.
inline Machine WithFiles(const Machine& machine, FileSystem& files) {
  return {files,           machine.registry, machine.shell,   machine.url_cache,
          machine.profile, machine.system,   machine.session, machine.program_folder};
}

}  // namespace quellix
