#include "platform/win32/win32_machine.h"

#include <windows.h>

#include "platform/path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

std::string ExecutableFolder() {
  const std::string path = Narrow(GrowingText([](wchar_t* text, uint32_t size) {
    const DWORD length = GetModuleFileNameW(nullptr, text, size);
    return length < size ? length : size * 2;  // cut off: it does not tell the size it needs
  }));
  return std::string(WithoutBackslash(FolderPart(path)));
}

}  // namespace

Win32Machine::Win32Machine(const std::string& program_folder)
    : program_folder_(program_folder.empty() ? ExecutableFolder()
                                             : WithoutBackslash(program_folder)) {}

}  // namespace quellix
