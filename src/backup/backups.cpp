#include "backup/backups.h"

#include <algorithm>
#include <tuple>

#include "backup/c_un_zip.h"
#include "backup/registry_backups.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/own_files.h"
#include "settings/settings.h"

namespace quellix {
Backups::Backups(const Machine& machine) : Backups(machine, Settings(machine).Load().BackupFolder) {
  if (FoundFolders(machine).size() == 1) return;
  const std::string beside = Settings(BesideProgram(machine)).Load().BackupFolder;
  if (!EqualsNoCase(beside, folder())) folders_.push_back(beside);
}

Backups::Backups(const Machine& machine, std::string folder)
    : machine_(machine), folders_{std::move(folder)} {
  readers_.push_back(std::make_unique<cUnZip>(machine));
  readers_.push_back(std::make_unique<RegistryBackups>(machine));
}

std::string Backups::PathOf(std::string_view name) const {
  const std::string_view last = NamePart(name);
  const bool is_plain = last == name && name.find_first_of("/:") == name.npos;
  if (name.empty() || !(is_plain || (!last.empty() && NameOf(name)))) {
    throw Error(Error::Kind::kMissing, Say("\"%1\" is no archive of the backup folder.", name));
  }
  return is_plain ? folder() + std::string(name) : std::string(name);
}

std::optional<std::string> Backups::NameOf(std::string_view path) const {
  const std::string_view in = FolderPart(path);
  if (EqualsNoCase(in, folder())) return std::string(NamePart(path));
  const bool is_second = folders_.size() > 1 && EqualsNoCase(in, folders_[1]);
  return is_second ? std::optional(std::string(path)) : std::nullopt;
}

BackupReader* Backups::ReaderOf(std::string_view name) const {
  const auto takes = [name](const auto& reader) { return reader->Takes(NamePart(name)); };
  const auto reader = std::ranges::find_if(readers_, takes);
  return reader == readers_.end() ? nullptr : reader->get();
}

// What another name hides is read as an archive, or refused as none.
BackupReader& Backups::Reader(std::string_view name) const {
  BackupReader* const reader = ReaderOf(name);
  return reader ? *reader : *readers_.front();
}

std::vector<std::string> Backups::NamesIn(std::string_view folder) const {
  std::vector<std::string> names;
  machine_.files.Enumerate(WithoutBackslash(folder), Detail::kKind, [&](const Entry& entry) {
    if (!entry.info.is_folder && ReaderOf(entry.name)) names.emplace_back(entry.name);
    return true;
  });
  return names;
}

std::vector<BackupInfo> Backups::List(const Pause& pause) {
  std::vector<std::string> names = NamesIn(folder());
  if (folders_.size() > 1) try {
      for (const std::string& name : NamesIn(folders_[1])) names.push_back(folders_[1] + name);
    } catch (const Error&) {  // none of it is for this user
    }
  std::vector<BackupInfo> backups;
  for (const std::string& name : names) {
    backups.push_back(ReaderOf(name)->Describe(PathOf(name), pause));
    backups.back().name = name;
  }
  const auto key = [](const BackupInfo& info) {
    const LocalTime& d = info.date;
    return std::tuple(-d.year, -d.month, -d.day, -d.hour, -d.minute, -d.second, info.name);
  };
  std::ranges::sort(backups, {}, key);
  return backups;
}

BackupInfo Backups::Check(std::string_view name, const Pause& pause) {
  BackupInfo info = Reader(name).Describe(PathOf(name), pause);
  info.name = name;
  if (!info.problem.empty()) throw Error(Error::Kind::kOther, info.problem);
  return info;
}

std::vector<BackupEntry> Backups::ListEntries(std::string_view name, const Pause& pause) {
  return Reader(name).ListEntries(PathOf(name), pause);
}

std::string Backups::Repair(std::string_view name, const Pause& pause) {
  return Reader(name).Repair(PathOf(name), pause);
}

std::string Backups::ExtractTemporary(std::string_view name, std::string_view entry_path,
                                      const Pause& pause) {
  return Reader(name).ExtractTemporary(PathOf(name), entry_path, pause);
}

RestoreResult Backups::Restore(std::string_view name, const RestoreOrder& order, Prompts& prompts,
                               const Pause& pause) {
  return Reader(name).Restore(PathOf(name), order, prompts, pause);
}

void Backups::Delete(std::string_view name) { machine_.files.RemoveFile(PathOf(name)); }

std::string Counted(const std::string& number, BackupKind kind) {
  const char* const what = kind == BackupKind::kRegistry ? " registry key" : " file";
  return number + what + (number == "1" ? "" : "s");
}

OverwriteMode StoredOverwriteMode(const Machine& machine) {
  return ParseOverwriteMode(Settings(machine).Load().overwrite).value_or(OverwriteMode::kAsk);
}

void StoreOverwriteMode(const Machine& machine, OverwriteMode mode) {
  Settings settings(machine);
  const Preferences stored = settings.Load();
  Preferences preferences = stored;
  preferences.overwrite = OverwriteWord(mode);
  settings.Save(preferences, stored, false);
}

std::string AttributeLetters(uint32_t attributes, std::string_view absent) {
  static constexpr std::pair<uint32_t, char> kLetters[] = {
      {kReadOnly, 'R'}, {kHidden, 'H'}, {kSystem, 'S'}, {kArchive, 'A'}};
  std::string letters;
  for (const auto& [bit, letter] : kLetters) {
    (attributes & bit) != 0 ? letters += letter : letters += absent;
  }
  return letters;
}

}  // namespace quellix
