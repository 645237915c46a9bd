#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/pause.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_file.h"

namespace quellix::modPlugin {

// The community's list of recipes, of which its user keeps a copy: an INI file, an entry a section.
//
//   [Name *]
//   LangSecRef=3021                            its group by a number, or Section=Games by a name
//   Detect=HKCU\Software\Name                  a key, or key|value, that is looked for
//   DetectFile=%AppData%\Name*                 a file or folder, likewise
//   DetectOS=6.1|10.0                          the first and the last version of Windows
//   SpecialDetect=DET_CHROME                   a browser
//   Warning=Removes what you typed.            what its author says of it
//   FileKey1=%AppData%\Name|*.log;*.tmp        files that go; |RECURSE with those in all folders
//                                              below, |REMOVESELF with the folders, once empty
//   RegKey1=HKCU\Software\Name|Last            a value that goes; without one the key
//   ExcludeKey1=FILE|%AppData%\Name|a.log      what stays: files of a folder; PATH with all below
//                                              it; REG|key
//   Default=False                              read and not heeded: nobody's list ticks anything
//
// Each key but the first two and Warning may have a number behind it and come often.

// One entry, as the recipe that carries it out.
struct ListedRecipe {
  std::string name;  // without " *"; one that stands twice gets a number
  size_t list = 0;   // which one of several
  size_t line = 0;   // of its head, from 1
  std::string warning;
  std::string contents;  // what it means, as records of a plug-in
  Plugin plugin;
  // A fault: a key that is not carried out; else one that tells nothing. Where it would say what
  // stays or what is looked for, the whole entry is not carried out.
  std::vector<Remark> remarks;
};

// All entries of some lists, in their order. Never fails; a stop leaves the rest out.
std::vector<ListedRecipe> ParseRecipeLists(const std::vector<std::string>& texts,
                                           const Pause& pause = {});

// What tells an entry from one that does something else: 64 hexadecimal digits.
std::string FingerprintOf(const ListedRecipe& recipe);

// The lists of this machine's user.
struct RecipeLists {
  std::vector<std::string> paths;  // of those that could be read
  std::vector<ListedRecipe> recipes;
  std::vector<Sentence> problems;

  const ListedRecipe* Find(std::string_view name) const;  // in any case; null without one
  std::unordered_map<std::string, size_t> by_name;        // in upper case
};

// Winapp2.ini beside the program or, where Settings.ini names some ([Recipes], File), the files
// there, with "|" between them, beside the program or with full paths. Never fails; a stop leaves
// the rest out.
RecipeLists LoadRecipeLists(const Machine& machine, const Pause& pause = {});

}  // namespace quellix::modPlugin
