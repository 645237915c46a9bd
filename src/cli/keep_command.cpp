#include <iostream>

#include "cli/commands.h"
#include "settings/keep_file.h"

namespace quellix {
namespace {

using Lines = std::vector<std::string>;

// A line that keeps nothing is named on standard error.
int List(const Machine& machine) {
  int code = kDone;
  for (const std::string& text : ReadKeepFile(machine)) {
    std::cout << text << '\n';
    const KeepLine line = ParseKeepLine(machine.system, text);
    if (line.fault.empty()) continue;
    std::cerr << text << ": " << line.fault << '\n';
    code = kFailed;
  }
  std::cout << std::flush;
  return code;
}

// The first line that is refused ends it; those before it hold.
int Change(const Lines& lines, const Machine& machine,
           std::string (*change)(const Machine& machine, std::string_view line)) {
  for (const std::string& line : lines) {
    const std::string refusal = change(machine, line);
    if (!refusal.empty()) return Fail("\"" + line + "\": " + refusal, kWrongUsage);
  }
  return kDone;
}

}  // namespace

void AddKeepCommands(ConsoleCommands& commands) {
  CLI::App& keep = commands.AddGroup("keep", "What nothing removes: files, keys, cookies' sites");
  commands.AddTo(keep, "list", "List the lines of keep.txt", List);
  const auto lines = std::make_shared<Lines>();
  const auto add = [&](const char* name, const char* what, auto change) {
    commands
        .AddTo(keep, name, what,
               [=](const Machine& machine) { return Change(*lines, machine, change); })
        .add_option("LINE", *lines,
                    "A path, a mask, HKEY_...\\KEY, HKEY_...\\KEY|VALUE or site:HOST")
        ->required()
        ->option_text(" ");
  };
  add("add", "Keep something", AddToKeepFile);
  add("remove", "Keep it no longer", RemoveFromKeepFile);
}

}  // namespace quellix
