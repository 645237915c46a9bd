#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix::modPlugin {

// Recipes that users write: text files "*.cdp" in the folder Plugins, a record a line, its fields
// parted by the character with code 1. Texts are UTF-8.
inline constexpr char kSeparator = '\x01';

struct FileEntry {  // F: files that go
  bool recurse = false;
  bool delete_subfolders = false;
  std::string location;      // folder, "\" and mask
  bool remove_self = false;  // the folder itself goes too once it is empty
  bool both_sides = false;   // %ProgramFiles% is each of the folders for programs
  bool operator==(const FileEntry&) const = default;
};

struct RegistryEntry {  // R: a key or a value that goes
  bool delete_subkey = false;
  bool recurse_delete = false;  // kept for the editor; a key always goes with all below it
  std::string key;              // root name, "\" and sub-key
  std::string value_name;
  bool both_views = false;  // also what programs of 32 bits see there
  bool operator==(const RegistryEntry&) const = default;
};

struct IniEntry {  // I: a section or a key of an INI file that goes
  std::string file_name;
  std::string section;
  bool delete_section = false;
  std::string key;
  std::string folder;  // ends in "\"
  bool operator==(const IniEntry&) const = default;
};

struct Exclusion {  // X: what stays of that which files and registry entries name
  enum class Kind {
    kFile,  // files of a folder
    kPath,  // the same and all folders below it; or a folder, with all that is in it
    kKey    // a key with all below it
  };
  Kind kind = Kind::kFile;
  std::string place;  // folder, "\" and mask; or root name, "\" and sub-key
};

struct Detection {  // T: what tells that the recipe has something to do here
  enum class Kind { kFile, kKey, kVersion };
  Kind kind = Kind::kFile;
  std::string place;  // path of a file or folder; key; or the first version of Windows, "10.0"
  std::string last;   // value name, "" for any; or the last version
};

struct Plugin {
  std::string description;
  std::vector<FileEntry> files;
  std::vector<RegistryEntry> registry;
  std::vector<IniEntry> ini;

  // What older readers ignore.
  std::vector<Exclusion> exclusions;
  std::vector<Detection> detections;
  std::string group;                   // G: what stands together
  std::string cost;                    // W: what its user loses besides traces, a clause
  bool has_unknown_exclusion = false;  // an X that cannot be read: it may name anything
  bool loses_data = false;             // W: which cannot be had again
  std::vector<std::string> programs;   // P: file names of programs that must not run meanwhile
  // The lines of all records but D, F, R and I as they stand, of kinds that nobody knows among
  // them.
  std::vector<std::string> others;
};

// One line of a recipe, parted at its separators.
struct Record {
  size_t line = 0;                  // from 1
  std::vector<std::string> fields;  // the last one holds all that no kind of record has
  std::string_view text = {};       // the line itself, during the visit
};

// Visits all lines of a recipe's text. They end in CR LF, LF or CR.
void ReadLines(std::string_view text, const std::function<void(const Record&)>& visit);
// Fields a kind of record needs, its letter among them; 0 for a kind that nobody knows.
size_t FieldsOf(std::string_view kind);
// Whether readers take the record: of a known kind, with all its fields, free of NUL characters.
bool IsComplete(const Record& record);

FileEntry ToFileEntry(const Record& record);
RegistryEntry ToRegistryEntry(const Record& record);
IniEntry ToIniEntry(const Record& record);
// Nothing when the kind is none.
std::optional<Exclusion> ToExclusion(const Record& record);
std::optional<Detection> ToDetection(const Record& record);

// Never fails: lines that are no complete record are skipped, but for has_unknown_exclusion; flags
// other than "Yes" are No.
Plugin ParsePlugin(std::string_view text);
// The bytes of a recipe: D, then every F, R and I record, then the others; each line ended by CR
// LF.
std::string FormatPlugin(const Plugin& plugin);

// Nothing when the file is missing. Throws Error when it cannot be read.
std::optional<Plugin> LoadPluginFile(const Machine& machine, std::string_view path);
// The description in the first line that has one, else "". Throws Error when the file is missing or
// cannot be read.
std::string ReadDescription(const Machine& machine, std::string_view path);
// Replaces the file. Throws Error; the old file then stays.
void SavePluginFile(const Machine& machine, std::string_view path, const Plugin& plugin);

// The handle Windows has for a root key's name, compared exactly; 0 for an unknown name.
uint32_t RootKeyFromName(std::string_view name);

}  // namespace quellix::modPlugin
