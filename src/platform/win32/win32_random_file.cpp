#include "platform/win32/win32_random_file.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <winioctl.h>

#include <algorithm>

#include "platform/win32/nt_file.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_time.h"

namespace quellix {
namespace {

constexpr uint64_t kChunk = 16u << 20;  // below what one call may be asked for

uint64_t SizeOf(const UniqueFile& file, std::string_view path) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file.Get(), &size)) ThrowLastError(Cannot::kOpen, path);
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
      ThrowLastError(Cannot::kWrite, path);
    }
    if (written == 0) throw WindowsError(ERROR_DISK_FULL, Cannot::kWrite, path);
    bytes.remove_prefix(written);
    offset += written;
  }
}

// What a file is opened for. Times and attributes are set through the same handle.
NtAsk AskFor(OpenMode mode) {
  NtAsk ask{.access = FILE_GENERIC_READ | FILE_GENERIC_WRITE,
            .share = FILE_SHARE_READ,
            .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT};
  if (mode == OpenMode::kRead || mode == OpenMode::kReadKept) {
    ask.access = FILE_GENERIC_READ;
    if (mode == OpenMode::kRead) ask.share = kShareAll;
  } else if (mode == OpenMode::kReadAndCreate) {
    ask.disposition = FILE_OPEN_IF;
  } else if (mode == OpenMode::kCreateNew) {
    ask.disposition = FILE_CREATE;
    ask.access |= WRITE_DAC;
  }
  return ask;
}

UniqueFile OpenAsAsked(const UniqueFile& folder, std::wstring_view name, const std::string& shown,
                       NtAsk ask) {
  UniqueFile file;
  NTSTATUS status = NtOpen(folder.Get(), name, ask, file);
  if (status == kAccessDenied && ask.disposition == FILE_OPEN) {
    ask.access &= ~ACCESS_MASK{FILE_READ_DATA | FILE_READ_EA};
    if (ask.access & FILE_WRITE_DATA) status = NtOpen(folder.Get(), name, ask, file);
  }
  if (status < 0) throw NtError(status, Cannot::kOpen, shown);
  return file;
}

bool IsReparsePoint(const UniqueFile& file) {
  NtBasic basic;
  return NtQuery(file, kBasicInformation, basic) >= 0 &&
         (basic.attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

}  // namespace

// Behind a reparse point that is no link lies an ordinary file, whose bytes only an opening without
// the flag tells; it must be the same file.
std::unique_ptr<Win32RandomFile> OpenRandomFile(const UniqueFile& folder, std::wstring_view name,
                                                std::string shown, OpenMode mode) {
  NtAsk ask = AskFor(mode);
  UniqueFile file = OpenAsAsked(folder, name, shown, ask);
  if (IsOpenLink(file)) {
    throw Error(Error::Kind::kDenied, Say(Cannot::kOpen, shown, Say("it is a link.")));
  }
  if (IsReparsePoint(file)) {
    const FileId id = IdOfOpen(file, shown);
    file.Reset();
    ask.options = FILE_NON_DIRECTORY_FILE;
    ask.disposition = FILE_OPEN;
    file = OpenAsAsked(folder, name, shown, ask);
    if (IdOfOpen(file, shown) != id) throw WindowsError(ERROR_ACCESS_DENIED, Cannot::kOpen, shown);
  }
  if (mode == OpenMode::kReadAndCreate) FlushFileBuffers(file.Get());
  return std::make_unique<Win32RandomFile>(std::move(file), std::move(shown));
}

Win32RandomFile::Win32RandomFile(UniqueFile file, std::string path)
    : path_(std::move(path)), file_(std::move(file)), size_(SizeOf(file_, path_)) {}

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
      ThrowLastError(Cannot::kRead, path_);
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
    ThrowLastError(Cannot::kWrite, path_);
  }
}

FileTimes Win32RandomFile::Times() {
  FILETIME created, last_access, last_write;
  if (!GetFileTime(file_.Get(), &created, &last_access, &last_write))
    ThrowLastError(Cannot::kRead, path_);
  return {FromFileTime(created), FromFileTime(last_access), FromFileTime(last_write)};
}

uint32_t Win32RandomFile::Attributes() {
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if (!GetFileInformationByHandleEx(file_.Get(), FileAttributeTagInfo, &tag, sizeof tag)) {
    ThrowLastError(Cannot::kRead, path_);
  }
  return tag.FileAttributes;
}

void Win32RandomFile::SetTimes(const FileTimes& times) {
  const FILETIME created = ToFileTime(times.created), last_access = ToFileTime(times.last_access),
                 last_write = ToFileTime(times.last_write);
  if (!SetFileTime(file_.Get(), times.created != 0 ? &created : nullptr,
                   times.last_access != 0 ? &last_access : nullptr,
                   times.last_write != 0 ? &last_write : nullptr)) {
    ThrowLastError(Cannot::kChange, path_);
  }
}

