// What a command starts, found as Windows finds it.
#include <algorithm>
#include <span>

#include "platform/path.h"
#include "platform/text.h"
#include "registry_tools/file_reference.h"
#include "run/known_folders.h"

namespace quellix {
namespace {

using State = CommandTarget::State;

constexpr size_t kMostTries = 100;  // blanks that may end a program
constexpr std::string_view kEndings[] = {"", ".exe", ".com", ".bat", ".cmd"};
constexpr size_t kOfBeginning = 2;  // of them, as else any file could shorten a longer name
constexpr const char* kAppPaths = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\";

bool StartsNoCase(std::string_view text, std::string_view start) {
  return EqualsNoCase(text.substr(0, start.size()), start);
}

bool IsFullPath(std::string_view text) {
  return text.size() > 2 && text[1] == ':' && text[2] == '\\';
}

bool IsProgramName(std::string_view path) {
  const std::string_view name = NamePart(path);
  return std::ranges::any_of(kEndings, [name](std::string_view ending) {
    return !ending.empty() && name.size() > ending.size() &&
           EqualsNoCase(name.substr(name.size() - ending.size()), ending);
  });
}

// What cannot stand in the name of a program: of a command it is an argument, or a variable that
// nobody knows.
bool HasOddSign(std::string_view name) {
  return std::ranges::any_of(name, [at = 0](char c) mutable {
    return static_cast<unsigned char>(c) < 0x20 || (c == ':' && at != 1) ||
           (++at, std::string_view("<>|*?\"%").find(c) != std::string_view::npos);
  });
}

std::string_view Unquoted(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.starts_with('"')) return text;
  text.remove_prefix(1);
  return text.substr(0, text.find('"'));
}

}  // namespace

CommandTarget ReferenceJudge::Judge(std::string_view command, CommandOf whose) {
  const std::string expanded = Expand(TrimBlanks(command));
  CommandTarget target = FindProgram(expanded, whose);
  target.program = target.file;
  if (!EqualsNoCase(NamePart(target.program), "rundll32.exe")) return target;
  const std::string in_32_bit = machine_.system.WindowsFolder() + "\\SysWOW64\\";
  const bool is_32_bit = StartsNoCase(target.program, in_32_bit);
  JudgeLibrary(target, is_32_bit ? CommandOf::k32BitProcess : whose);
  return target;
}

CommandTarget ReferenceJudge::JudgePath(std::string_view text, CommandOf whose) {
  const std::string expanded = Expand(TrimBlanks(text));
  const bool has_drive = expanded.size() > 2 && expanded[1] == ':';
  return has_drive ? JudgeProgram(expanded, Accept::kFolderToo, whose) : CommandTarget();
}

// Without quotes each blank may end the program. Where none is there, the first that is called like
// a program was meant. Where what follows cannot be judged, only such a one is known to be gone:
// else the name may go on there.
CommandTarget ReferenceJudge::FindProgram(std::string_view text, CommandOf whose) {
  if (text.starts_with('"')) {
    const size_t end = text.find('"', 1);
    CommandTarget target = JudgeProgram(Unquoted(text), Accept::kFolderToo, whose);
    if (end != text.npos) target.arguments = TrimBlanks(text.substr(end + 1));
    return target;
  }
  CommandTarget best;
  bool is_program = false;
  size_t end = 0;
  for (size_t tries = 0; tries < kMostTries && end != text.npos; ++tries) {
    end = text.find(' ', end + 1);
    const Accept accept = end == text.npos ? Accept::kFolderToo : Accept::kBeginning;
    CommandTarget target = JudgeProgram(text.substr(0, end), accept, whose);
    if (target.state == State::kNotJudged) return is_program ? best : CommandTarget();
    if (end != text.npos) target.arguments = TrimBlanks(text.substr(end));
    if (target.state == State::kThere) return target;
    if (tries == 0 || (IsProgramName(text.substr(0, end)) && !is_program)) best = target;
    is_program = is_program || IsProgramName(text.substr(0, end));
  }
  return best;
}

CommandTarget ReferenceJudge::JudgeProgram(std::string_view name, Accept accept, CommandOf whose) {
  const std::string path = FullPath(TrimBlanks(name));
  if (path.empty()) return {};
  if (!IsFullPath(path)) return FindByName(path, whose);
  std::string found = FindFile(path, accept, whose);
  if (!found.empty()) return {.state = State::kThere, .file = std::move(found)};
  return {.state = State::kGone, .file = path};
}

