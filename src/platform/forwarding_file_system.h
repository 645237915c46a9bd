#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace quellix {

// The files of another one as they are, to be changed in part by those derived from it.
class ForwardingFileSystem : public FileSystem {
 public:
  explicit ForwardingFileSystem(FileSystem& inner) : inner_(inner) {}

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override {
    return inner_.OpenFolder(path);
  }
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override {
    return inner_.OpenLinked(path);
  }
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override {
    return inner_.Look(path, detail);
  }
  bool IsGone(std::string_view path) override { return inner_.IsGone(path); }
  std::optional<std::string> ReadWholeFile(std::string_view path, uint64_t limit) override {
    return inner_.ReadWholeFile(path, limit);
  }
  void WriteWholeFile(std::string_view path, std::string_view bytes) override {
    inner_.WriteWholeFile(path, bytes);
  }

 protected:
  FileSystem& inner_;
};

}  // namespace quellix
