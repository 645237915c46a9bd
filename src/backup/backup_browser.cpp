#include "backup/backup_browser.h"

#include <algorithm>
#include <tuple>

#include "backup/backup_names.h"
#include "backup/can_run.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "settings/settings.h"

namespace quellix {
namespace {

constexpr size_t kMostLines = 100;

// Sorts rows by a key that is made only once a row; equal rows keep their order.
template <typename Row, typename Key>
void SortRows(std::vector<Row>& rows, bool descending, Key key) {
  using Keyed = std::pair<decltype(key(rows[0])), size_t>;
  std::vector<Keyed> order;
  order.reserve(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) order.emplace_back(key(rows[i]), i);
  std::stable_sort(order.begin(), order.end(), [&](const Keyed& a, const Keyed& b) {
    return descending ? b.first < a.first : a.first < b.first;
  });
  std::vector<Row> sorted;
  sorted.reserve(rows.size());
  for (const Keyed& keyed : order) sorted.push_back(std::move(rows[keyed.second]));
  rows = std::move(sorted);
}

std::string StateOf(const BackupInfo& info) {
  if (!info.problem.empty()) return Tr("Cannot be read");
  return !info.incomplete.empty() ? Tr("Incomplete") : Tr("Whole");
}

std::string StateOf(const BackupEntry& entry) { return entry.refusal.empty() ? "" : Tr("Refused"); }

auto DateKey(const LocalTime& d) {
  return std::tuple(d.year, d.month, d.day, d.hour, d.minute, d.second);
}

}  // namespace

BackupBrowser::BackupBrowser(const Machine& machine)
    : machine_(machine),
      locale_(machine.system.UserLocale()),
      backups_(machine),
      mode_(StoredOverwriteMode(machine)) {}

std::string BackupBrowser::DateText(int64_t filetime) const {
  return filetime == 0 ? "" : FormatDateTime(machine_.system.ToLocalTime(filetime), locale_);
}

void BackupBrowser::Refresh(const Pause& pause) {
  archives_.clear();
  chosen_ = 0;
  outcome_.clear();
  try {
    archives_ = backups_.List(pause);
  } catch (const Error& error) {
    outcome_ = Shown(error);
  }
  OrderArchives();
  if (archives_.empty() && outcome_.empty())
    outcome_ = Tr("There are no backups in %1.", backups_.folder());
  for (const BackupInfo& info : archives_) {
    if (!info.incomplete.empty()) outcome_ += Tr("%1: %2", info.name, info.incomplete) + "\n";
    if (!info.problem.empty())
      outcome_ += Tr("%1 cannot be read: %2", info.name, info.problem) + "\n";
  }
  LoadEntries(pause);
}

const BackupInfo* BackupBrowser::Chosen() const {
  return chosen_ < archives_.size() ? &archives_[chosen_] : nullptr;
}

void BackupBrowser::ChooseArchive(size_t row, const Pause& pause) {
  chosen_ = row;
  outcome_.clear();
  LoadEntries(pause);
}

void BackupBrowser::LoadEntries(const Pause& pause) {
  entries_.clear();
  const BackupInfo* const info = Chosen();
  if (!info) return;
  try {
    entries_ = backups_.ListEntries(info->name, pause);
  } catch (const Error& error) {
    if (outcome_.empty()) outcome_ = Tr("%1 cannot be read: %2", info->name, Shown(error));
  }
  OrderEntries();
  std::vector<std::string> refusals;
  for (const BackupEntry& entry : entries_) {
    if (!entry.refusal.empty()) refusals.push_back(entry.refusal);
  }
  AppendLines(refusals);
}

// Nobody reads more than a window's worth.
void BackupBrowser::AppendLines(const std::vector<std::string>& lines) {
  const size_t shown = std::min(lines.size(), kMostLines);
  for (size_t i = 0; i < shown; ++i) outcome_ += lines[i] + "\n";
  if (const size_t more = lines.size() - shown) {
    outcome_ += TrN("The same goes for %1 more.", "The same goes for %1 more.", more,
                    FormatCount(more, locale_)) +
                "\n";
  }
}

std::string BackupBrowser::EntriesTitle() const {
  if (!Chosen()) return Tr("Files in the archive:");
  const bool registry = Chosen()->kind == BackupKind::kRegistry;
  return registry ? Tr("Registry keys in %1:", Chosen()->name) : Tr("Files in %1:", Chosen()->name);
}

std::string BackupBrowser::ArchiveText(size_t row, ArchiveColumn column) const {
  const BackupInfo& info = archives_[row];
  switch (column) {
    case ArchiveColumn::kDrive:
      return info.root.empty() ? info.name : Tr(WithoutBackslash(info.root));
    case ArchiveColumn::kDate:
      return FormatDateTime(info.date, locale_);
    case ArchiveColumn::kFiles:
      return info.problem.empty() ? FormatCount(info.entries, locale_) : "";
    case ArchiveColumn::kSize:
      return FormatCount(info.size, locale_);
    case ArchiveColumn::kState:
      return StateOf(info);
  }
  return "";
}

std::string BackupBrowser::ArchivePath(size_t row) const {
  return backups_.PathOf(archives_[row].name);
}

std::optional<double> BackupBrowser::ArchiveSize(size_t row) const {
  if (row >= archives_.size()) return std::nullopt;
  return static_cast<double>(archives_[row].size);
}

std::string BackupBrowser::WhyNoArchives() const {
  return Tr(
      "There are no backups in %1. They are made when the page Deletion of the options says so.",
      backups_.folder());
}

std::optional<double> BackupBrowser::EntrySize(size_t row) const {
  if (row >= entries_.size()) return std::nullopt;
  return static_cast<double>(entries_[row].size);
}

std::string BackupBrowser::WhyNoEntries() const {
  return Chosen() ? Tr("Nothing can be read of this archive; the outcome below says why.")
                  : Tr("Choose an archive above to see what is in it.");
}

std::string BackupBrowser::EntryPlace(size_t row) const {
  const BackupInfo* const info = Chosen();
  return info ? info->root + entries_[row].path : "";
}

std::string BackupBrowser::EntryText(size_t row, EntryColumn column) const {
  const BackupEntry& entry = entries_[row];
  switch (column) {
    case EntryColumn::kPath:
      return entry.path;
    case EntryColumn::kSize:
      return FormatCount(entry.size, locale_);
    case EntryColumn::kDate:
      return DateText(entry.last_write);
    case EntryColumn::kAttributes:
      return AttributeLetters(entry.attributes, "");
    case EntryColumn::kState:
      return StateOf(entry);
  }
  return "";
}

void BackupBrowser::SortArchives(ArchiveColumn column) {
  archive_order_.Choose(column);
  const std::string name = Chosen() ? Chosen()->name : "";
  OrderArchives();
  const auto found = std::ranges::find(archives_, name, &BackupInfo::name);
  chosen_ = static_cast<size_t>(found - archives_.begin());
}

void BackupBrowser::OrderArchives() {
  const auto sort = [this](auto key) { SortRows(archives_, archive_order_.descending, key); };
  switch (archive_order_.column) {
    case ArchiveColumn::kDrive:
      return sort([](const BackupInfo& info) { return UpCase(info.root); });
    case ArchiveColumn::kDate:
      return sort([](const BackupInfo& info) { return DateKey(info.date); });
    case ArchiveColumn::kFiles:
      return sort([](const BackupInfo& info) { return info.entries; });
    case ArchiveColumn::kSize:
      return sort([](const BackupInfo& info) { return info.size; });
    case ArchiveColumn::kState:
      return sort([](const BackupInfo& info) { return StateOf(info); });
  }
}

void BackupBrowser::SortEntries(EntryColumn column) {
  entry_order_.Choose(column);
  OrderEntries();
}

void BackupBrowser::OrderEntries() {
  const auto sort = [this](auto key) { SortRows(entries_, entry_order_.descending, key); };
  switch (entry_order_.column) {
    case EntryColumn::kPath:
      return sort([](const BackupEntry& entry) { return UpCase(entry.path); });
    case EntryColumn::kSize:
      return sort([](const BackupEntry& entry) { return entry.size; });
    case EntryColumn::kDate:
      return sort([](const BackupEntry& entry) { return entry.last_write; });
    case EntryColumn::kAttributes:
      return sort([](const BackupEntry& entry) { return AttributeLetters(entry.attributes, ""); });
    case EntryColumn::kState:
      return sort([](const BackupEntry& entry) { return StateOf(entry); });
  }
}

BackupBrowser::Commands BackupBrowser::Available(size_t selected) const {
  const bool any = !entries_.empty();
  const bool files = Chosen() && Chosen()->kind == BackupKind::kFiles;
  const bool incomplete = files && !Chosen()->incomplete.empty();
  return {.view = selected == 1,
          .restore_selected = any && selected > 0,
          .restore_all = any,
          .restore_into = any && files,
          .repair = incomplete && IsArchiveName(NamePart(Chosen()->name)),
          .delete_archive = Chosen() != nullptr};
}

std::string BackupBrowser::View(size_t row, const Pause& pause) {
  const BackupEntry& entry = entries_[row];
  try {
    if (!entry.refusal.empty()) throw Error(Error::Kind::kDenied, entry.refusal);
    viewed_.push_back(backups_.ExtractTemporary(Chosen()->name, entry.path, pause));
    if (!CanRun(machine_, viewed_.back())) {
      outcome_ = Tr("A copy of %1 is opened.", entry.path);
      return viewed_.back();
    }
    outcome_ = Tr("%1 may be a program, so it is not opened; its copy is in the folder shown.",
                  entry.path);
    return std::string(WithoutBackslash(FolderPart(viewed_.back())));
  } catch (const Error& error) {
    outcome_ = Tr("%1 cannot be viewed: %2", entry.path, Shown(error));
    return "";
  }
}

void BackupBrowser::RestoreSelected(std::span<const size_t> rows, Prompts& prompts,
                                    const Pause& pause) {
  if (rows.empty()) return Tell(Tr("Nothing is selected."));
  Restore(rows, "", prompts, pause);
}

void BackupBrowser::Restore(std::span<const size_t> rows, std::string_view folder, Prompts& prompts,
                            const Pause& pause) {
  const BackupInfo* const info = Chosen();
  if (!info) return Tell(Tr("There is no backup to restore from."));
  RestoreOrder order{{}, std::string(folder), mode_};
  for (const size_t row : rows) order.entry_paths.push_back(entries_[row].path);
  try {
    const RestoreResult result = backups_.Restore(info->name, order, prompts, pause);
    outcome_ = RestoredText(result, *info, folder.empty() ? info->root : order.to);
    AppendLines(result.problems);
  } catch (const Error& error) {
    outcome_ = Tr("Nothing is restored. %1", Shown(error));
  }
}

std::string BackupBrowser::RestoredText(const RestoreResult& result, const BackupInfo& from,
                                        const std::string& to) const {
  const std::string count = FormatCount(result.restored, locale_);
  std::string text =
      from.kind == BackupKind::kRegistry
          ? TrN("%1 registry key restored to the registry",
                "%1 registry keys restored to the registry", result.restored, count)
          : TrN("%1 file restored to %2", "%1 files restored to %2", result.restored, count, to);
  if (result.skipped > 0) {
    text += ", " + TrN("%1 left as they were", "%1 left as they were", result.skipped,
                       FormatCount(result.skipped, locale_));
  }
  // TRANSLATORS: %1 is "3 files restored to C:\\".
  return (result.cancelled ? Tr("%1; stopped at your wish.", text) : text + ".") + "\n";
}

void BackupBrowser::RepairArchive(const Pause& pause) {
  if (!Available(0).repair) return;
  const std::string name = Chosen()->name;
  try {
    std::string repaired = backups_.Repair(name, pause);
    if (repaired.empty()) repaired = Tr("The archive is whole; there is nothing to repair.");
    archives_[chosen_] = backups_.Check(name, pause);
    Tell(Tr("%1: %2", name, repaired) + "\n");
  } catch (const Error& error) {
    Tell(Tr("%1 is not repaired. %2", name, Shown(error)));
  }
  LoadEntries(pause);
}

void BackupBrowser::DeleteArchive(const Pause& pause) {
  const BackupInfo* const info = Chosen();
  if (!info) return;
  const std::string name = info->name;
  const size_t row = chosen_;
  try {
    backups_.Delete(name);
  } catch (const Error& error) {
    return Tell(Tr("%1 is not deleted. %2", name, Shown(error)));
  }
  archives_.erase(archives_.begin() + static_cast<std::ptrdiff_t>(row));
  if (row > 0 && row == archives_.size()) chosen_ = row - 1;
  outcome_ = Tr("%1 is deleted.", name) + "\n";
  LoadEntries(pause);
}

void BackupBrowser::SetMode(OverwriteMode mode) {
  mode_ = mode;
  try {
    StoreOverwriteMode(machine_, mode);
  } catch (const Error& error) {
    outcome_ = Tr("The choice holds for this window only. %1", Shown(error));
  }
}

// The folders above go as far as they are empty.
void BackupBrowser::RemoveViewed() {
  const std::string temporary = machine_.system.TempFolder();
  for (const std::string& path : viewed_) {
    try {
      machine_.files.RemoveFile(path);
      std::string folder(WithoutBackslash(FolderPart(path)));
      while (folder.size() > temporary.size()) {
        machine_.files.RemoveFolder(folder);
        folder = WithoutBackslash(FolderPart(folder));
      }
    } catch (const Error&) {
      continue;
    }
  }
}

}  // namespace quellix
