#include "platform/win32/nt_file.h"

#include <cstring>
#include <vector>

#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"

// Of the documented calls those that the header leaves out.
extern "C" {
NTSTATUS NTAPI NtQueryDirectoryFile(HANDLE file, HANDLE event, PIO_APC_ROUTINE routine,
                                    void* context, IO_STATUS_BLOCK* io, void* buffer, ULONG size,
                                    ULONG information_class, BOOLEAN one, UNICODE_STRING* name,
                                    BOOLEAN restart);
NTSTATUS NTAPI NtQueryFullAttributesFile(OBJECT_ATTRIBUTES* object, void* overview);
}

namespace quellix {
namespace {

constexpr size_t kLongestName = 0x7FFE;  // characters a counted text can hold
constexpr ULONG kListing = 2, kListingWithIds = 38;
constexpr int kIdInformation = 18;  // of GetFileInformationByHandleEx

// The common part of what both listings tell of an entry.
struct Listed {
  ULONG next, index;
  FILETIME created, last_access, last_write, changed;
  LARGE_INTEGER size, allocated;
  ULONG attributes, name_bytes, tag_or_ea_size;
};
constexpr size_t kNameOffset = 68, kIdOffset = 72, kNameOffsetWithIds = 80;

NtEntry Read(const char* entry, ULONG listing) {
  Listed listed;
  std::memcpy(&listed, entry, sizeof listed);
  WIN32_FIND_DATAW found{};
  found.dwFileAttributes = listed.attributes;
  found.dwReserved0 = listed.tag_or_ea_size;
  found.ftLastWriteTime = listed.last_write;
  found.nFileSizeHigh = static_cast<DWORD>(listed.size.HighPart);
  found.nFileSizeLow = listed.size.LowPart;
  NtEntry result{{}, ToFileInfo(found)};
  const bool has_id = listing == kListingWithIds;
  if (has_id) std::memcpy(&result.number, entry + kIdOffset, sizeof result.number);
  result.name = {
      reinterpret_cast<const wchar_t*>(entry + (has_id ? kNameOffsetWithIds : kNameOffset)),
      listed.name_bytes / sizeof(wchar_t)};
  return result;
}

// False when `visit` ended it.
bool VisitAll(const char* entries, ULONG listing,
              const std::function<bool(const NtEntry&)>& visit) {
  while (true) {
    ULONG next;
    std::memcpy(&next, entries, sizeof next);
    if (!visit(Read(entries, listing))) return false;
    if (next == 0) return true;
    entries += next;
  }
}

OBJECT_ATTRIBUTES ObjectIn(HANDLE folder, UNICODE_STRING& name, ULONG attributes) {
  OBJECT_ATTRIBUTES object{};
  object.Length = sizeof object;
  object.RootDirectory = folder;
  object.ObjectName = &name;
  object.Attributes = attributes;
  return object;
}

constexpr ULONG kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                            FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
constexpr ULONG kCarried = FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                           FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_DIRECTORY;

}  // namespace

UNICODE_STRING Counted(std::wstring_view text) {
  const auto bytes = static_cast<USHORT>(text.size() * sizeof(wchar_t));
  return {bytes, bytes, const_cast<wchar_t*>(text.data())};
}

NTSTATUS NtLook(HANDLE folder, std::wstring_view name, NtOverview& overview) {
  UNICODE_STRING counted = Counted(name);
  OBJECT_ATTRIBUTES object = ObjectIn(folder, counted, OBJ_CASE_INSENSITIVE);
  return NtQueryFullAttributesFile(&object, &overview);
}

FileInfo ToFileInfo(const NtOverview& overview) {
  FileInfo info;
  info.attributes = overview.attributes;
  info.is_folder = (overview.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (!info.is_folder) info.size = overview.size;
  info.last_write = overview.last_write;
  return info;
}

NTSTATUS NtOpen(HANDLE folder, std::wstring_view name, const NtAsk& ask, UniqueFile& file) {
  if (name.size() > kLongestName) return static_cast<NTSTATUS>(0xC0000033);  // no such name
  UNICODE_STRING counted = Counted(name);
  OBJECT_ATTRIBUTES object = ObjectIn(folder, counted, ask.object);
  IO_STATUS_BLOCK io;
  HANDLE opened = nullptr;
  const NTSTATUS status = NtCreateFile(&opened, ask.access | SYNCHRONIZE, &object, &io, nullptr,
                                       ask.attributes, ask.share, ask.disposition,
                                       ask.options | FILE_SYNCHRONOUS_IO_NONALERT, nullptr, 0);
  if (status >= 0) file.Reset(opened);
  return status;
}

bool IsUnknownRequest(NTSTATUS status) {
  switch (static_cast<ULONG>(status)) {
    case 0xC0000002:  // not implemented
    case 0xC0000003:  // no such class
    case 0xC000000D:  // invalid parameter
    case 0xC0000010:  // no request for this device
    case 0xC00000BB:  // not supported
      return true;
    default:
      return false;
  }
}

NtBasic WithAttributes(const NtBasic& basic, uint32_t attributes) {
  NtBasic changed;
  changed.attributes = (basic.attributes & kCarried) | (attributes & kSettable);
  if ((changed.attributes & ~ULONG{FILE_ATTRIBUTE_DIRECTORY}) == 0) {
    changed.attributes |= FILE_ATTRIBUTE_NORMAL;
  }
  return changed;
}

ReadOnlyLifted::ReadOnlyLifted(const UniqueFile& file) : file_(file) {
  if (NtQuery(file_, kBasicInformation, basic_) < 0) return;
  if (!(basic_.attributes & FILE_ATTRIBUTE_READONLY)) return;
  NtBasic writable = WithAttributes(basic_, basic_.attributes & ~ULONG{FILE_ATTRIBUTE_READONLY});
  lifted_ = NtSet(file_, kBasicInformation, writable) >= 0;
}

ReadOnlyLifted::~ReadOnlyLifted() {
  if (!lifted_) return;
  NtBasic old = WithAttributes(basic_, basic_.attributes);
  NtSet(file_, kBasicInformation, old);
}

// Some file systems know no number of 128 bits.
FileId IdOfOpen(const UniqueFile& file, std::string_view shown) {
  FileId id;
  static_assert(sizeof id == 24);
  if (GetFileInformationByHandleEx(
          file.Get(), static_cast<FILE_INFO_BY_HANDLE_CLASS>(kIdInformation), &id, sizeof id) &&
      id.is_known()) {
    return id;
  }
  BY_HANDLE_FILE_INFORMATION info;
  if (!GetFileInformationByHandle(file.Get(), &info)) ThrowLastError(Cannot::kLookAt, shown);
  return {info.dwVolumeSerialNumber, {uint64_t{info.nFileIndexHigh} << 32 | info.nFileIndexLow, 0}};
}

bool IsOpenLink(const UniqueFile& file) {
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if (!GetFileInformationByHandleEx(file.Get(), FileAttributeTagInfo, &tag, sizeof tag))
    return false;
  WIN32_FIND_DATAW found{};
  found.dwFileAttributes = tag.FileAttributes;
  found.dwReserved0 = tag.ReparseTag;
  return ToFileInfo(found).is_link;
}

// Some network servers tell no numbers.
NTSTATUS NtList(const UniqueFile& folder, std::wstring_view only,
                const std::function<bool(const NtEntry&)>& visit) {
  std::vector<char> buffer(only.empty() ? 64u << 10 : 2u << 10);  // the most a server may send
  UNICODE_STRING counted = Counted(only);
  ULONG listing = kListingWithIds;
  for (bool first = true;; first = false) {
    const auto read = [&] {
      IO_STATUS_BLOCK io;
      return NtQueryDirectoryFile(folder.Get(), nullptr, nullptr, nullptr, &io, buffer.data(),
                                  static_cast<ULONG>(buffer.size()), listing, FALSE,
                                  only.empty() ? nullptr : &counted, first);
    };
    NTSTATUS status = read();
    if (first && IsUnknownRequest(status)) {
      listing = kListing;
      status = read();
    }
    if (status == kNoMoreFiles && !(first && !only.empty())) return 0;
    if (status != 0) return status;
    if (!VisitAll(buffer.data(), listing, visit)) return 0;
  }
}

}  // namespace quellix
