#include "platform/path.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_folder.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_random_file.h"
#include "platform/win32/win32_text.h"

namespace quellix {
// What of an old file the new one takes over; nothing of what is not there.
UniqueFile Win32Folder::OpenReplaced(std::string_view name) {
  if (!IsName(name)) throw WindowsError(ERROR_INVALID_NAME, Cannot::kWrite, At(name));
  const std::optional<FileInfo> info = LookAt(Wide(name));
  if (!info) return {};
  if (info->is_link || info->is_folder || (info->attributes & kReadOnly)) {
    throw WindowsError(ERROR_ACCESS_DENIED, Cannot::kWrite, At(name));
  }
  return OpenEntry(Cannot::kWrite, name,
                   {.access = READ_CONTROL | FILE_READ_ATTRIBUTES,
                    .options = FILE_NON_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT});
}

void Win32Folder::WriteWhole(std::string_view name, std::string_view bytes) {
  UniqueFile old = OpenReplaced(name);
  const std::string temporary = TemporaryName();
  try {
    auto file = OpenRandomFile(folder_, Wide(temporary), At(name), OpenMode::kCreateNew);
    if (old) file->TakeAccessListOf(old);
    file->Write(0, bytes);
    if (old) file->TakeLooksOf(old);
    file->Flush();
    file.reset();
    old.Reset();  // nobody may have it open
    GiveName(Cannot::kWrite, At(name), temporary, name, IfThere::kReplace);
  } catch (const Error&) {
    UniqueFile left;
    Try(Wide(temporary), {.access = DELETE, .options = FILE_DELETE_ON_CLOSE}, left);
    throw;
  }
  Flush();
}

}  // namespace quellix
