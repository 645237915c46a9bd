#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/words.h"
#include "plugins/ini_outline.h"
#include "plugins/key_generator.h"
#include "plugins/plugin_file.h"
#include "plugins/plugin_manager.h"
#include "run/views.h"

namespace quellix::modPlugin {

// What stands on the editor's pages.
struct FilesForm {
  std::string path;
  std::string file;  // a name or a mask
  bool recurse = false;
  bool delete_subfolders = false;
  bool remove_self = false;
  bool both_sides = false;
};

struct RegistryForm {
  size_t root = 1;  // of kRootKeys
  std::string subkey;
  std::string value;
  bool entire_subkey = false;
  bool all_subkeys = false;
  bool both_views = false;
};

struct IniForm {
  std::string file;  // full path
  std::string section;
  std::string value;
  bool erase_section = false;
};

// What stands beside files, keys and INI entries: a kind of record, with the words of its window,
// named for the catalogues.
struct FurtherKind {
  const char* caption;
  const char* place;  // what its first field holds, with a mnemonic
  const char* last;   // and its second one; null for none
  char letter;
  const char* mark;  // its first field in a file; "" for none
};
std::span<const FurtherKind> FurtherKinds();

struct FurtherForm {
  size_t kind = 0;  // of FurtherKinds
  std::string place, last;
};

enum class Generated { kSubkeys, kValues };

// The rules of the editor's window. Adders tell what is wrong and return false; then nothing is
// added. A record that would be refused in a run is refused here.
class PluginEditor {
 public:
  PluginEditor(const Machine& machine, Prompts& prompts, PluginManager& manager)
      : machine_(machine), prompts_(prompts), manager_(manager) {}

  // A new plug-in named "NoName".
  void Create();
  // One of the folder Plugins; false, told, when it cannot be read.
  bool Load(const std::string& file);

  const Plugin& plugin() const { return plugin_; }
  std::string Title() const { return Tr("Plugin: %1", name_); }
  void SetDescription(std::string_view text);

  // What is listed already, or twice, is refused.
  // Clears the flag for sub-folders unless all files go.
  bool AddFiles(FilesForm& form);
  // The chosen ones of the picker's files, an entry each, all or none.
  bool AddChosenFiles(const FilesForm& form, size_t files_there,
                      std::span<const std::string> chosen);
  bool AddKey(const RegistryForm& form);
  // Whether the form has what the name generator needs.
  bool CanGenerate(const RegistryForm& form, Generated what);
  // An entry for each number, which stands behind the sub-key or the value name; all or none.
  bool AddGenerated(const RegistryForm& form, Generated what, const NumberRange& range);
  // Asks for an INI file; "" when cancelled.
  std::string AskIniFile();
  // The sections of an INI file; none, told, when it cannot be read.
  std::vector<IniSection> ReadIni(const std::string& path);
  bool AddIni(const IniForm& form);

  // A group takes the place of the one before.
  bool AddFurther(const FurtherForm& form);

  // A row of the page Further; of a kind that nobody knows, its letter and the line as it stands.
  struct FurtherRow {
    std::string what, place, last;
  };
  size_t further_count() const { return plugin_.others.size(); }
  FurtherRow Further(size_t row) const;

  // A row as the fields of its page show it. Of a kind that nobody knows there is no form.
  FilesForm FilesFormOf(size_t row) const;
  RegistryForm KeyFormOf(size_t row) const;
  IniForm IniFormOf(size_t row) const;
  std::optional<FurtherForm> FurtherFormOf(size_t row) const;
  // Puts what the fields hold in the place of a row; where that is refused the row stays as it is.
  bool ChangeFile(size_t row, FilesForm& form);
  bool ChangeKey(size_t row, const RegistryForm& form);
  bool ChangeIni(size_t row, const IniForm& form);
  bool ChangeFurther(size_t row, const FurtherForm& form);

  void RemoveFile(size_t row);
  void RemoveKey(size_t row);
  void RemoveIni(size_t row);
  void RemoveFurther(size_t row);

  // Asks for a name, writes the file and tells the manager.
  void Save();
  // Whether the editor may be closed: there is nothing to lose, or the user agrees to lose it.
  bool MayClose();

 private:
  bool Refuse(std::string_view sentence);
  void SetFurther(std::vector<std::string> lines);
  bool AddAll(const std::vector<FileEntry>& entries);
  bool AddAll(const std::vector<RegistryEntry>& entries);
  template <typename Entry>
  bool Append(std::vector<Entry>& list, const std::vector<Entry>& entries);
  template <typename Entry>
  bool Change(std::vector<Entry> Plugin::*list, size_t row, const std::function<bool()>& add);
  template <typename Entry>
  void Remove(std::vector<Entry>& list, size_t row);

  Machine machine_;
  Prompts& prompts_;
  PluginManager& manager_;
  Plugin plugin_;
  std::string name_;
  bool is_changed_ = false;
};

}  // namespace quellix::modPlugin
