#include "platform/win32/win32_machine.h"

#include "platform/path.h"

namespace quellix {

Win32Machine::Win32Machine(const std::string& program_folder) {
  const std::string named(WithoutBackslash(program_folder));
  folders_ = named.empty() ? FindProgramFolders() : ProgramFolders{named, named};
}

}  // namespace quellix
