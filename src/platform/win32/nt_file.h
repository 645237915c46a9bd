#pragma once

#include <windows.h>
// After windows.h, whose types it uses.
#include <winternl.h>

#include <functional>
#include <string_view>

#include "platform/file_system.h"
#include "platform/win32/unique.h"

namespace quellix {

constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// What a file or folder is opened for, in the words of NtCreateFile. SYNCHRONIZE, and all that
// waiting for each call needs, is added.
struct NtAsk {
  ACCESS_MASK access = 0;
  ULONG share = kShareAll;
  ULONG options = FILE_OPEN_REPARSE_POINT;  // the entry itself, a link not followed
  ULONG disposition = FILE_OPEN;
  ULONG object = OBJ_CASE_INSENSITIVE;
  ULONG attributes = FILE_ATTRIBUTE_NORMAL;  // of what is made
};

// `text` as the system's own calls take it; it must outlive the result.
UNICODE_STRING Counted(std::wstring_view text);

// Opens `name` in the open `folder`, taken literally: no device has a name here, and blanks and
// dots at its end are part of it. "" is the folder itself. With a null folder the name is a full
// path of the object manager ("\??\C:\Temp").
NTSTATUS NtOpen(HANDLE folder, std::wstring_view name, const NtAsk& ask, UniqueFile& file);

// The statuses with a meaning of their own here.
constexpr NTSTATUS kNameNotFound = static_cast<NTSTATUS>(0xC0000034);
constexpr NTSTATUS kNoSuchFile = static_cast<NTSTATUS>(0xC000000F);
constexpr NTSTATUS kNoMoreFiles = static_cast<NTSTATUS>(0x80000006);
constexpr NTSTATUS kAccessDenied = static_cast<NTSTATUS>(0xC0000022);
constexpr NTSTATUS kSharingViolation = static_cast<NTSTATUS>(0xC0000043);
constexpr NTSTATUS kDeletePending = static_cast<NTSTATUS>(0xC0000056);
constexpr NTSTATUS kNotAFolder = static_cast<NTSTATUS>(0xC0000103);
constexpr NTSTATUS kCannotDelete = static_cast<NTSTATUS>(0xC0000121);

// FileNetworkOpenInformation.
struct NtOverview {
  int64_t created = 0, last_access = 0, last_write = 0, changed = 0;
  uint64_t allocated = 0, size = 0;
  ULONG attributes = 0, unused = 0;
};

// What the entry itself is like, without opening it. Fails for files whose holder shares nothing.
NTSTATUS NtLook(HANDLE folder, std::wstring_view name, NtOverview& overview);
// As the program's own; not for a reparse point, of which it does not tell whether it is a link.
FileInfo ToFileInfo(const NtOverview& overview);

// Whether a call was refused because this system or volume knows no such request.
bool IsUnknownRequest(NTSTATUS status);

// Query and set what the system keeps of an open file, by the number of the documented class.
template <typename Info>
NTSTATUS NtQuery(const UniqueFile& file, int information_class, Info& info) {
  IO_STATUS_BLOCK io;
  return NtQueryInformationFile(file.Get(), &io, &info, sizeof info,
                                static_cast<FILE_INFORMATION_CLASS>(information_class));
}
template <typename Info>
NTSTATUS NtSet(const UniqueFile& file, int information_class, Info& info,
               size_t size = sizeof(Info)) {
  IO_STATUS_BLOCK io;
  return NtSetInformationFile(file.Get(), &io, &info, static_cast<ULONG>(size),
                              static_cast<FILE_INFORMATION_CLASS>(information_class));
}

// FileBasicInformation. Zeros mean "as it is" when it is set.
struct NtBasic {
  int64_t created = 0, last_access = 0, last_write = 0, changed = 0;
  ULONG attributes = 0, unused = 0;
};
// FileStandardInformation.
struct NtStandard {
  int64_t allocated, size;
  ULONG links;
  BOOLEAN is_delete_pending, is_folder;
};
constexpr int kBasicInformation = 4, kStandardInformation = 5, kRenameInformation = 10,
              kDispositionInformation = 13, kStreamInformation = 22, kDispositionEx = 64,
              kRenameEx = 65;

// `basic` with the bits a user can set taken from `attributes`; the times are left as they are.
NtBasic WithAttributes(const NtBasic& basic, uint32_t attributes);

// Clears the read-only attribute of an open file (FILE_READ_ATTRIBUTES, FILE_WRITE_ATTRIBUTES) and
// gives it back, unless it is told to leave it, when it is destroyed.
class ReadOnlyLifted {
 public:
  explicit ReadOnlyLifted(const UniqueFile& file);
  ~ReadOnlyLifted();
  ReadOnlyLifted(const ReadOnlyLifted&) = delete;
  ReadOnlyLifted& operator=(const ReadOnlyLifted&) = delete;
  bool lifted() const { return lifted_; }
  void Leave() { lifted_ = false; }

 private:
  const UniqueFile& file_;
  NtBasic basic_;
  bool lifted_ = false;
};

// What an open file or folder is. Throws Error, naming `shown`.
FileId IdOfOpen(const UniqueFile& file, std::string_view shown);

// Whether an open entry stands for another name: a junction or a symbolic link.
bool IsOpenLink(const UniqueFile& file);

// One entry of a listing, valid during the visit only.
struct NtEntry {
  std::wstring_view name;
  FileInfo info;
  uint64_t number = 0;  // of the file on its volume; 0 where the system does not tell
};

// Visits the entries of an open folder (FILE_LIST_DIRECTORY), "." and ".." included, or the one of
// the name `only`, until `visit` returns false. A handle lists once. kNoSuchFile when there is
// none.
NTSTATUS NtList(const UniqueFile& folder, std::wstring_view only,
                const std::function<bool(const NtEntry&)>& visit);

}  // namespace quellix
