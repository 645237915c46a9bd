#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix::modPlugin {

// Folders as a recipe writes them: with variables and wildcards.

// `text` with its variables replaced: %PROGDIR%, %SYSDIR% and %WINDIR% first; then by the
// machine's environment, the folders that Windows knows by name (KnownFolder), and for what an
// older Windows lacks its own place. "" when one of them has no value. A single "%" stays.
std::string ExpandPluginPath(const Machine& machine, std::string_view text);

// The same for each folder for programs that %ProgramFiles% or %CommonProgramFiles% may be, with
// `both_sides`; none twice. Without variables the text alone, and none when one has no value.
std::vector<std::string> ExpandFolder(const Machine& machine, std::string_view text,
                                      bool both_sides);

// A path, its names without what Windows leaves out. A name may have "*" and "?".
struct PathPattern {
  std::string start;  // "C:" or "\\server\share"
  std::vector<std::string> names;

  bool HasWildcards() const;
};

// A path's names as Windows reads them: without empty ones, and without blanks and dots at their
// ends. Nothing where one has a step ("..") or a character that no name can have.
std::optional<std::vector<std::string>> NamesOfPath(std::string_view path);

bool HasNameWildcards(std::string_view name);
// Whether every name fits the mask.
bool FitsAnything(std::string_view mask);
// Whether a file can have such a name, or one that fits the mask.
bool MayBeFileName(std::string_view mask);

// Nothing when it is no full path, or has a step ("..") or a character no name can have.
std::optional<PathPattern> ParsePattern(std::string path);

// The folders it stands for. Those behind a wildcard exist and are reached through no link from
// there on; without one it is the folder alone, there or not. A stop ends the search.
std::vector<std::string> FindMatches(FileSystem& files, const PathPattern& pattern,
                                     const Pause& pause = {});

// Whether a file or a folder is there; a link counts.
bool HasMatch(FileSystem& files, PathPattern pattern);

}  // namespace quellix::modPlugin
