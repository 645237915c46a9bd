#include "plugins/plugin_editor.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_places.h"
#include "plugins/recipe_keys.h"
#include "run/working_folder.h"
#include "settings/own_files.h"

namespace quellix::modPlugin {
namespace {

constexpr std::string_view kExtension = ".cdp";
constexpr std::string_view kNewName = "NoName";
constexpr std::string_view kNoSuchCharacter =
    Mark("It holds a line break or another character that no line of a plug-in can have");
constexpr std::string_view kIsListed = Mark("This is listed already.");

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
          WithBackslash(form.path) + form.file, form.remove_self, form.both_sides};
}

RegistryEntry ToEntry(const RegistryForm& form) {
  return {form.entire_subkey, form.all_subkeys,
          std::string(kRootKeys[form.root]) + "\\" + form.subkey, form.value, form.both_views};
}

constexpr FurtherKind kFurtherKinds[] = {
    {Mark("Leave files of a folder"), Mark("F&older and file:"), nullptr, 'X', "File"},
    {Mark("Leave files, folders below too"), Mark("F&older and file:"), nullptr, 'X', "Path"},
    {Mark("Leave a registry key"), Mark("&Key:"), nullptr, 'X', "Key"},
    {Mark("Only where a file or folder is"), Mark("Pat&h:"), nullptr, 'T', "File"},
    {Mark("Only where a registry key is"), Mark("&Key:"), Mark("With the &value:"), 'T', "Key"},
    {Mark("Only on some Windows"), Mark("&From version:"), Mark("&Until version:"), 'T', "Version"},
    {Mark("Stands in the group"), Mark("&Group:"), nullptr, 'G', ""},
    {Mark("Costs its user"), Mark("&Cost:"), nullptr, 'W', "No"},
    {Mark("Loses what cannot be had again"), Mark("L&ost:"), nullptr, 'W', "Yes"},
    {Mark("Close a program first"), Mark("F&ile:"), nullptr, 'P', ""},
};

