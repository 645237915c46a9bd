#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "cli/console_fixture.h"

namespace quellix {

// What differs by machine: where the program is, how a shell wants a command, and how its status
// holds the exit code.
std::string QuellixctlPath();
std::string ShellCommand(const std::string& command);
int ExitCodeOf(int status);

ProgramResult RunQuellixctl(const Names& arguments) {
  std::string command = "\"" + QuellixctlPath() + "\"";
  for (const std::string& argument : arguments) command += " \"" + argument + "\"";
  // Into a file rather than a pipe: what Windows starts in the background keeps a pipe open.
  const std::string file = OutputFile();
  ProgramResult result;
  result.exit_code =
      ExitCodeOf(std::system(ShellCommand(command + " > \"" + file + "\" 2>&1").c_str()));
  std::ifstream output(file, std::ios::binary);
  result.output.assign(std::istreambuf_iterator<char>(output), {});
  std::erase(result.output, '\r');
  output.close();
  std::remove(file.c_str());
  return result;
}

}  // namespace quellix
