#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace quellix {

// An option of a command, or an argument, as the help tells it.
struct OptionRow {
  std::vector<std::string> names;    // "-h", "--help"; none of an argument
  std::string value;                 // what stands for its value, as "FILE"; "" of a flag
  std::vector<std::string> choices;  // all its values, where the help lists them
  std::string what, heading;
  bool is_required = false;
  bool takes_several = false;  // values behind one name
};

struct CommandRow {
  std::string name;  // with its group, as "keep add"; "" of the program
  std::string what;
  std::vector<std::string> commands;  // of a group
  std::vector<OptionRow> options, arguments;
};

// The program and all its commands, each group before its own: what --help is made of.
std::vector<CommandRow> ReadCommandTable(const CLI::App& app);

}  // namespace quellix
