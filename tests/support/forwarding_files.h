#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/forwarding_file_system.h"
#include "platform/forwarding_folder.h"
#include "platform/machine.h"
#include "platform/path.h"

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

// The real file system, with every folder it opens handed through `decorate`, and so on below.
class ForwardingFiles : public ForwardingFileSystem {
 public:
  // `path` ends in "\".
  using Decorate =
      std::function<std::unique_ptr<Folder>(const std::string& path, std::unique_ptr<Folder>)>;
  // What becomes of an opened file.
  using DecorateFile = std::function<std::unique_ptr<RandomFile>(std::string_view path,
                                                                 std::unique_ptr<RandomFile> file)>;
  ForwardingFiles(FileSystem& files, Decorate decorate)
      : ForwardingFileSystem(files), decorate_(std::move(decorate)) {}
  ForwardingFiles(FileSystem& files, DecorateFile decorate)
      : ForwardingFiles(files, Decorate([decorate](const std::string& path, auto folder) {
                          return std::make_unique<FileDecorator>(std::move(folder), path, decorate);
                        })) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override {
    return Wrap(WithBackslash(path), inner_.OpenFolder(path));
  }
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override { return OpenFolder(path); }

 private:
  // Hands the folders below to the same decorator.
  class Descending : public ForwardingFolder {
   public:
    Descending(ForwardingFiles& files, std::string path, std::unique_ptr<Folder> folder)
        : ForwardingFolder(std::move(folder)), files_(files), path_(std::move(path)) {}
    std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override {
      return files_.Wrap(path_ + std::string(names) + "\\",
                         ForwardingFolder::OpenFolder(names, use));
    }

   private:
    ForwardingFiles& files_;
    std::string path_;
  };
  class FileDecorator : public ForwardingFolder {
   public:
    FileDecorator(std::unique_ptr<Folder> folder, std::string path, DecorateFile decorate)
        : ForwardingFolder(std::move(folder)),
          path_(std::move(path)),
          decorate_(std::move(decorate)) {}
    std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
      return decorate_(path_ + std::string(name), ForwardingFolder::Open(name, mode));
    }

   private:
    std::string path_;
    DecorateFile decorate_;
  };

  std::unique_ptr<Folder> Wrap(const std::string& path, std::unique_ptr<Folder> folder) {
    if (!folder) return folder;
    return decorate_(path, std::make_unique<Descending>(*this, path, std::move(folder)));
  }

  Decorate decorate_;
};

// A machine with other files.
inline Machine WithFiles(const Machine& machine, FileSystem& files) {
  return {
      files,          machine.registry, machine.shell,    machine.url_cache,     machine.profile,
      machine.system, machine.session,  machine.cleaners, machine.program_folder};
}

}  // namespace quellix
