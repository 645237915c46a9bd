#pragma once

#include <string>

#include "platform/machine.h"
#include "platform/win32/program_folders.h"
#include "platform/win32/win32_file_system.h"
#include "platform/win32/win32_registry.h"
#include "platform/win32/win32_session.h"
#include "platform/win32/win32_shell.h"
#include "platform/win32/win32_system.h"
#include "platform/win32/win32_system_cleaners.h"
#include "platform/win32/win32_url_cache.h"

namespace quellix {

// The Windows the program runs on. Use it on one thread.
class Win32Machine {
 public:
  // "" takes the folders of the running program, see FindProgramFolders.
  explicit Win32Machine(const std::string& program_folder = "");
  Win32Machine(const Win32Machine&) = delete;
  Win32Machine& operator=(const Win32Machine&) = delete;

  Machine machine() {
    return {files_,  registry_, shell_,    url_cache_,   profile_,
            system_, session_,  cleaners_, folders_.own, folders_.installed};
  }

 private:
  ProgramFolders folders_;
  Win32Com com_;
  Win32FileSystem files_{com_};
  Win32Registry registry_;
  Win32Shell shell_{com_};
  Win32UrlCache url_cache_;
  Win32System system_;
  Win32Session session_;
  Win32SystemCleaners cleaners_;
  IniFiles profile_{files_, system_};
};

}  // namespace quellix
