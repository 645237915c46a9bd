#include <iostream>
#include <map>

#include "cli/command_table.h"
#include "cli/commands.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kAbout =
    "Commands that remove take --preview, which lists what a run would remove\n"
    "and changes nothing; search and registry remove nothing without --delete.";

constexpr struct {
  int code;
  const char* what;
} kExits[] = {
    {kDone, "Done."},
    {kFailed, "An error, stopped or not begun."},
    {kWrongUsage, "Wrong usage."},
    {kSomeFilesStayed, "Some files stayed, or went without the backup they were to have."}};

// As text that begins no request.
std::string Roff(const std::string& text) {
  std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) {
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else
      escaped += c;
  }
  return escaped;
}

void PrintSection(const char* title) { std::cout << ".SH \"" << title << "\"\n"; }

void PrintRow(const std::string& tag, const std::string& what) {
  std::cout << ".TP\n" << tag << "\n" << Roff(what) << "\n";
}

// A choice that is longer than a line may end between its words.
std::string ValueOf(const OptionRow& option) {
  constexpr size_t kLine = 60;
  const bool fits = option.value.size() <= kLine;
  return Roff(fits ? option.value : ReplaceNoCase(option.value, "|", " | "));
}

std::string TagOf(const OptionRow& option) {
  std::string tag;
  for (const std::string& name : option.names)
    tag += (tag.empty() ? "\\fB" : ", \\fB") + Roff(name) + "\\fR";
  if (option.value.empty()) return tag;
  return tag + (tag.empty() ? "" : " ") + "\\fI" + ValueOf(option) + "\\fR" +
         (option.takes_several ? "..." : "");
}

// Each heading that options of commands stand under, with its options.
using Shared = std::map<std::string, std::vector<OptionRow>>;

// What many commands take stands once, behind them.
bool IsShared(const OptionRow& option) { return option.heading.starts_with("The "); }

void AddShared(const CommandRow& command, Shared& shared) {
  Shared own;
  for (const OptionRow& option : command.options)
    if (IsShared(option)) own[option.heading].push_back(option);
  for (auto& [heading, options] : own) shared[heading] = options;
}

void PrintOptions(const CommandRow& command) {
  std::map<std::string, bool> others;
  for (const OptionRow& option : command.options) {
    if (IsShared(option))
      others[option.heading] = true;
    else
      PrintRow(TagOf(option), option.what);
  }
  if (others.empty()) return;
  std::string names;
  for (const auto& [heading, is_there] : others)
    names += (names.empty() ? "\"" : " and \"") + heading + "\"";
  std::cout << ".PP\nAnd those of " << names << ".\n";
}

void PrintCommand(const CommandRow& command) {
  std::cout << ".SS \"quellixctl " << command.name;
  for (const OptionRow& argument : command.arguments) {
    const std::string value = Roff(argument.value) + (argument.takes_several ? "..." : "");
    std::cout << " " << (argument.is_required ? value : "[" + value + "]");
  }
  std::cout << "\"\n" << Roff(command.what) << ".\n";
  for (const OptionRow& argument : command.arguments) PrintRow(TagOf(argument), argument.what);
  PrintOptions(command);
}

int PrintManual(const CLI::App& app) {
  const std::vector<CommandRow> table = ReadCommandTable(app);
  std::cout << ".TH QUELLIXCTL 1 \"\" Quellix \"User Commands\"\n";
  PrintSection("NAME");
  std::cout << "quellixctl \\- " << Roff(table[0].what) << "\n";
  PrintSection("SYNOPSIS");
  std::cout << "\\fBquellixctl\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]...\n";
  PrintSection("DESCRIPTION");
  std::cout << Roff(kAbout) << "\n";
  PrintSection("OPTIONS");
  PrintOptions(table[0]);
  PrintSection("COMMANDS");
  Shared shared;
  for (size_t i = 1; i < table.size(); ++i) {
    PrintCommand(table[i]);
    AddShared(table[i], shared);
  }
  for (const auto& [heading, options] : shared) {
    PrintSection(heading.c_str());
    for (const OptionRow& option : options) PrintRow(TagOf(option), option.what);
  }
  PrintSection("EXIT STATUS");
  for (const auto& row : kExits) PrintRow("\\fB" + std::to_string(row.code) + "\\fR", row.what);
  return kDone;
}

}  // namespace

void AddManualCommand(ConsoleCommands& commands) {
  const CLI::App& app = commands.app();
  commands.AddPlain("manual", "Print the manual page, for man",
                    [&app] { return PrintManual(app); });
}

}  // namespace quellix
