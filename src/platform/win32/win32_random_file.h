#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/win32/unique.h"

namespace quellix {

// One open file. While it is open for writing others may read it, nobody may write or remove it.
class Win32RandomFile : public RandomFile {
 public:
  // Throws Error, also for a link.
  Win32RandomFile(std::string_view path, OpenMode mode);

  uint64_t Size() const override { return size_; }
  size_t Read(uint64_t offset, std::span<char> buffer) override;
  void Write(uint64_t offset, std::string_view bytes) override;
  void Resize(uint64_t size) override;
  void Flush() override;
  FileTimes Times() override;
  uint32_t Attributes() override;
  void SetTimes(const FileTimes& times) override;

 private:
  std::string path_;
  UniqueFile file_;
  uint64_t size_ = 0;
};

// A whole file's bytes. Throws Error; `info` is what was found at the path.
std::string ReadWhole(const std::wstring& wide, const FileInfo& info, std::string_view path,
                      uint64_t limit);

// Creates or replaces a file in one step: the bytes go into a new file beside it, reach the disk,
// and then take its name. Throws Error; the old file then stays and the new one is gone.
void ReplaceWhole(const std::wstring& wide, std::string_view path, std::string_view bytes);

}  // namespace quellix
