#include "backup/registry_backups.h"

#include <algorithm>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "backup/backup_names.h"
#include "backup/reg_file.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr uint64_t kLargestFile = 1u << 30;  // bytes
constexpr size_t kLevelsToAHive = 4;         // as in HKEY_USERS\S-1-5-...\Software\Classes
constexpr size_t kLongestCopyName = 80;

std::string NameOf(const RegFileKey& key) {
  const std::string root(RootName(key.root));
  return key.path.empty() ? root : root + "\\" + key.path;
}

std::string PartOf(const RegFileKey& key) {
  RegFileText text;
  text.AddKey(key.root, key.path);
  for (const auto& [name, value] : key.values) text.AddValue(name, value);
  return text.Bytes();
}

// Keys that a window changed more than once stand once, each value as it was before all of that.
std::vector<RegFileKey> Merged(std::vector<RegFileKey> keys) {
  std::vector<RegFileKey> merged;
  std::unordered_map<std::string, size_t> places;
  for (RegFileKey& key : keys) {
    const auto [place, is_new] = places.try_emplace(UpCase(NameOf(key)), merged.size());
    if (is_new) {
      merged.push_back(std::move(key));
      continue;
    }
    auto& values = merged[place->second].values;
    for (auto& value : key.values) {
      const auto is_same = [&](const auto& old) { return EqualsNoCase(old.first, value.first); };
      if (std::ranges::none_of(values, is_same)) values.push_back(std::move(value));
    }
  }
  return merged;
}

RegFile ReadFile(FileSystem& files, const std::string& path, const Pause& pause) {
  const auto bytes = files.ReadWholeFile(path, kLargestFile);
  if (!bytes) throw Error(Error::Kind::kMissing, Say("There is no backup %1.", path));
  RegFile file = ParseRegFile(*bytes, [&](const Progress& progress) {
    return pause({progress.done, progress.total, NamePart(path), Mark("Reading")});
  });
  file.keys = Merged(std::move(file.keys));
  return file;
}

std::vector<RegFileKey> Read(FileSystem& files, const std::string& path, const Pause& pause) {
  return ReadFile(files, path, pause).keys;
}

class RegRestore {
 public:
  // `total` is the sum of the keys' values.
  RegRestore(Registry& registry, OverwriteMode mode, Prompts& prompts, const Pause& pause,
             uint64_t total)
      : registry_(registry),
        mode_(mode),
        prompts_(prompts),
        pause_(pause),
        progress_{.total = total, .work = Mark("Restoring")} {}

  void Restore(const RegFileKey& key) {
    const std::string key_name = NameOf(key);
    progress_.path = key_name;
    if (Stops()) return;
    try {
      std::shared_ptr<RegistryKey> opened = Open(key);
      if (!opened) {
        progress_.done += key.values.size();
        ++result.restored;
        return;
      }
      bool all = true;
      for (const auto& [name, value] : key.values) {
        if (Stops()) break;
        all &= TryRestoreValue(*opened, key_name, name, value);
        ++progress_.done;
      }
      to_store_[HiveOf(key)] = std::move(opened);
      if (!result.cancelled) ++(all ? result.restored : result.skipped);
    } catch (const Error& error) {
      result.problems.push_back(Tr("%1: %2", key_name, Shown(error)));
    }
  }

  // A volume's hives are written whole, so once at the end.
  void Store() {
    for (const auto& [name, key] : to_store_) {
      try {
        key->Flush();
      } catch (const Error& error) {
        result.problems.push_back(Shown(error));
      }
    }
  }

  RestoreResult result;

 private:
  bool Stops() {
    if (pause_(progress_)) result.cancelled = true;
    return result.cancelled;
  }

  static std::string HiveOf(const RegFileKey& key) {
    size_t end = 0;
    for (size_t level = 0; level < kLevelsToAHive && end != std::string::npos; ++level) {
      end = key.path.find('\\', end + 1);
    }
    return std::string(RootName(key.root)) + "\\" + UpCase(key.path.substr(0, end));
  }

  // Null where nothing was in it, and it is not there.
  std::unique_ptr<RegistryKey> Open(const RegFileKey& key) {
    const bool has_any =
        std::ranges::any_of(key.values, [](const auto& value) { return value.second.has_value(); });
    if (has_any || key.values.empty()) return registry_.Create(key.root, key.path);
    return registry_.Open(key.root, key.path, RegistryAccess::kWrite);
  }

  // One that cannot be written keeps none of the others back.
  bool TryRestoreValue(RegistryKey& key, const std::string& key_name, const std::string& name,
                       const std::optional<RegistryValue>& value) {
    try {
      return RestoreValue(key, key_name, name, value);
    } catch (const Error& error) {
      result.problems.push_back(Tr("%1: %2", key_name + "\\" + name, Shown(error)));
      return false;
    }
  }

  bool RestoreValue(RegistryKey& key, const std::string& key_name, const std::string& name,
                    const std::optional<RegistryValue>& value) {
    const auto present = key.QueryValue(name);
    if (!present && !value) return true;
    if (present && value && present->type == value->type && present->bytes == value->bytes)
      return true;
    if (present && !MayReplace(key_name + "\\" + name)) return false;
    value ? key.SetValue(name, *value) : static_cast<void>(key.DeleteValue(name));
    return true;
  }

