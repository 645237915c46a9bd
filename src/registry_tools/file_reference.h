#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// What a command starts.
struct CommandTarget {
  enum class State {
    kThere,
    kGone,
    kNotJudged  // a server, a drive or variable that is not known here, no program at all
  };

  State state = State::kNotJudged;
  // The program, or what it is known to start in turn: the library of rundll32. A full path where
  // it is there, else the best guess; "" for none.
  std::string file = {};
  std::string program = {};    // what Windows starts, likewise
  std::string arguments = {};  // behind the program
};

// Whose registry a command comes from: 32-bit programs see folders of their own under names that
// are the system's. Such a program once it runs looks into its own folders first.
enum class CommandOf { kAnyProgram, k32BitProgram, k32BitProcess };

// Tells which registry values name a file or folder that is gone. Made for one walk: what it has
// learned about paths it does not ask again.
class ReferenceJudge {
 public:
  explicit ReferenceJudge(const Machine& machine);

  // Finds what a command starts, as Windows does: quoted or not, with variables, by a full path,
  // one that begins in the folder or on the drive of Windows, or a name that is looked for.
  CommandTarget Judge(std::string_view command, CommandOf whose = CommandOf::kAnyProgram);

  // The same of a text that is a path and nothing else, perhaps that of a folder; not judged
  // without a drive in front.
  CommandTarget JudgePath(std::string_view text, CommandOf whose);

  // The text of a value that names something gone, as the value has it; nothing when there is no
  // such text, or when it cannot be judged: another drive, a server, an unknown variable, what is
  // no path at all. Of a list of texts the first that is gone.
  std::optional<std::string> FindGone(const RegistryValue& value);

 private:
  // What a path may be: the beginning of a longer text, a program alone, or a folder as well.
  enum class Accept { kBeginning, kProgram, kFolderToo };

  CommandTarget FindProgram(std::string_view text, CommandOf whose);
  CommandTarget JudgeProgram(std::string_view name, Accept accept, CommandOf whose);
  void JudgeLibrary(CommandTarget& target, CommandOf whose);
  std::string FullPath(std::string_view name);
  std::string FindFile(const std::string& path, Accept accept, CommandOf whose);
  CommandTarget FindByName(std::string_view name, CommandOf whose);
  CommandTarget RegisteredPath(std::string_view name);
  bool IsGoneText(std::string_view text);
  std::optional<std::string> PathOf(std::string_view text);
  bool IsGoneCommand(std::string_view text);
  bool IsNumberInFile(std::string_view path);
  bool IsThere(const std::string& path, bool may_go_on);
  bool IsGone(std::string_view path);
  std::string Expand(std::string_view text);

  Machine machine_;
  std::string drives_;                                               // letters, upper case
  std::vector<std::pair<std::string, std::string>> seen_by_32_bit_;  // folders, and what they are
  std::unordered_map<std::string, bool> known_;
};

}  // namespace quellix