// A full path on a drive that is here, or a name that is to be looked for; "" for what cannot be
// judged.
std::string ReferenceJudge::FullPath(std::string_view name) {
  for (const std::string_view prefix : {"\\\\?\\", "\\??\\"}) {
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
  }
  if (name.empty() || name[0] == '-' || name[0] == '/' || HasOddSign(name)) return {};
  std::string path(name);
  std::ranges::replace(path, '/', '\\');
  const std::string windows = machine_.system.WindowsFolder();
  constexpr std::string_view kRoot = "\\SystemRoot\\";
  if (StartsNoCase(path, kRoot)) return windows + "\\" + path.substr(kRoot.size());
  if (path.starts_with("\\\\")) return {};
  if (path.starts_with('\\')) return windows.substr(0, 2) + path;
  if (IsFullPath(path)) {
    const char letter = UpCase(path.substr(0, 1))[0];
    return drives_.find(letter) == drives_.npos ? "" : path;
  }
  if (path.find(':') != path.npos) return {};
  if (path.find('\\') == path.npos) return path;
  // Services name their programs so; elsewhere it depends on the folder that is current.
  const bool is_below = StartsNoCase(path, "System32\\") || StartsNoCase(path, "SysWOW64\\");
  return is_below ? windows + "\\" + path : "";
}

// The path as it is there, "" where it is gone.
std::string ReferenceJudge::FindFile(const std::string& path, Accept accept, CommandOf whose) {
  std::vector<std::string> places{path};
  for (const auto& [folder, is] : seen_by_32_bit_) {
    if (whose != CommandOf::kAnyProgram && StartsNoCase(path, folder))
      places.push_back(is + path.substr(folder.size()));
  }
  if (whose == CommandOf::k32BitProcess) std::ranges::reverse(places);
  const size_t endings = accept == Accept::kBeginning ? kOfBeginning : std::size(kEndings);
  bool is_folder = false;
  for (const std::string& place : places) {
    for (const std::string_view ending : std::span(kEndings).first(endings)) {
      std::string file = place + std::string(ending);
      if (IsGone(file)) continue;
      const auto info = machine_.files.Look(file, Detail::kKind);
      if (!info || !info->is_folder) return file;
      is_folder = true;
    }
  }
  return is_folder && accept == Accept::kFolderToo ? path : "";
}

// One that is nowhere may be in a place that nobody can look into now.
CommandTarget ReferenceJudge::FindByName(std::string_view name, CommandOf whose) {
  std::vector<std::string> folders{machine_.system.SystemFolder(), machine_.system.WindowsFolder()};
  bool is_all = true;
  for (const std::string& folder :
       quellix::Split(machine_.system.Environment("PATH").value_or(""), ';')) {
    const std::string_view text = TrimBlanks(folder);
    if (text.empty()) continue;
    folders.emplace_back(WithoutBackslash(FullPath(Unquoted(Expand(text)))));
    is_all = is_all && folders.back().size() > 1 && folders.back()[1] == ':';
  }
  for (const std::string& folder : folders) {
    if (folder.size() < 2 || folder[1] != ':') continue;
    std::string found = FindFile(folder + "\\" + std::string(name), Accept::kProgram, whose);
    if (!found.empty()) return {.state = State::kThere, .file = std::move(found)};
  }
  CommandTarget registered = RegisteredPath(name);
  if (registered.state == State::kGone && !is_all) registered.state = State::kNotJudged;
  return registered;
}

CommandTarget ReferenceJudge::RegisteredPath(std::string_view name) {
  State state = State::kGone;
  for (const RegistryRoot root : {RegistryRoot::kCurrentUser, RegistryRoot::kLocalMachine}) {
    for (const std::string_view ending : {"", ".exe"}) {
      try {
        const auto key = machine_.registry.Open(
            root, std::string(kAppPaths).append(name).append(ending), RegistryAccess::kRead);
        const std::string text = key ? ReadFolderValue(machine_, *key, "") : "";
        if (text.empty()) continue;
        const std::string path = FullPath(Unquoted(text));
        const bool is_full = IsFullPath(path);
        std::string found = is_full ? FindFile(path, Accept::kProgram, CommandOf::kAnyProgram) : "";
        if (!found.empty()) return {.state = State::kThere, .file = std::move(found)};
        if (!is_full) state = State::kNotJudged;
      } catch (const Error&) {  // there is one that may not be read
        state = State::kNotJudged;
      }
    }
  }
  return {.state = state};
}

// "C:\a b.dll",Entry or C:\a b.dll,Entry: the library is what is started.
void ReferenceJudge::JudgeLibrary(CommandTarget& target, CommandOf whose) {
  const std::string_view text = target.arguments;
  const std::string_view name = text.starts_with('"')         ? Unquoted(text)
                                : text.find(',') != text.npos ? text.substr(0, text.find(','))
                                                              : text.substr(0, text.find(' '));
  CommandTarget library = JudgeProgram(name, Accept::kProgram, whose);
  if (library.state == State::kGone) {
    CommandTarget with_ending = JudgeProgram(std::string(name) + ".dll", Accept::kProgram, whose);
    if (with_ending.state != State::kGone) library = std::move(with_ending);
  }
  target.state = library.state;
  if (!library.file.empty()) target.file = library.file;
}

}  // namespace quellix
