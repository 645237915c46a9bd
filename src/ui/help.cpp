#include "ui/help.h"

#include <shlwapi.h>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/frm_help.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

bool IsThere(const std::string& path) {
  return GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

// In the language of the windows, "help.pt_BR.htm", where there is such a one.
std::string Manual() {
  wchar_t program[32768] = {};
  GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
  const std::string folder = std::string(FolderPart(Narrow(program))) + "Help\\";
  const std::string tag(Spoken().Field("Language"));
  const std::string own = folder + "help." + tag + ".htm";
  return !tag.empty() && IsThere(own) ? own : folder + "help.htm";
}

// "file:///C:/Program%20Files/Quellix/Help/help.htm#main"
std::string AddressOf(std::string_view file, const char* topic) {
  std::string address = "file:///";
  for (const char letter : file) {
    if (letter == '\\') {
      address += '/';
    } else if (std::string_view(" %#?").find(letter) != std::string_view::npos) {
      constexpr char kDigits[] = "0123456789ABCDEF";
      address += {'%', kDigits[letter >> 4], kDigits[letter & 15]};
    } else {
      address += letter;
    }
  }
  return address + '#' + topic;
}

// How pages are opened: "C:\Browser\browser.exe" "%1"; "" when only the shell knows.
std::string CommandForPages() {
  static LazyLibrary shlwapi(L"shlwapi.dll");
  const auto query = shlwapi.Find<decltype(&AssocQueryStringW)>("AssocQueryStringW");
  wchar_t command[2048] = {};
  DWORD size = static_cast<DWORD>(std::size(command));
  if (query(ASSOCF_NONE, ASSOCSTR_COMMAND, L".htm", L"open", command, &size) != S_OK) return "";
  return Narrow(command);
}

bool Start(const std::string& command) {
  std::wstring line = Wide(command);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                      &process)) {
    return false;
  }
  const UniqueHandle own_process(process.hProcess), own_thread(process.hThread);
  return true;
}

// The shell would drop the anchor of a file's address, so the browser is called directly.
bool OpenAt(const std::string& address) {
  const std::string command = CommandForPages();
  if (command.find("%1") == std::string::npos) return false;
  return Start(ReplaceNoCase(command, "%1", address));
}

}  // namespace

void ShowHelp(HWND owner, const char* topic) {
  const std::string manual = Manual();
  WindowPrompts prompts;
  prompts.Attach(owner);
  if (!IsThere(manual)) {
    return prompts.Inform(
        Tr("The manual is missing: %1. Installing Quellix again brings it back.", manual));
  }
  static FrmHelp window;
  const std::string address = AddressOf(manual, topic);
  if (window.Show(Wide(address)) || OpenAt(address) || OpenByShell(owner, manual)) return;
  prompts.Inform(Tr("Windows has no program to open %1 with. Open it in a browser.", manual));
}

}  // namespace quellix
