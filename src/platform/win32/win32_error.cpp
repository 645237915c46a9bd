#include "platform/win32/win32_error.h"

// After windows.h, whose types it uses.
#include <winternl.h>

#include <string>

#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

Error::Kind KindOf(DWORD code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_NOT_READY:
    case ERROR_KEY_DELETED:
      return Error::Kind::kMissing;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_PRIVILEGE_NOT_HELD:
      return Error::Kind::kDenied;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_BUSY:
    case ERROR_DELETE_PENDING:
      return Error::Kind::kInUse;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return Error::Kind::kFull;
    case ERROR_DIR_NOT_EMPTY:
      return Error::Kind::kNotEmpty;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return Error::Kind::kExists;
    case ERROR_NOT_SUPPORTED:
    case ERROR_CALL_NOT_IMPLEMENTED:
      return Error::Kind::kNotAvailable;
    default:
      return Error::Kind::kOther;
  }
}

// Where the system's own translation says less than the status.
DWORD CodeOf(LONG status) {
  switch (static_cast<ULONG>(status)) {
    case 0xC0000056:
      return ERROR_DELETE_PENDING;
    case 0xC0000024:  // a device or a pipe where a file should be
      return ERROR_ACCESS_DENIED;
    default:
      return RtlNtStatusToDosError(status);
  }
}

Sentence SystemText(DWORD code) {
  wchar_t text[512];
  DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, code, 0, text, ARRAYSIZE(text), nullptr);
  while (length > 0 && text[length - 1] <= L' ') --length;
  if (length == 0) return Say("Windows error %1.", std::to_string(code));
  const std::string narrow = Narrow({text, length});
  return {narrow, narrow};
}

}  // namespace

Error WindowsError(DWORD code, const char* cannot, std::string_view object) {
  return Error(KindOf(code), Say(cannot, object, SystemText(code)));
}

Error NtError(LONG status, const char* cannot, std::string_view object) {
  return WindowsError(CodeOf(status), cannot, object);
}

bool IsMissing(LONG status) {
  return status < 0 && KindOf(CodeOf(status)) == Error::Kind::kMissing;
}

void ThrowLastError(const char* cannot, std::string_view object) {
  throw WindowsError(GetLastError(), cannot, object);
}

}  // namespace quellix
