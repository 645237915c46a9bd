#include <cstdio>
#include <fstream>

#include "cli/console_fixture.h"

namespace quellix {

// What differs by machine: where the program is, and how a command is run with all its output in a
// file. Into a file rather than a pipe: what Windows starts in the background keeps a pipe open.
std::string QuellixctlPath();
int RunInto(const std::string& command, const std::string& file);

ProgramResult RunQuellixctl(const Names& arguments) {
  std::string command = "\"" + QuellixctlPath() + "\"";
  for (const std::string& argument : arguments) command += " \"" + argument + "\"";
  const std::string file = OutputFile();
  ProgramResult result;
  result.exit_code = RunInto(command, file);
  std::ifstream output(file, std::ios::binary);
  result.output.assign(std::istreambuf_iterator<char>(output), {});
  std::erase(result.output, '\r');
  output.close();
  std::remove(file.c_str());
  return result;
}

}  // namespace quellix
