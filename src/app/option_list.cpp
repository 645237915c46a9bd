#include "app/option_list.h"

#include <algorithm>
#include <array>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/working_folder.h"
#include "search/junk_search.h"
#include "search/wildcard.h"
#include "settings/keep_file.h"
#include "settings/list_files.h"
#include "settings/own_files.h"
#include "settings/path_check.h"

namespace quellix {
namespace {

// Only the list of files has defaults that are read while the user has none; the extensions of
// DefIE.txt are offered, but do not hold before the user takes them.
constexpr std::array<ListPage, kListPages> kPages = {{
    {OptionsPage::kIgnoredFiles, Mark("Ignored files"),
     Mark("Files with these names are never found by a search for junk."), Mark("File &name:"),
     "IFI.txt", "DefIFI.txt"},
    {OptionsPage::kIgnoredExtensions, Mark("Ignored extensions"),
     Mark("Files with these extensions are never found by a search for junk."), Mark("E&xtension:"),
     "IE.txt", "DefIE.txt"},
    {OptionsPage::kIgnoredFolders, Mark("Ignored folders"),
     Mark(
         "Folders whose path holds one of these texts, and all below them, are never searched, nor "
         "cleaned as user-defined folders."),
     Mark("&Part of a path:"), "UDIFO.txt", "", ListPage::kFolder},
    {OptionsPage::kFileTypes, Mark("Unnecessary file types"),
     Mark("Files that match a ticked type are found as unnecessary: * is any text, ? one "
          "character, # one digit, [a-z] one of a range."),
     Mark("File &type:"), kFileTypesList, kFileTypesDefaults, ListPage::kNone, true},
    {OptionsPage::kUserFiles, Mark("User-defined files"),
     Mark("These files are removed by the item User-defined files."), Mark("&File:"), "UDFI.txt",
     "DefUDFI.txt", ListPage::kFile},
    {OptionsPage::kUserFolders, Mark("User-defined folders"),
     Mark("All files below these folders are removed by the item User-defined folders."),
     Mark("&Folder:"), "UDFO.txt", "DefUDFO.txt", ListPage::kFolder},
    {OptionsPage::kKeep, Mark("Keep list"),
     Mark(
         "Nothing removes these: files, folders with all below them, masks such as *.doc, registry "
         "keys (HKEY_...\\KEY), values (HKEY_...\\KEY|NAME) and cookies (site:example.com)."),
     Mark("&Keep:"), "keep.txt", "", ListPage::kFolder},
}};

std::string WhyNoFileType(std::string_view type) {
  std::string form = Tr("Please enter the file type in format\r\n*.bak, ~$*.doc or the like. ");
  const bool is_mask = type.find_first_of(".*?#[") != type.npos;
  const bool is_name = type.find_first_of("\\/:\"<>|") == type.npos && !HasControlCharacters(type);
  if (!is_mask || !is_name || !Wildcard(UpCase(type)).valid()) return form;
  if (type.find_first_not_of("*?. ") == type.npos) {
    return form + Tr("This one would match every file.");
  }
  return {};
}

std::string WhyNoExtension(std::string_view extension) {
  std::string why = Tr(WhyNoName(extension));
  if (why.empty() && extension.find('.') != extension.npos) {
    return Tr("Please enter what stands behind the last dot only, such as doc.");
  }
  return why;
}

std::string WhyNoPartOfPath(std::string_view text) {
  if (text.empty()) return Tr("Please enter a folder or a part of its path.");
  if (text.find_first_of("/*?\"<>|") != text.npos || HasControlCharacters(text)) {
    return Tr("A path cannot hold any of the characters / * ? \" < > |.");
  }
  return {};
}

// The folder that is cleaned or that a file lies in; null when it is missing.
std::unique_ptr<Folder> OpenForList(const Machine& machine, std::string_view path) {
  try {
    return machine.files.OpenFolder(path);
  } catch (const Error&) {
    return nullptr;
  }
}

std::string CannotBeCleaned(std::string_view path, const Sentence& why) {
  // TRANSLATORS: %2 begins with a small letter: "it is a whole drive."
  return why.empty() ? "" : Tr("%1 cannot be cleaned: %2", path, why.shown);
}

std::string WhyNoUserFile(const Machine& machine, std::string_view path) {
  if (const std::string why = WhyNoPath(path); !why.empty()) return Tr(why);
  const std::optional<FileInfo> info = machine.files.Look(path, Detail::kKind);
  if (path.ends_with('\\') || (info && info->is_folder)) {
    return Tr("%1 is a folder, not a file.", path);
  }
  const auto folder = OpenForList(machine, FolderPart(path));
  if (!folder) return {};
  return CannotBeCleaned(path, LoadPlaces(machine).WhyNotFile(*folder, path, Claim::kOwnList));
}

std::string WhyNoUserFolder(const Machine& machine, std::string_view path) {
  if (const std::string why = WhyNoPath(path); !why.empty()) return Tr(why);
  // A server need not answer for that to be known.
  if (path.starts_with("\\\\") && std::ranges::count(WithoutBackslash(path), '\\') < 4) {
    return Tr("%1 cannot be cleaned: it is a whole drive.", path);
  }
  const auto folder = OpenForList(machine, path);
  if (!folder) return {};
  return CannotBeCleaned(path, LoadPlaces(machine).WhyNot(*folder, "*.*", true, Claim::kOwnList));
}

// Extensions are listed without their dot.
std::string_view WithoutDot(std::string_view extension) {
  if (extension.starts_with("*.")) extension.remove_prefix(1);
  if (extension.starts_with('.')) extension.remove_prefix(1);
  return extension;
}

bool IsSame(std::string_view a, std::string_view b) {
  return EqualsNoCase(WithoutBackslash(TrimBlanks(a)), WithoutBackslash(TrimBlanks(b)));
}

}  // namespace

std::span<const ListPage, kListPages> ListPages() { return kPages; }

OptionList::OptionList(const Machine& machine, const ListPage& page)
    : machine_(machine), page_(page) {
  try {
    // The search takes its extensions from the user's own file alone.
    const bool own_only = page.page == OptionsPage::kIgnoredExtensions;
    rows_ = saved_ = Read(page.file, own_only ? "" : page.defaults);
  } catch (const Error& error) {
    problem_ = Tr("%1 could not be read, so it stays as it is. %2", page.file, Shown(error));
  }
}

std::vector<ListRow> OptionList::Read(std::string_view name, std::string_view default_name) const {
  std::vector<ListRow> rows;
  for (const std::string& line : ReadListFile(machine_, name, default_name)) {
    if (TrimBlanks(line).empty()) continue;
    rows.push_back(page_.has_ticks ? ParseListRow(line) : ListRow{.text = line});
  }
  return rows;
}

std::string OptionList::WhyNotText(std::string_view text) const {
  switch (page_.page) {
    case OptionsPage::kIgnoredFiles:
      return Tr(WhyNoName(text));
    case OptionsPage::kIgnoredExtensions:
      return WhyNoExtension(text);
    case OptionsPage::kIgnoredFolders:
      return WhyNoPartOfPath(text);
    case OptionsPage::kFileTypes:
      return WhyNoFileType(text);
    case OptionsPage::kUserFiles:
      return WhyNoUserFile(machine_, text);
    case OptionsPage::kKeep:
      return text.empty() ? Tr("Please enter what is to be kept.")
                          : Tr(ParseKeepLine(machine_.system, text).fault);
    default:
      return WhyNoUserFolder(machine_, text);
  }
}

std::string OptionList::WhyNot(std::string_view text, std::string_view description,
                               size_t own_row) const {
  if (!problem_.empty()) return problem_;
  std::string why = WhyNotText(text);
  if (!why.empty()) return why;
  if (HasControlCharacters(description)) return Tr("The description must be one line.");
  for (size_t row = 0; row < rows_.size(); ++row) {
    if (row == own_row || !IsSame(rows_[row].text, text)) continue;
    return page_.has_ticks ? Tr("File Type already exists in the list.")
                           : Tr("%1 is in the list already.", text);
  }
  return {};
}

std::string OptionList::Add(std::string_view text, std::string_view description) {
  rows_.push_back({page_.has_ticks, ""});
  std::string why = Change(rows_.size() - 1, text, description);
  if (!why.empty()) rows_.pop_back();
  return why;
}

std::string OptionList::Question(std::string_view text) const {
  text = TrimBlanks(text);
  if (page_.page != OptionsPage::kUserFolders || !WhyNotText(text).empty()) return {};
  const auto folder = OpenForList(machine_, text);
  if (!folder || !LoadPlaces(machine_).IsPersonal(*folder)) return {};
  return Tr(
      "%1 is one of your own folders. Each run of the item User-defined folders removes all files "
      "in it and below it. Add it?",
      text);
}

std::string OptionList::Change(size_t row, std::string_view text, std::string_view description) {
  text = TrimBlanks(text);
  if (page_.page == OptionsPage::kIgnoredExtensions) text = WithoutDot(text);
  description = TrimBlanks(description);
  std::string why = WhyNot(text, description, row);
  if (!why.empty()) return why;
  rows_[row].text = text;
  rows_[row].description = description;
  return {};
}

void OptionList::Remove(std::span<const size_t> rows) {
  for (size_t i = rows.size(); i-- > 0;) rows_.erase(rows_.begin() + static_cast<long>(rows[i]));
}

// A folder ends in "\", so that "C:\Temp" ignores no "C:\Templates".
std::string OptionList::FromPath(std::string_view path) const {
  return page_.browse == ListPage::kFolder ? WithBackslash(path) : std::string(path);
}

bool OptionList::HasDefaults() const {
  return *page_.defaults != '\0' && machine_.files.Look(FoundPath(machine_, page_.defaults));
}

std::string OptionList::RestoreDefaults() {
  if (!problem_.empty()) return problem_;
  try {
    rows_ = Read(page_.defaults, "");
    return {};
  } catch (const Error& error) {
    return Tr("The defaults could not be read. %1", Shown(error));
  }
}

void OptionList::Save() {
  if (!changed()) return;
  std::vector<std::string> lines;
  for (const ListRow& row : rows_) lines.push_back(page_.has_ticks ? FormatListRow(row) : row.text);
  WriteListFile(machine_, page_.file, lines);
  saved_ = rows_;
}

}  // namespace quellix