  bool MayReplace(const std::string& name) {
    if (mode_ != OverwriteMode::kAsk) return mode_ == OverwriteMode::kAlways;
    const OverwriteAnswer answer = prompts_.AskOverwrite(name);
    if (answer == OverwriteAnswer::kAll) mode_ = OverwriteMode::kAlways;
    if (answer == OverwriteAnswer::kNone) mode_ = OverwriteMode::kNever;
    if (answer == OverwriteAnswer::kCancel) result.cancelled = true;
    return answer == OverwriteAnswer::kYes || answer == OverwriteAnswer::kAll;
  }

  Registry& registry_;
  OverwriteMode mode_;
  Prompts& prompts_;
  const Pause& pause_;
  Progress progress_;
  std::map<std::string, std::shared_ptr<RegistryKey>> to_store_;
};

// The keys that were asked for; those that are none of the file's become problems.
std::vector<RegFileKey> Chosen(std::vector<RegFileKey> keys, const std::vector<std::string>& paths,
                               std::vector<std::string>& problems) {
  if (paths.empty()) return keys;
  std::unordered_set<std::string> wanted;
  for (const std::string& path : paths) wanted.insert(UpCase(std::string_view(path)));
  std::erase_if(keys, [&](const RegFileKey& key) { return !wanted.contains(UpCase(NameOf(key))); });
  for (const RegFileKey& key : keys) wanted.erase(UpCase(NameOf(key)));
  for (const std::string& path : paths) {
    if (!wanted.contains(UpCase(std::string_view(path)))) continue;
    problems.push_back(Tr("%1 is not in this backup.", path));
  }
  return keys;
}

}  // namespace

bool RegistryBackups::Takes(std::string_view name) const { return MatchesMask(name, "R_*.reg"); }

BackupInfo RegistryBackups::Describe(const std::string& path, const Pause& pause) {
  BackupInfo info;
  info.name = NamePart(path);
  info.kind = BackupKind::kRegistry;
  info.root = Mark("Registry");
  try {
    const auto file = machine_.files.Look(path);
    if (!file) throw Error(Error::Kind::kMissing, Say("There is no such backup."));
    info.size = file->size;
    info.date = DateOfArchive(info.name).value_or(machine_.system.ToLocalTime(file->last_write));
    const RegFile read = ReadFile(machine_.files, path, pause);
    info.entries = read.keys.size();
    if (read.is_cut_off)
      info.incomplete = Tr("The file was cut off: what is whole can be restored.");
  } catch (const Error& error) {
    info.problem = Shown(error);
  }
  return info;
}

std::vector<BackupEntry> RegistryBackups::ListEntries(const std::string& path, const Pause& pause) {
  std::vector<BackupEntry> entries;
  for (const RegFileKey& key : Read(machine_.files, path, pause)) {
    BackupEntry entry;
    entry.path = NameOf(key);
    entry.size = PartOf(key).size();
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::string RegistryBackups::Repair(const std::string& path, const Pause& pause) {
  if (!ReadFile(machine_.files, path, pause).is_cut_off) return "";
  throw NotAvailable(
      Say("Copies of registry entries are not repaired: what is whole is restored."));
}

std::string RegistryBackups::ExtractTemporary(const std::string& path, std::string_view entry_path,
                                              const Pause& pause) {
  std::vector<std::string> problems;
  const auto keys = Chosen(Read(machine_.files, path, pause), {std::string(entry_path)}, problems);
  if (keys.empty()) throw Error(Error::Kind::kMissing, problems.front());
  const std::string_view backup = NamePart(path);
  const std::string folder = machine_.system.TempFolder() + "Quellix\\" +
                             std::string(backup.substr(0, backup.rfind('.'))) + "\\";
  std::u16string name = ToUtf16(NamePart(entry_path)).substr(0, kLongestCopyName);
  std::ranges::replace_if(
      name,
      [](char16_t c) {
        return c < 0x20 || std::u16string_view(u"<>:\"/|?*. ").find(c) != std::u16string_view::npos;
      },
      u'_');
  std::string copy = folder + ToUtf8(name) + ".txt";
  MakeFolders(machine_.files, WithoutBackslash(folder));
  machine_.files.WriteWholeFile(copy, RegFileHeader() + PartOf(keys.front()));
  return copy;
}

RestoreResult RegistryBackups::Restore(const std::string& path, const RestoreOrder& order,
                                       Prompts& prompts, const Pause& pause) {
  if (!order.to.empty()) {
    throw Error(Error::Kind::kOther, Say("Registry keys can be restored to where they were only."));
  }
  std::vector<std::string> problems;
  const auto keys = Chosen(Read(machine_.files, path, pause), order.entry_paths, problems);
  uint64_t values = 0;
  for (const RegFileKey& key : keys) values += key.values.size();
  RegRestore restore(machine_.registry, order.mode, prompts, pause, values);
  restore.result.problems = std::move(problems);
  for (const RegFileKey& key : keys) {
    if (!restore.result.cancelled) restore.Restore(key);
  }
  restore.Store();
  return std::move(restore.result);
}

}  // namespace quellix
