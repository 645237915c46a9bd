#include <algorithm>
#include <atomic>
#include <cstddef>

#include "platform/win32/stand_in.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_folder.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

// Removal and renaming by handle.

namespace quellix {
namespace {

// Of FileDispositionInformationEx: the name goes with our own handle, whoever else has the file
// open, and the read-only attribute is no hindrance.
constexpr ULONG kAtOnce = 0x1 | 0x2 | 0x10;

// Of FileRenameInformationEx, the first also of the older call.
constexpr ULONG kReplaceIfExists = 0x1, kReplaceWhatIsOpen = 0x2, kReplaceReadOnly = 0x40;

// FileRenameInformation and its later form.
struct NewName {
  ULONG flags;
  HANDLE folder;
  ULONG bytes;
  wchar_t name[256];
};

constexpr size_t kSmallestNewName = 24;  // bytes, whatever the name

// False from the first time on that this Windows does not know a request (before Windows 10).
std::atomic<bool> knows_removal_at_once = true;

bool IsUnknownToAll(NTSTATUS status) {
  return static_cast<ULONG>(status) == 0xC0000002 || static_cast<ULONG>(status) == 0xC0000003;
}

NTSTATUS MarkForRemoval(const UniqueFile& file) {
  BOOLEAN removes = TRUE;
  return NtSet(file, kDispositionInformation, removes);
}

// The system says "access denied" of a program that runs, or of another file that is mapped.
Error RemovalError(NTSTATUS status, const std::string& shown) {
  if (status == kCannotDelete) return WindowsError(ERROR_USER_MAPPED_FILE, Cannot::kRemove, shown);
  return NtError(status, Cannot::kRemove, shown);
}

}  // namespace

void Win32Folder::RemoveFile(std::string_view name) { Remove(name, FILE_NON_DIRECTORY_FILE); }

void Win32Folder::RemoveFolder(std::string_view name) {
  RefuseFollowedLink(folder_, NameFor(Cannot::kRemove, name), Cannot::kRemove, At(name));
  Remove(name, FILE_DIRECTORY_FILE);
}

// Where the name goes with the last handle alone, no other may be open.
void Win32Folder::RequireRemovable(std::string_view name) {
  const bool goes_at_once = removes_at_once_ && knows_removal_at_once && !IsStandIn();
  UniqueFile file;
  const NTSTATUS status = Try(NameFor(Cannot::kRemove, name),
                              {.access = DELETE, .share = goes_at_once ? kShareAll : 0}, file);
  if (status < 0) throw NtError(status, Cannot::kRemove, At(name));
}

void Win32Folder::Remove(std::string_view name, ULONG kind) {
  const std::wstring wide = NameFor(Cannot::kRemove, name);
  if (RemoveAtOnce(wide, name, kind)) return;
  RemoveWithLastUser(wide, name, kind);
  CheckGone(wide, name, kind);
}

// False when this system or volume has no such removal.
bool Win32Folder::RemoveAtOnce(std::wstring_view wide, std::string_view name, ULONG kind) {
  if (!removes_at_once_ || !knows_removal_at_once) return false;
  UniqueFile file;
  NTSTATUS status = Try(wide, {.access = DELETE, .options = kind | FILE_OPEN_REPARSE_POINT}, file);
  if (status < 0) throw NtError(status, Cannot::kRemove, At(name));
  ULONG how = kAtOnce;
  status = NtSet(file, kDispositionEx, how);
  if (status >= 0) return true;
  if (!IsUnknownRequest(status)) throw RemovalError(status, At(name));
  removes_at_once_ = false;
  if (IsUnknownToAll(status)) knows_removal_at_once = false;
  return false;
}

// The name goes with the last handle. Nobody else may have one, and so it is ours: opened by
// others, the file stays.
void Win32Folder::RemoveWithLastUser(std::wstring_view wide, std::string_view name, ULONG kind) {
  UniqueFile file;
  const bool is_folder = kind == FILE_DIRECTORY_FILE;
  // Opened to go with its handle, a folder would say nothing of what is left in it.
  const ULONG goes = is_folder ? 0 : FILE_DELETE_ON_CLOSE;
  NTSTATUS status = Try(
      wide, {.access = DELETE, .share = 0, .options = kind | goes | FILE_OPEN_REPARSE_POINT}, file);
  if (status >= 0 && is_folder) status = MarkForRemoval(file);
  if (status >= 0) return;
  if (status != kCannotDelete) throw NtError(status, Cannot::kRemove, At(name));
  file.Reset();
  RemoveReadOnly(wide, name, kind);
}

// A file with further names gets the attribute back, since it is theirs as well.
void Win32Folder::RemoveReadOnly(std::wstring_view wide, std::string_view name, ULONG kind) {
  UniqueFile file;
  NTSTATUS status = Try(wide,
                        {.access = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                         .share = 0,
                         .options = kind | FILE_OPEN_REPARSE_POINT},
                        file);
  if (status < 0) throw NtError(status, Cannot::kRemove, At(name));
  ReadOnlyLifted lifted(file);
  if (!lifted.lifted()) throw RemovalError(kCannotDelete, At(name));
  NtStandard standard{};
  NtQuery(file, kStandardInformation, standard);
  status = MarkForRemoval(file);
  if (status < 0) throw RemovalError(status, At(name));
  if (standard.links <= 1) lifted.Leave();
}

// Whoever only looks at a file does not hinder its removal, and keeps its name all the same.
void Win32Folder::CheckGone(std::wstring_view wide, std::string_view name, ULONG kind) {
  if (IsStandIn() && IsWhereItWasOpened(folder_, FinalPathHere())) return;
  UniqueFile left;
  const NTSTATUS status =
      Try(wide, {.access = FILE_READ_ATTRIBUTES, .options = kind | FILE_OPEN_REPARSE_POINT}, left);
  if (IsMissing(status)) return;
  RefuseMovedFolder(folder_, FinalPathHere(), Cannot::kRemove, At(name));
  throw WindowsError(ERROR_SHARING_VIOLATION, Cannot::kRemove, At(name));
}

NTSTATUS Win32Folder::SetName(const UniqueFile& file, std::wstring_view to, bool replace) {
  NewName name{};
  if (to.size() > std::size(name.name)) return static_cast<NTSTATUS>(0xC0000033);
  name.folder = folder_.Get();
  name.bytes = static_cast<ULONG>(to.size() * sizeof(wchar_t));
  to.copy(name.name, to.size());
  const size_t size = std::max(offsetof(NewName, name) + name.bytes, kSmallestNewName);
  if (replace) {
    name.flags = kReplaceIfExists | kReplaceWhatIsOpen | kReplaceReadOnly;
    const NTSTATUS status = NtSet(file, kRenameEx, name, size);
    if (!IsUnknownRequest(status)) return status;
    name.flags = kReplaceIfExists;
  }
  return NtSet(file, kRenameInformation, name, size);
}

// Flushing needs the right to write, which a read-only file gives to nobody.
NTSTATUS Win32Folder::FlushFile(std::wstring_view name) {
  const NtAsk ask{.access = FILE_APPEND_DATA,
                  .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT};
  UniqueFile writable, changed;
  NTSTATUS status = Try(name, ask, writable);
  if (status == kAccessDenied &&
      Try(name, {.access = FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES}, changed) >= 0) {
    const ReadOnlyLifted lifted(changed);
    status = Try(name, ask, writable);
  }
  if (status >= 0) FlushFileBuffers(writable.Get());
  return status;
}

// The older call says "access denied" of what is read-only and of what someone has open.
NTSTATUS Win32Folder::ReplaceReadOnly(const UniqueFile& file, std::wstring_view to) {
  UniqueFile old;
  NTSTATUS status = Try(to,
                        {.access = DELETE | FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                         .share = 0,
                         .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT},
                        old);
  if (status < 0) return status == kSharingViolation ? status : kAccessDenied;
  NtBasic basic;
  NtQuery(old, kBasicInformation, basic);
  if (!(basic.attributes & FILE_ATTRIBUTE_READONLY)) return kAccessDenied;
  NtBasic writable = WithAttributes(basic, basic.attributes & ~ULONG{FILE_ATTRIBUTE_READONLY});
  NtSet(old, kBasicInformation, writable);
  old.Reset();  // nobody may have it open
  status = SetName(file, to, true);
  if (status < 0 && Try(to, {.access = FILE_WRITE_ATTRIBUTES}, old) >= 0) {
    writable = WithAttributes(basic, basic.attributes);
    NtSet(old, kBasicInformation, writable);
  }
  return status;
}

void Win32Folder::Rename(std::string_view from, std::string_view to, IfThere if_there) {
  GiveName(Cannot::kRename, At(from), from, to, if_there);
}

void Win32Folder::MoveTo(std::string_view from, Folder& folder, std::string_view to) {
  auto* const open = dynamic_cast<Win32Folder*>(&folder);
  if (open == nullptr) return Folder::MoveTo(from, folder, to);
  Win32Folder& target = *open;
  const std::wstring wide_to = target.NameFor(Cannot::kMove, to);
  RefuseMovedFolder(folder_, FinalPathHere(), Cannot::kMove, At(from));
  RefuseMovedFolder(target.folder_, target.FinalPathHere(), Cannot::kMove, target.At(to));
  const UniqueFile file = OpenEntry(Cannot::kMove, from,
                                    {.access = DELETE | FILE_READ_ATTRIBUTES,
                                     .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT});
  const NTSTATUS status = target.SetName(file, wide_to, false);
  if (status < 0) throw NtError(status, Cannot::kMove, target.At(to));
}

void Win32Folder::GiveName(const char* cannot, const std::string& shown, std::string_view from,
                           std::string_view to, IfThere if_there) {
  const std::wstring wide_from = NameFor(cannot, from), wide_to = NameFor(cannot, to);
  RefuseFollowedLink(folder_, wide_from, cannot, shown);
  RefuseMovedFolder(folder_, FinalPathHere(), cannot, shown);
  UniqueFile file;
  NtBasic basic;
  NTSTATUS status = Try(wide_from, {.access = DELETE | FILE_READ_ATTRIBUTES}, file);
  if (status >= 0) status = NtQuery(file, kBasicInformation, basic);
  const bool replaces =
      if_there == IfThere::kReplace && !(basic.attributes & FILE_ATTRIBUTE_DIRECTORY);
  if (status >= 0 && replaces) status = FlushFile(wide_from);
  if (status >= 0) status = SetName(file, wide_to, replaces);
  if (status == kAccessDenied && replaces) status = ReplaceReadOnly(file, wide_to);
  if (status < 0) throw NtError(status, cannot, shown);
}

}  // namespace quellix
