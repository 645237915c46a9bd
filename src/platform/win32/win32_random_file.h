#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/win32/unique.h"

namespace quellix {

// One open file. While it is open for writing others may read it, nobody may write or remove it.
class Win32RandomFile : public RandomFile {
 public:
  Win32RandomFile(UniqueFile file, std::string path);

  uint64_t Size() const override { return size_; }
  size_t Read(uint64_t offset, std::span<char> buffer) override;
  void Write(uint64_t offset, std::string_view bytes) override;
  void Resize(uint64_t size) override;
  void Flush() override;
  FileTimes Times() override;
  uint32_t Attributes() override;
  void SetTimes(const FileTimes& times) override;
  FileId Id() override;
  uint32_t LinkCount() override;
  std::vector<Extent> Allocated() override;
  void SetAttributes(uint32_t attributes) override;
  std::vector<StreamInfo> Streams() override;
  std::string ReadStream(std::string_view name) override;
  void WriteStream(std::string_view name, std::string_view bytes) override;

  // The access list of `old` instead of the one that the folder gave; only of a file made by
  // kCreateNew. And its attributes and the time of its creation. Throw Error.
  void TakeAccessListOf(const UniqueFile& old);
  void TakeLooksOf(const UniqueFile& old);

 private:
  UniqueFile OpenStream(std::string_view name, bool writes);

  std::string path_;
  UniqueFile file_;
  uint64_t size_ = 0;
};

// Opens the file `name` in an open folder. Throws Error, naming `shown`, also for what is no file.
std::unique_ptr<Win32RandomFile> OpenRandomFile(const UniqueFile& folder, std::wstring_view name,
                                                std::string shown, OpenMode mode);

}  // namespace quellix