void Win32RandomFile::Flush() {
  if (!FlushFileBuffers(file_.Get())) ThrowLastError(Cannot::kWrite, path_);
}

// Word for word, so that what was inherited stays so, and what was protected from inheritance.
void Win32RandomFile::TakeAccessListOf(const UniqueFile& old) {
  DWORD size = 0;
  GetKernelObjectSecurity(old.Get(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<char> kept(std::max<DWORD>(size, 1));
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  if (!GetKernelObjectSecurity(old.Get(), DACL_SECURITY_INFORMATION, kept.data(), size, &size) ||
      !GetSecurityDescriptorControl(kept.data(), &control, &revision)) {
    ThrowLastError(Cannot::kWrite, path_);
  }
  if (control & SE_DACL_AUTO_INHERITED) {
    SetSecurityDescriptorControl(kept.data(), SE_DACL_AUTO_INHERIT_REQ, SE_DACL_AUTO_INHERIT_REQ);
  }
  if (!SetKernelObjectSecurity(file_.Get(), DACL_SECURITY_INFORMATION, kept.data())) {
    ThrowLastError(Cannot::kWrite, path_);
  }
}

void Win32RandomFile::TakeLooksOf(const UniqueFile& old) {
  NtBasic basic;
  const NTSTATUS status = NtQuery(old, kBasicInformation, basic);
  if (status < 0) throw NtError(status, Cannot::kWrite, path_);
  SetAttributes(basic.attributes);
  SetTimes({.created = basic.created});
}

FileId Win32RandomFile::Id() { return IdOfOpen(file_, path_); }

uint32_t Win32RandomFile::LinkCount() {
  NtStandard standard{};
  const NTSTATUS status = NtQuery(file_, kStandardInformation, standard);
  if (status < 0) throw NtError(status, Cannot::kLookAt, path_);
  return standard.links;
}

// A file system that keeps no sparse files knows no such question.
std::vector<Extent> Win32RandomFile::Allocated() {
  FILE_ALLOCATED_RANGE_BUFFER asked{{}, {}}, told[64];
  LARGE_INTEGER end;
  if (!GetFileSizeEx(file_.Get(), &end)) ThrowLastError(Cannot::kLookAt, path_);
  std::vector<Extent> parts;
  while (asked.FileOffset.QuadPart < end.QuadPart) {
    asked.Length.QuadPart = end.QuadPart - asked.FileOffset.QuadPart;
    DWORD bytes = 0;
    const bool all = DeviceIoControl(file_.Get(), FSCTL_QUERY_ALLOCATED_RANGES, &asked,
                                     sizeof asked, told, sizeof told, &bytes, nullptr);
    if (!all && GetLastError() != ERROR_MORE_DATA) {
      return {{0, static_cast<uint64_t>(end.QuadPart)}};
    }
    const size_t count = bytes / sizeof told[0];
    for (size_t i = 0; i < count; ++i) {
      parts.push_back({static_cast<uint64_t>(told[i].FileOffset.QuadPart),
                       static_cast<uint64_t>(told[i].Length.QuadPart)});
    }
    if (all || count == 0) break;
    asked.FileOffset.QuadPart = static_cast<LONGLONG>(parts.back().offset + parts.back().size);
  }
  return parts;
}

// How it is stored comes first: a read-only file keeps its kind.
void Win32RandomFile::SetAttributes(uint32_t attributes) {
  NtBasic basic;
  NTSTATUS status = NtQuery(file_, kBasicInformation, basic);
  if (status < 0) throw NtError(status, Cannot::kChange, path_);
  DWORD unused = 0;
  if ((attributes ^ basic.attributes) & kSparse) {
    FILE_SET_SPARSE_BUFFER sparse{(attributes & kSparse) != 0};
    DeviceIoControl(file_.Get(), FSCTL_SET_SPARSE, &sparse, sizeof sparse, nullptr, 0, &unused,
                    nullptr);
  }
  if ((attributes ^ basic.attributes) & kCompressed) {
    USHORT format = attributes & kCompressed ? COMPRESSION_FORMAT_DEFAULT : COMPRESSION_FORMAT_NONE;
    DeviceIoControl(file_.Get(), FSCTL_SET_COMPRESSION, &format, sizeof format, nullptr, 0, &unused,
                    nullptr);
  }
  basic = WithAttributes(basic, attributes);
  status = NtSet(file_, kBasicInformation, basic);
  if (status < 0) throw NtError(status, Cannot::kChange, path_);
}

}  // namespace quellix
