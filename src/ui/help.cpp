#include "ui/help.h"

#include <shlwapi.h>

#include <filesystem>

#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"
#include "ui/window_prompts.h"

namespace quellix {
namespace {

std::filesystem::path Manual() {
  wchar_t program[32768] = {};
  GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
  return std::filesystem::path(program).parent_path() / L"Help" / L"help.htm";
}

// "file:///C:/Program%20Files/Quellix/Help/help.htm#main"
std::string AddressOf(const std::filesystem::path& file, const char* topic) {
  std::string address = "file:///";
  for (const char letter : Narrow(file.wstring())) {
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
  const std::filesystem::path manual = Manual();
  WindowPrompts prompts;
  prompts.Attach(owner);
  std::error_code error;
  if (!std::filesystem::exists(manual, error)) {
    return prompts.Inform("The manual is missing: " + Narrow(manual.wstring()));
  }
  if (OpenAt(AddressOf(manual, topic)) || OpenByShell(owner, Narrow(manual.wstring()))) return;
  prompts.Inform("Windows has no program to open " + Narrow(manual.wstring()));
}

}  // namespace quellix
