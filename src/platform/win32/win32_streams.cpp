#include <cstring>
#include <vector>

#include "platform/path.h"
#include "platform/win32/nt_file.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_random_file.h"
#include "platform/win32/win32_text.h"

// A file's further streams. They are opened relative to the open file, whatever its name means by
// now.

namespace quellix {
namespace {

// FILE_STREAM_INFORMATION up to the name.
struct StreamHead {
  ULONG next, name_bytes;
  int64_t size, allocated;
};

constexpr std::wstring_view kData = L":$DATA";

// "Zone.Identifier" from ":Zone.Identifier:$DATA"; "" for the file's own bytes and for what is no
// stream of data.
std::string NameOf(std::wstring_view full) {
  if (!full.starts_with(L':') || !full.ends_with(kData)) return {};
  return Narrow(full.substr(1, full.size() - 1 - kData.size()));
}

}  // namespace

std::vector<StreamInfo> Win32RandomFile::Streams() {
  std::vector<char> buffer(4096);
  IO_STATUS_BLOCK io;
  NTSTATUS status;
  while (true) {
    status =
        NtQueryInformationFile(file_.Get(), &io, buffer.data(), static_cast<ULONG>(buffer.size()),
                               static_cast<FILE_INFORMATION_CLASS>(kStreamInformation));
    if (static_cast<ULONG>(status) != 0x80000005 && static_cast<ULONG>(status) != 0xC0000004) break;
    buffer.resize(buffer.size() * 4);
  }
  if (IsUnknownRequest(status) || io.Information == 0) return {};
  if (status < 0) throw NtError(status, Cannot::kRead, path_);
  std::vector<StreamInfo> streams;
  for (const char* at = buffer.data();;) {
    StreamHead head;
    std::memcpy(&head, at, sizeof head);
    const auto* name = reinterpret_cast<const wchar_t*>(at + sizeof head);
    std::string found = NameOf({name, head.name_bytes / sizeof(wchar_t)});
    if (!found.empty()) streams.push_back({std::move(found), static_cast<uint64_t>(head.size)});
    if (head.next == 0) return streams;
    at += head.next;
  }
}

UniqueFile Win32RandomFile::OpenStream(std::string_view name, bool writes) {
  if (!IsName(name))
    throw WindowsError(ERROR_FILE_NOT_FOUND, Cannot::kOpen, path_ + ":" + std::string(name));
  UniqueFile stream;
  const NTSTATUS status =
      NtOpen(file_.Get(), L":" + Wide(name) + std::wstring(kData),
             {.access = static_cast<ACCESS_MASK>(writes ? FILE_GENERIC_WRITE : FILE_GENERIC_READ),
              .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT,
              .disposition = static_cast<ULONG>(writes ? FILE_OVERWRITE_IF : FILE_OPEN)},
             stream);
  if (status < 0) throw NtError(status, Cannot::kOpen, path_ + ":" + std::string(name));
  return stream;
}

std::string Win32RandomFile::ReadStream(std::string_view name) {
  Win32RandomFile stream(OpenStream(name, false), path_ + ":" + std::string(name));
  std::string bytes(stream.Size(), '\0');
  bytes.resize(stream.Read(0, bytes));
  return bytes;
}

void Win32RandomFile::WriteStream(std::string_view name, std::string_view bytes) {
  DWORD flags = 0;
  if (!GetVolumeInformationByHandleW(file_.Get(), nullptr, 0, nullptr, nullptr, &flags, nullptr,
                                     0) ||
      !(flags & FILE_NAMED_STREAMS)) {
    RandomFile::WriteStream(name, bytes);
  }
  Win32RandomFile stream(OpenStream(name, true), path_ + ":" + std::string(name));
  stream.Write(0, bytes);
}

}  // namespace quellix
