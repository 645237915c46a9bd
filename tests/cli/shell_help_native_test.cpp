#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "cli/console_fixture.h"

namespace quellix {
namespace {

// A command as its --help tells it.
struct Told {
  Names command, options, commands;
};

// The first word of lines of a part, up to a comma or space.
void ReadLine(const std::string& line, const std::string& part, Told& told) {
  const size_t begin = line.find_first_not_of(' ');
  const bool is_row = begin == 2 || begin == 4;
  if (!is_row) return;
  std::istringstream words(line);
  std::string word;
  words >> word;
  if (word.starts_with("-"))
    for (std::istringstream names(word); std::getline(names, word, ',');)
      told.options.push_back(word);
  else if (part == "Subcommands:")
    told.commands.push_back(word);
}

std::vector<Told> AllHelp(const Names& command = {}) {
  Told told{command, {}, {}};
  std::istringstream help(RunQuellixctl(With(command, {"--help"})).output);
  std::string part;
  for (std::string line; std::getline(help, line);) {
    if (!line.starts_with(" ")) part = line;
    ReadLine(line, part, told);
  }
  std::vector<Told> all = {told};
  for (const std::string& inner : told.commands)
    for (Told& more : AllHelp(With(command, {inner}))) all.push_back(std::move(more));
  return all;
}

class ShellHelpTest : public ConsoleTest {
 protected:
  ShellHelpTest() : file_(std::filesystem::temp_directory_path() / "quellix-shell-help") {}
  ~ShellHelpTest() override { std::filesystem::remove(file_); }
  void Write(const std::string& text) { std::ofstream(file_, std::ios::binary) << text; }
  // What a shell's command prints of the file, which is its $1.
  std::string Shell(const std::string& command) {
    const std::string output = OutputFile();
    const std::string line =
        "bash -c '" + command + "' bash \"" + file_ + "\" > \"" + output + "\" 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    std::ifstream stream(output, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    std::filesystem::remove(output);
    return text;
  }
  // What bash offers behind words; the last one is completed.
  std::string Complete(const Names& words) {
    std::string array = "quellixctl";
    for (const std::string& word : words) array += " \"" + word + "\"";
    return Shell("source \"$1\"; COMP_WORDS=(" + array +
                 "); COMP_CWORD=" + std::to_string(words.size()) +
                 "; _quellixctl \"" QUELLIXCTL "\"; echo \"${COMPREPLY[*]}\"");
  }

  const std::string file_;
};

TEST_F(ShellHelpTest, TheManualHasAllThatTheHelpTellsAndFormatsWithoutAWarning) {
  const std::string manual = RunQuellixctl({"manual"}).output;
  Write(manual);
  size_t options = 0;
  for (const Told& told : AllHelp()) {
    if (told.commands.empty()) {
      EXPECT_TRUE(Holds(manual, ".SS \"quellixctl " + Joined(told.command)));
    }
    for (std::string option : told.options) {
      for (size_t at = 0; (at = option.find('-', at)) != std::string::npos; at += 2)
        option.insert(at, "\\");
      EXPECT_TRUE(Holds(manual, "\\fB" + option + "\\fR")) << Joined(told.command);
      ++options;
    }
  }
  EXPECT_GT(options, 100u);
  if (Shell("command -v groff || true").empty()) GTEST_SKIP() << "groff is missing";
  EXPECT_EQ(Shell("LC_ALL=C groff -man -Tascii -ww -z \"$1\""), "");
  EXPECT_TRUE(Holds(Shell("groff -man -Tascii -P-c -P-b -P-u \"$1\""), "EXIT STATUS"));
  const std::string lint =
      "if command -v mandoc > /dev/null; then mandoc -Tlint -W warning \"$1\" | "
      "grep -v \"missing date\"; fi; true";  // dates would make builds differ
  EXPECT_EQ(Shell(lint), "");
}

TEST_F(ShellHelpTest, BashCompletesAllThatTheHelpTells) {
  Write(RunQuellixctl({"completion"}).output);
  for (const Told& told : AllHelp()) {
    std::string options = " " + Complete(With(told.command, {"-"}));
    options.back() = ' ';
    for (const std::string& option : told.options)
      EXPECT_TRUE(Holds(options, " " + option + " ")) << Joined(told.command);
    if (!told.commands.empty()) {
      EXPECT_EQ(Complete(With(told.command, {""})), Joined(told.commands) + "\n");
    }
  }
}

TEST_F(ShellHelpTest, BashCompletesValuesAndNothingForNonsense) {
  Write(RunQuellixctl({"completion"}).output);
  const std::string folder = std::filesystem::path(file_).parent_path();
  const std::tuple<const char*, Names, std::string> kRows[] = {
      {"a command", {"cle"}, "clean"},
      {"a command of a group", {"keep", "re"}, "remove"},
      {"an item", {"clean", "--item", "CleanTempF"}, "CleanTempFiles"},
      {"another item", {"clean", "--item", "chkTemp", "CleanRun"}, "CleanRunMRU"},
      {"an item behind =", {"clean", "--item", "=", "CleanRun"}, "CleanRunMRU"},
      {"a choice", {"clean", "--group", "fire"}, "firefox"},
      {"behind a flag", {"search", "--delete", "un"}, "unnecessary"},
      {"a file", {"items", "--report", file_.substr(0, file_.size() - 2)}, file_},
      {"a folder, no file", {"keep", "list", "--settings", file_.substr(0, file_.size() - 2)}, ""},
      {"a further drive", {"clean", "--drive", "D", ":=", folder}, folder},
      {"a kind of a browser", {"browsers", "clean", "Firefox", ":", "pass"}, "passwords"},
      {"no command", {"polish"}, ""},
      {"no option", {"clean", "--polish"}, ""},
      {"a number", {"clean", "--older-than", ""}, ""},
      {"no item", {"clean", "--item", "Nonsense"}, ""}};
  for (const auto& [name, words, offered] : kRows)
    EXPECT_EQ(Complete(words), offered + "\n") << name;
}

TEST_F(ShellHelpTest, BashCompletesNamesThatTheMachineHas) {
  Write(RunQuellixctl({"completion"}).output);
  machine->MakeFile(own + "Plugins\\Qx one, two.cdp", "D\x01One\r\n");
  machine->MakeFile(own + "Plugins\\Qx three.cdp", "D\x01Three\r\n");
  StoreMachine(*machine);
  const Names here = MachineArguments(*machine);
  const auto offered = [&](const char* group, const char* command, const char* begin) {
    return Complete(With(With({group, command}, here), {begin}));
  };
  EXPECT_EQ(offered("plugins", "enable", "Qx"), "Qx\\ one\\,\\ two.cdp Qx\\ three.cdp\n");
  EXPECT_EQ(offered("plugins", "enable", "Qx t"), "Qx\\ three.cdp\n");
  EXPECT_EQ(offered("plugins", "enable", "Qx\\\\ t"), "Qx\\ three.cdp\n");
  EXPECT_EQ(offered("plugins", "enable", "none"), "\n");
}

}  // namespace
}  // namespace quellix
