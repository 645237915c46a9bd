#include <windows.h>

// After windows.h, which it needs.
#include <shellapi.h>
#include "cli/console.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_machine.h"

namespace {

std::vector<std::string> Arguments() {
  std::vector<std::string> arguments;
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(
      CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  for (int i = 1; i < count; ++i) {
    arguments.push_back(quellix::ToUtf8(reinterpret_cast<const char16_t*>(words.get()[i])));
  }
  return arguments;
}

// A device that is no console, such as NUL, answers nobody.
bool IsTerminal(DWORD handle) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(handle), &mode) != FALSE;
}

class LiveMachine : public quellix::OpenMachine {
 public:
  explicit LiveMachine(const std::string& settings) : live_(settings) {}
  quellix::Machine machine() override { return live_.machine(); }

 private:
  quellix::Win32Machine live_;
};

}  // namespace

int main() {
  quellix::SearchSystemFolderOnly();
  SetConsoleOutputCP(CP_UTF8);
  return quellix::RunConsole(
      Arguments(), {.works_on_volumes = false,
                    .shows_progress = GetFileType(GetStdHandle(STD_ERROR_HANDLE)) == FILE_TYPE_CHAR,
                    .can_ask = IsTerminal(STD_INPUT_HANDLE) && IsTerminal(STD_ERROR_HANDLE),
                    .open = [](const quellix::MachineOptions& options) {
                      return std::make_unique<LiveMachine>(options.settings);
                    }});
}
