#include "plugins/plugin_editor.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_keys.h"
#include "run/working_folder.h"

namespace quellix::modPlugin {
namespace {

constexpr FileFilter kIniFilter = {"INI FIles ( *.ini )", "*.ini"};
constexpr std::string_view kExtension = ".cdp";
constexpr std::string_view kNewName = "NoName";
constexpr std::string_view kNoSuchCharacter =
    "It holds a line break or another character that no line of a plugin can have";

// Folders or keys that are listed to judge a place with "*".
constexpr size_t kMostListed = 1000;

Pause AtMost(size_t times) {
  return [left = times](const Progress&) mutable { return left == 0 || left-- == 0; };
}

constexpr std::string_view kLineEnds("\0\r\n", 3);

// A record is one line with its fields parted by a character: what holds one of these would be read
// back as something else.
bool FitsOnLine(std::initializer_list<std::string_view> fields) {
  return std::ranges::none_of(fields, [](std::string_view field) {
    return field.find_first_of(kLineEnds) != field.npos || field.find(kSeparator) != field.npos;
  });
}

FileEntry ToEntry(const FilesForm& form) {
  return {form.recurse, form.delete_subfolders && form.file == "*.*",
          WithBackslash(form.path) + form.file};
}

RegistryEntry ToEntry(const RegistryForm& form) {
  return {form.entire_subkey, form.all_subkeys,
          std::string(kRootKeys[form.root]) + "\\" + form.subkey, form.value};
}

std::string WithoutExtension(const std::string& file) {
  const size_t stem = file.size() - std::min(file.size(), kExtension.size());
  return EqualsNoCase(std::string_view(file).substr(stem), kExtension) ? file.substr(0, stem)
                                                                       : file;
}

}  // namespace

bool PluginEditor::Refuse(std::string_view sentence) {
  prompts_.Inform(sentence);
  return false;
}

void PluginEditor::Create() {
  plugin_ = {};
  name_ = kNewName;
  is_changed_ = false;
}

bool PluginEditor::Load(const std::string& file) {
  try {
    const std::optional<Plugin> plugin = LoadPluginFile(machine_, PluginPath(machine_, file));
    if (!plugin) return Refuse("There is no plugin " + file + " any longer.");
    plugin_ = *plugin;
  } catch (const Error& error) {
    return Refuse(error.what());
  }
  name_ = file;
  is_changed_ = false;
  return true;
}

void PluginEditor::SetDescription(std::string_view text) {
  text = text.substr(0, text.find_first_of(kLineEnds));
  if (plugin_.description == text) return;
  plugin_.description = text;
  is_changed_ = true;
}

template <typename Entry>
void PluginEditor::Append(std::vector<Entry>& list, const std::vector<Entry>& entries) {
  list.insert(list.end(), entries.begin(), entries.end());
  is_changed_ = true;
}

bool PluginEditor::AddAll(const std::vector<FileEntry>& entries) {
  ProtectedPlaces places = LoadPlaces(machine_);
  for (const FileEntry& entry : entries) {
    if (!FitsOnLine({entry.location})) return Refuse(kNoSuchCharacter);
    const FilesPlace place = FindFolders(machine_, places, entry, AtMost(kMostListed));
    if (place.folders.empty() && !place.refusals.empty()) return Refuse(place.refusals.front());
  }
  Append(plugin_.files, entries);
  return true;
}

bool PluginEditor::AddAll(const std::vector<RegistryEntry>& entries) {
  for (const RegistryEntry& entry : entries) {
    if (!FitsOnLine({entry.key, entry.value_name})) return Refuse(kNoSuchCharacter);
    const std::vector<KeyPlace> places = FindKeys(machine_.registry, entry, AtMost(kMostListed));
    const auto is_taken = [](const KeyPlace& place) { return place.root.has_value(); };
    if (!places.empty() && std::ranges::none_of(places, is_taken)) {
      return Refuse(places.front().refusal);
    }
  }
  Append(plugin_.registry, entries);
  return true;
}

bool PluginEditor::AddFiles(FilesForm& form) {
  if (form.path.empty()) return Refuse("You must provide a path");
  if (form.file.empty()) return Refuse("You must provide a filename or specification");
  if (form.file != "*.*") form.delete_subfolders = false;
  return AddAll({ToEntry(form)});
}

bool PluginEditor::AddChosenFiles(const FilesForm& form, size_t files_there,
                                  std::span<const std::string> chosen) {
  if (files_there == 0) return Refuse("No files to add");
  if (chosen.empty()) return Refuse("Please select a file to add.");
  std::vector<FileEntry> entries;
  for (const std::string& name : chosen) {
    FilesForm one = form;
    one.file = name;
    entries.push_back(ToEntry(one));
  }
  return AddAll(entries);
}

bool PluginEditor::AddKey(const RegistryForm& form) {
  if (form.subkey.empty()) return Refuse("Please enter a subkey");
  return AddAll({ToEntry(form)});
}

bool PluginEditor::CanGenerate(const RegistryForm& form, Generated what) {
  if (form.subkey.empty()) return Refuse("Please enter a subkey");
  if (what == Generated::kValues && form.value.empty()) return Refuse("Please enter a value");
  return true;
}

bool PluginEditor::AddGenerated(const RegistryForm& form, Generated what,
                                const NumberRange& range) {
  const Numbers numbers = GenerateNumbers(range);
  if (!numbers.refusal.empty()) return Refuse(numbers.refusal);
  std::vector<RegistryEntry> entries;
  for (const std::string& number : numbers.texts) {
    RegistryForm one = form;
    (what == Generated::kSubkeys ? one.subkey : one.value) += number;
    entries.push_back(ToEntry(one));
  }
  return AddAll(entries);
}

std::string PluginEditor::AskIniFile() {
  return prompts_.AskFile(std::span(&kIniFilter, 1), "").value_or("");
}

std::vector<IniSection> PluginEditor::ReadIni(const std::string& path) {
  try {
    const std::optional<std::string> bytes = machine_.files.ReadWholeFile(path);
    if (bytes) return OutlineIni(DecodeIni(*bytes, machine_.system));
    prompts_.Inform("There is no file " + path + ".");
  } catch (const Error& error) {
    prompts_.Inform(error.what());
  }
  return {};
}

bool PluginEditor::AddIni(const IniForm& form) {
  if (form.file.find('\\') == std::string::npos) return Refuse("File Path is not valid");
  if (form.section.empty()) return Refuse("Please select a section");
  // A whole section goes with all its values, so that none is named.
  if (form.value.empty() && !form.erase_section) return Refuse("Please enter a value");
  const IniEntry entry{std::string(NamePart(form.file)), form.section, form.erase_section,
                       form.value, std::string(FolderPart(form.file))};
  if (!FitsOnLine({form.file, form.section, form.value})) return Refuse(kNoSuchCharacter);
  ProtectedPlaces places = LoadPlaces(machine_);
  const IniPlace place = FindIni(machine_, places, entry);
  if (!place.refusal.empty()) return Refuse(place.refusal);
  Append(plugin_.ini, {entry});
  return true;
}

template <typename Entry>
void PluginEditor::Remove(std::vector<Entry>& list, size_t row) {
  if (row >= list.size()) return;
  list.erase(list.begin() + static_cast<long>(row));
  is_changed_ = true;
}

void PluginEditor::RemoveFile(size_t row) { Remove(plugin_.files, row); }
void PluginEditor::RemoveKey(size_t row) { Remove(plugin_.registry, row); }
void PluginEditor::RemoveIni(size_t row) { Remove(plugin_.ini, row); }

void PluginEditor::Save() {
  const auto typed =
      prompts_.AskText("Please enter filename for the plugin", WithoutExtension(name_));
  if (!typed || TrimBlanks(*typed).empty()) return;
  // Always appended: a name typed with its extension has always got it twice.
  const std::string file = std::string(TrimBlanks(*typed)).append(kExtension);
  if (file.find_first_of("\\/:*?\"<>|") != std::string::npos) {
    return prompts_.Inform("A file name cannot have any of these characters: \\ / : * ? \" < > |");
  }
  const std::string path = PluginPath(machine_, file);
  try {
    MakeFolders(machine_.files, FolderPart(path));
    if (machine_.files.Look(path, Detail::kKind) &&
        !prompts_.AskYesNo("This plugin already exists. Overwrite?")) {
      return;
    }
    SavePluginFile(machine_, path, plugin_);
  } catch (const Error& error) {
    return prompts_.Inform(error.what());
  }
  name_ = file;
  is_changed_ = false;
  manager_.AddSaved(file, plugin_.description);
}

bool PluginEditor::MayClose() {
  return !is_changed_ ||
         prompts_.AskYesNo("The plugin has changes that were not saved. Close without saving?");
}

}  // namespace quellix::modPlugin
