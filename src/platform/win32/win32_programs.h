#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/session.h"

namespace quellix {

// The processes of this session, or of all, with a file's name, in any case.
enum class Sessions { kThis, kAll };
std::vector<DWORD> ProcessesNamed(std::string_view file_name, Sessions sessions = Sessions::kThis);

// Those that have a file open, as the Restart Manager tells; none where it does not. Never throws.
struct ProcessUsing {
  DWORD id;
  std::string name;  // of its program, as its user knows it
};
std::vector<ProcessUsing> ProcessesUsing(const std::string& path);

// Session::AskToClose, by WM_CLOSE: a program then asks about unsaved work as it does when its user
// closes it. The Restart Manager's own way would end the session for it, and wait for half a minute
// that nobody could stop.
std::unique_ptr<ClosingPrograms> AskProgramsToClose(const ProgramUse& use);

}  // namespace quellix
