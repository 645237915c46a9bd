#include "platform/win32/win32_random_file.h"

#include <algorithm>
#include <functional>

#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"
#include "platform/win32/win32_file_time.h"
#include "platform/win32/win32_path.h"

namespace quellix {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr uint64_t kChunk = 16u << 20;  // below what one call may be asked for

void RefuseLink(const UniqueFile& file, std::string_view path) {
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if (!GetFileInformationByHandleEx(file.Get(), FileAttributeTagInfo, &tag, sizeof tag)) return;
  WIN32_FIND_DATAW found{};
  found.dwFileAttributes = tag.FileAttributes;
  found.dwReserved0 = tag.ReparseTag;
  if (!ToFileInfo(found).is_link) return;
  throw Error(Error::Kind::kDenied, "Cannot write " + std::string(path) + ": it is a link.");
}

uint64_t SizeOf(const UniqueFile& file, std::string_view action, std::string_view path) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file.Get(), &size)) ThrowLastError(action, path);
  return static_cast<uint64_t>(size.QuadPart);
}

OVERLAPPED At(uint64_t offset) {
  OVERLAPPED position{};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return position;
}

void WriteAt(const UniqueFile& file, uint64_t offset, std::string_view bytes,
             std::string_view path) {
  while (!bytes.empty()) {
    const auto part = static_cast<DWORD>(std::min<uint64_t>(bytes.size(), kChunk));
    OVERLAPPED position = At(offset);
    DWORD written = 0;
    if (!WriteFile(file.Get(), bytes.data(), part, &written, &position)) {
      ThrowLastError("write", path);
    }
    if (written == 0) throw WindowsError(ERROR_DISK_FULL, "write", path);
    bytes.remove_prefix(written);
    offset += written;
  }
}

std::wstring TemporaryNameBeside(const std::wstring& wide) {
  const uint64_t unique = uint64_t{GetCurrentProcessId()} << 32 ^ GetTickCount64();
  return wide.substr(0, wide.rfind(L'\\') + 1) + L"~qx" + std::to_wstring(unique) + L".tmp";
}

// Writes the whole new file and closes it.
void WriteNew(const std::wstring& wide, std::string_view path, std::string_view bytes) {
  const UniqueFile file(CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) ThrowLastError("write", path);
  WriteAt(file, 0, bytes, path);
  if (!FlushFileBuffers(file.Get())) ThrowLastError("write", path);
}

}  // namespace

Win32RandomFile::Win32RandomFile(std::string_view path, OpenMode mode) : path_(path) {
  const std::wstring wide = WidePath("open", path);
  const bool reads = mode == OpenMode::kRead;
  // Restored times are set through the same handle, which GENERIC_WRITE includes.
  file_.Reset(CreateFileW(wide.c_str(), GENERIC_READ | (reads ? 0 : GENERIC_WRITE),
                          reads ? kShareAll : FILE_SHARE_READ, nullptr,
                          mode == OpenMode::kReadAndCreate ? OPEN_ALWAYS : OPEN_EXISTING,
                          FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file_) ThrowLastError("open", path);
  RefuseLink(file_, path);
  size_ = SizeOf(file_, "open", path);
}

void Win32RandomFile::Write(uint64_t offset, std::string_view bytes) {
  WriteAt(file_, offset, bytes, path_);
}

size_t Win32RandomFile::Read(uint64_t offset, std::span<char> buffer) {
  size_t filled = 0;
  while (filled < buffer.size()) {
    const auto part = static_cast<DWORD>(std::min<uint64_t>(buffer.size() - filled, kChunk));
    OVERLAPPED position = At(offset + filled);
    DWORD got = 0;
    if (!ReadFile(file_.Get(), buffer.data() + filled, part, &got, &position)) {
      if (GetLastError() == ERROR_HANDLE_EOF) break;
      ThrowLastError("read", path_);
    }
    if (got == 0) break;
    filled += got;
  }
  return filled;
}

void Win32RandomFile::Resize(uint64_t size) {
  LARGE_INTEGER end;
  end.QuadPart = static_cast<LONGLONG>(size);
  if (!SetFilePointerEx(file_.Get(), end, nullptr, FILE_BEGIN) || !SetEndOfFile(file_.Get())) {
    ThrowLastError("write", path_);
  }
}

FileTimes Win32RandomFile::Times() {
  FILETIME created, last_access, last_write;
  if (!GetFileTime(file_.Get(), &created, &last_access, &last_write)) ThrowLastError("read", path_);
  return {FromFileTime(created), FromFileTime(last_access), FromFileTime(last_write)};
}

uint32_t Win32RandomFile::Attributes() {
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if (!GetFileInformationByHandleEx(file_.Get(), FileAttributeTagInfo, &tag, sizeof tag)) {
    ThrowLastError("read", path_);
  }
  return tag.FileAttributes;
}

void Win32RandomFile::SetTimes(const FileTimes& times) {
  const FILETIME created = ToFileTime(times.created), last_access = ToFileTime(times.last_access),
                 last_write = ToFileTime(times.last_write);
  if (!SetFileTime(file_.Get(), times.created != 0 ? &created : nullptr,
                   times.last_access != 0 ? &last_access : nullptr,
                   times.last_write != 0 ? &last_write : nullptr)) {
    ThrowLastError("change", path_);
  }
}

void Win32RandomFile::Flush() {
  if (!FlushFileBuffers(file_.Get())) ThrowLastError("write", path_);
}

std::string ReadWhole(const std::wstring& wide, const FileInfo& info, std::string_view path,
                      uint64_t limit) {
  if (info.is_link || info.is_folder) throw WindowsError(ERROR_ACCESS_DENIED, "read", path);
  const UniqueFile file(CreateFileW(wide.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file) ThrowLastError("read", path);
  const uint64_t size = SizeOf(file, "read", path);
  if (size > limit) throw WindowsError(ERROR_FILE_TOO_LARGE, "read", path);
  std::string bytes(size, '\0');
  size_t filled = 0;
  while (filled < bytes.size()) {
    const auto part = static_cast<DWORD>(std::min<uint64_t>(bytes.size() - filled, kChunk));
    DWORD got = 0;
    if (!ReadFile(file.Get(), bytes.data() + filled, part, &got, nullptr)) {
      ThrowLastError("read", path);
    }
    if (got == 0) break;
    filled += got;
  }
  bytes.resize(filled);
  return bytes;
}

void ReplaceWhole(const std::wstring& wide, std::string_view path, std::string_view bytes) {
  const std::wstring temporary = TemporaryNameBeside(wide);
  try {
    WriteNew(temporary, path, bytes);
    if (!MoveFileExW(temporary.c_str(), wide.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      ThrowLastError("write", path);
    }
  } catch (const Error&) {
    DeleteFileW(temporary.c_str());
    throw;
  }
}

}  // namespace quellix
