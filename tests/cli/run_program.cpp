#include <cstdio>
#include <stdexcept>

#include "cli/console_fixture.h"

namespace quellix {

// What differs by machine: where the program is, how a shell wants a command, and how its status
// holds the exit code.
std::string QuellixctlPath();
std::string ShellCommand(const std::string& command);
int ExitCodeOf(int status);

ProgramResult RunQuellixctl(const std::vector<std::string>& arguments) {
  std::string command = "\"" + QuellixctlPath() + "\"";
  for (const std::string& argument : arguments) command += " \"" + argument + "\"";
  FILE* const pipe = popen(ShellCommand(command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  ProgramResult result;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    if (c != '\r') result.output += static_cast<char>(c);
  }
  result.exit_code = ExitCodeOf(pclose(pipe));
  return result;
}

}  // namespace quellix
