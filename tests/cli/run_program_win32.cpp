#include <windows.h>

#include <cstdio>

#include "cli/console_fixture.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

// A machine that is busy to its limits may fail to start a program, which says nothing about the
// program: it is tried again.
bool Start(const std::string& command, HANDLE output, PROCESS_INFORMATION& process) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = start.hStdError = output;
  for (int tries = 0; tries < 5; ++tries) {
    std::wstring line = Wide(command);
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                       &process))
      return true;
    std::printf("%s cannot be started (error %lu)\n", command.c_str(), GetLastError());
    Sleep(1000);
  }
  return false;
}

}  // namespace

std::string QuellixctlPath() { return "C:\\Program Files\\Quellix\\quellixctl.exe"; }

int RunInto(const std::string& command, const std::string& file) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const HANDLE output = CreateFileW(Wide(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                    CREATE_ALWAYS, 0, nullptr);
  PROCESS_INFORMATION process{};
  DWORD exit_code = static_cast<DWORD>(-1);
  if (Start(command, output, process)) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &exit_code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  CloseHandle(output);
  return static_cast<int>(exit_code);
}

// Another one each time: what Windows starts in the background may keep the last one open.
std::string OutputFile() {
  static int number = 0;
  return "C:\\QxOutput" + std::to_string(++number) + ".txt";
}

Names MachineArguments(TestMachine& machine) {
  return {"--settings", machine.machine().program_folder};
}

void StoreMachine(TestMachine&) {}

}  // namespace quellix