std::string LineOf(const FurtherForm& form) {
  const FurtherKind& kind = kFurtherKinds[form.kind];
  std::string line(1, kind.letter);
  if (*kind.mark != '\0') line.append(1, kSeparator).append(kind.mark);
  line.append(1, kSeparator).append(form.place);
  if (kind.last != nullptr && !form.last.empty()) line.append(1, kSeparator).append(form.last);
  return line;
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
    if (!plugin) return Refuse(Tr("There is no plug-in %1 any longer.", file));
    plugin_ = *plugin;
  } catch (const Error& error) {
    return Refuse(Shown(error));
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
bool PluginEditor::Append(std::vector<Entry>& list, const std::vector<Entry>& entries) {
  for (const Entry& entry : entries) {
    if (std::ranges::count(list, entry) + std::ranges::count(entries, entry) > 1) {
      return Refuse(Tr(kIsListed));
    }
  }
  list.insert(list.end(), entries.begin(), entries.end());
  is_changed_ = true;
  return true;
}

// It is added behind the others, which lets it be judged like any new one, and then moved.
template <typename Entry>
bool PluginEditor::Change(std::vector<Entry> Plugin::*list, size_t row,
                          const std::function<bool()>& add) {
  if (row >= (plugin_.*list).size()) return false;
  const Plugin before = plugin_;
  (plugin_.*list).erase((plugin_.*list).begin() + static_cast<long>(row));
  if (!add()) {
    plugin_ = before;
    return false;
  }
  std::vector<Entry>& changed = plugin_.*list;
  const size_t place = std::min(row, changed.size() - 1);  // another may have made way for it
  std::rotate(changed.begin() + static_cast<long>(place), changed.end() - 1, changed.end());
  return true;
}

bool PluginEditor::ChangeFile(size_t row, FilesForm& form) {
  return Change(&Plugin::files, row, [&] { return AddFiles(form); });
}

bool PluginEditor::ChangeKey(size_t row, const RegistryForm& form) {
  return Change(&Plugin::registry, row, [&] { return AddKey(form); });
}

bool PluginEditor::ChangeIni(size_t row, const IniForm& form) {
  return Change(&Plugin::ini, row, [&] { return AddIni(form); });
}

bool PluginEditor::ChangeFurther(size_t row, const FurtherForm& form) {
  if (!Change(&Plugin::others, row, [&] { return AddFurther(form); })) return false;
  SetFurther(plugin_.others);
  return true;
}

FilesForm PluginEditor::FilesFormOf(size_t row) const {
  const FileEntry& entry = plugin_.files[row];
  return {std::string(WithoutBackslash(FolderPart(entry.location))),
          std::string(NamePart(entry.location)),
          entry.recurse,
          entry.delete_subfolders,
          entry.remove_self,
          entry.both_sides};
}

RegistryForm PluginEditor::KeyFormOf(size_t row) const {
  const RegistryEntry& entry = plugin_.registry[row];
  const size_t end = std::min(entry.key.find('\\'), entry.key.size());
  RegistryForm form;
  for (size_t root = 0; root < std::size(kRootKeys); ++root) {
    if (EqualsNoCase(kRootKeys[root], entry.key.substr(0, end))) form.root = root;
  }
  form.subkey = entry.key.substr(std::min(end + 1, entry.key.size()));
  form.value = entry.value_name;
  form.entire_subkey = entry.delete_subkey;
  form.all_subkeys = entry.recurse_delete;
  form.both_views = entry.both_views;
  return form;
}

IniForm PluginEditor::IniFormOf(size_t row) const {
  const IniEntry& entry = plugin_.ini[row];
  return {entry.folder + entry.file_name, entry.section, entry.key, entry.delete_section};
}

bool PluginEditor::AddAll(const std::vector<FileEntry>& entries) {
  ProtectedPlaces places = LoadPlaces(machine_);
  for (const FileEntry& entry : entries) {
    if (!FitsOnLine({entry.location})) return Refuse(Tr(kNoSuchCharacter));
    const FilesPlace place = FindFolders(machine_, places, entry, AtMost(kMostListed));
    if (place.folders.empty() && !place.refusals.empty())
      return Refuse(place.refusals.front().shown);
  }
  return Append(plugin_.files, entries);
}

bool PluginEditor::AddAll(const std::vector<RegistryEntry>& entries) {
  for (const RegistryEntry& entry : entries) {
    if (!FitsOnLine({entry.key, entry.value_name})) return Refuse(Tr(kNoSuchCharacter));
    const std::vector<KeyPlace> places = FindKeys(machine_.registry, entry, AtMost(kMostListed));
    const auto is_taken = [](const KeyPlace& place) { return place.root.has_value(); };
    if (!places.empty() && std::ranges::none_of(places, is_taken)) {
      return Refuse(places.front().refusal.shown);
    }
  }
  return Append(plugin_.registry, entries);
}

bool PluginEditor::AddFiles(FilesForm& form) {
  if (form.path.empty()) return Refuse(Tr("You must provide a path"));
  if (form.file.empty()) return Refuse(Tr("You must provide a filename or specification"));
  if (form.file != "*.*") form.delete_subfolders = false;
  return AddAll({ToEntry(form)});
}

bool PluginEditor::AddChosenFiles(const FilesForm& form, size_t files_there,
                                  std::span<const std::string> chosen) {
  if (files_there == 0) return Refuse(Tr("No files to add"));
  if (chosen.empty()) return Refuse(Tr("Please select a file to add."));
  std::vector<FileEntry> entries;
  for (const std::string& name : chosen) {
    FilesForm one = form;
    one.file = name;
    entries.push_back(ToEntry(one));
  }
  return AddAll(entries);
}

bool PluginEditor::AddKey(const RegistryForm& form) {
  if (form.subkey.empty()) return Refuse(Tr("Please enter a subkey"));
  return AddAll({ToEntry(form)});
}

bool PluginEditor::CanGenerate(const RegistryForm& form, Generated what) {
  if (form.subkey.empty()) return Refuse(Tr("Please enter a subkey"));
  if (what == Generated::kValues && form.value.empty()) return Refuse(Tr("Please enter a value"));
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
  const std::string title = Tr("INI FIles ( *.ini )");
  const FileFilter filter = {title, "*.ini"};
  return prompts_.AskFile(std::span(&filter, 1), "").value_or("");
}

std::vector<IniSection> PluginEditor::ReadIni(const std::string& path) {
  try {
    const std::optional<std::string> bytes = machine_.files.ReadWholeFile(path);
    if (bytes) return OutlineIni(DecodeIni(*bytes, machine_.system));
    prompts_.Inform(Tr("There is no file %1.", path));
  } catch (const Error& error) {
    prompts_.Inform(Shown(error));
  }
  return {};
}

bool PluginEditor::AddIni(const IniForm& form) {
  if (form.file.find('\\') == std::string::npos) return Refuse(Tr("File Path is not valid"));
  if (form.section.empty()) return Refuse(Tr("Please select a section"));
  // A whole section goes with all its values, so that none is named.
  if (form.value.empty() && !form.erase_section) return Refuse(Tr("Please enter a value"));
  const IniEntry entry{std::string(NamePart(form.file)), form.section, form.erase_section,
                       form.value, std::string(FolderPart(form.file))};
  if (!FitsOnLine({form.file, form.section, form.value})) return Refuse(Tr(kNoSuchCharacter));
  ProtectedPlaces places = LoadPlaces(machine_);
  const IniPlace place = FindIni(machine_, places, entry);
  if (!place.refusal.empty()) return Refuse(place.refusal.shown);
  return Append(plugin_.ini, {entry});
}

std::span<const FurtherKind> FurtherKinds() { return kFurtherKinds; }

std::optional<FurtherForm> PluginEditor::FurtherFormOf(size_t row) const {
  const std::vector<std::string> fields = Split(plugin_.others[row], kSeparator);
  for (size_t i = 0; i < std::size(kFurtherKinds); ++i) {
    const FurtherKind& kind = kFurtherKinds[i];
    const size_t first = *kind.mark == '\0' ? 1 : 2;
    const bool is_it = fields[0] == std::string(1, kind.letter) && fields.size() > first &&
                       (first == 1 || fields[1] == kind.mark);
    if (!is_it) continue;
    const bool has_last = kind.last != nullptr && fields.size() > first + 1;
    return FurtherForm{i, fields[first], has_last ? fields[first + 1] : ""};
  }
  return std::nullopt;
}

PluginEditor::FurtherRow PluginEditor::Further(size_t row) const {
  if (const auto form = FurtherFormOf(row)) {
    return {Tr(kFurtherKinds[form->kind].caption), form->place, form->last};
  }
  const std::vector<std::string> fields = Split(plugin_.others[row], kSeparator);
  std::string rest = plugin_.others[row].substr(fields[0].size() + 1);
  std::ranges::replace(rest, kSeparator, ' ');
  return {fields[0], std::move(rest), ""};
}

// What older readers ignore is told by these lines alone.
void PluginEditor::SetFurther(std::vector<std::string> lines) {
  plugin_.others = std::move(lines);
  plugin_ = ParsePlugin(FormatPlugin(plugin_));
  is_changed_ = true;
}

bool PluginEditor::AddFurther(const FurtherForm& form) {
  if (form.place.empty()) return Refuse(Tr("Please fill in the field"));
  if (!FitsOnLine({form.place, form.last})) return Refuse(Tr(kNoSuchCharacter));
  const std::string line = LineOf(form);
  for (const Remark& remark : CheckPlugin(machine_, line + "\r\n")) {
    if (remark.is_fault && remark.line == 1) return Refuse(remark.text);
  }
  std::vector<std::string> lines = plugin_.others;
  if (std::ranges::count(lines, line) > 0) return Refuse(Tr(kIsListed));
  if (line[0] == 'G') std::erase_if(lines, [](const std::string& each) { return each[0] == 'G'; });
  lines.push_back(line);
  SetFurther(std::move(lines));
  return true;
}

void PluginEditor::RemoveFurther(size_t row) {
  std::vector<std::string> lines = plugin_.others;
  if (row >= lines.size()) return;
  lines.erase(lines.begin() + static_cast<long>(row));
  SetFurther(std::move(lines));
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
      prompts_.AskText(Tr("Please enter filename for the plugin"), WithoutExtension(name_));
  if (!typed || TrimBlanks(*typed).empty()) return;
  // Always appended: a name typed with its extension has always got it twice.
  const std::string file = std::string(TrimBlanks(*typed)).append(kExtension);
  if (file.find_first_of("\\/:*?\"<>|") != std::string::npos) {
    return prompts_.Inform(
        Tr("A file name cannot have any of these characters: %1", "\\ / : * ? \" < > |"));
  }
  const std::string path = OwnPath(machine_, "Plugins\\" + file);
  try {
    MakeFolders(machine_.files, FolderPart(path));
    if (machine_.files.Look(path, Detail::kKind) &&
        !prompts_.AskYesNo(Tr("This plugin already exists. Overwrite?"))) {
      return;
    }
    SavePluginFile(machine_, path, plugin_);
  } catch (const Error& error) {
    return prompts_.Inform(Shown(error));
  }
  name_ = file;
  is_changed_ = false;
  manager_.AddSaved(file, plugin_.description);
}

bool PluginEditor::MayClose() {
  return !is_changed_ || prompts_.AskYesNo(Tr(
                             "The plug-in has changes that were not saved. Close without saving?"));
}

}  // namespace quellix::modPlugin
