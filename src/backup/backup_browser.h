#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "backup/backups.h"

namespace quellix {

enum class ArchiveColumn { kDrive, kDate, kFiles, kSize, kState };
inline constexpr size_t kArchiveColumns = 5;
enum class EntryColumn { kPath, kSize, kDate, kAttributes, kState };
inline constexpr size_t kEntryColumns = 5;

// By which column a list is sorted. The same column again turns the order around.
template <typename Column>
struct SortOrder {
  Column column;
  bool descending = false;
  void Choose(Column chosen) {
    descending = chosen == column && !descending;
    column = chosen;
  }
};

// What the Backups window shows and does: the backups of the backup folder ("archives", of whatever
// kind), the entries of the chosen one, and commands, each of which leaves its outcome in words. No
// function throws; what fails is said in outcome().
class BackupBrowser {
 public:
  struct Commands {
    bool view = false, restore_selected = false, restore_all = false, restore_into = false,
         repair = false, delete_archive = false;
  };

  // Of the folder that the settings name; nothing is read before Refresh.
  explicit BackupBrowser(const Machine& machine);
  // Removes what View left, as far as nobody holds it open.
  ~BackupBrowser() { RemoveViewed(); }
  BackupBrowser(const BackupBrowser&) = delete;
  BackupBrowser& operator=(const BackupBrowser&) = delete;

  // Reads the archives anew, changing none, and chooses the first.
  void Refresh(const Pause& pause = {});

  size_t ArchiveCount() const { return archives_.size(); }
  std::string ArchiveText(size_t row, ArchiveColumn column) const;
  std::string ArchivePath(size_t row) const;  // full
  // In bytes, as its text tells; nothing for what has none, and behind the last row.
  std::optional<double> ArchiveSize(size_t row) const;
  // Why there are none, and what to do.
  std::string WhyNoArchives() const;
  void SortArchives(ArchiveColumn column);
  const SortOrder<ArchiveColumn>& archive_order() const { return archive_order_; }
  // Reads its entries.
  void ChooseArchive(size_t row, const Pause& pause = {});
  // "Files in C_141120269057.zip:"
  std::string EntriesTitle() const;
  // The chosen archive; null when there is none.
  const BackupInfo* Chosen() const;
  size_t ChosenRow() const { return chosen_; }

  size_t EntryCount() const { return entries_.size(); }
  std::string EntryText(size_t row, EntryColumn column) const;
  std::string EntryPlace(size_t row) const;  // where it belongs: a full path or a registry key
  std::optional<double> EntrySize(size_t row) const;
  std::string WhyNoEntries() const;
  void SortEntries(EntryColumn column);
  const SortOrder<EntryColumn>& entry_order() const { return entry_order_; }

  // What can be done while that many entries are selected.
  Commands Available(size_t selected) const;

  // Makes a temporary copy of an entry. What to open: the copy, or the folder it is in where it may
  // be a program; "" when that failed.
  std::string View(size_t row, const Pause& pause = {});
  // Puts the entries of these rows back to where they were; no rows, no files.
  void RestoreSelected(std::span<const size_t> rows, Prompts& prompts, const Pause& pause = {});
  void RestoreAll(Prompts& prompts, const Pause& pause = {}) { Restore({}, "", prompts, pause); }
  // Puts the entries of these rows, or all when there are none, below a folder.
  void RestoreInto(std::span<const size_t> rows, std::string_view folder, Prompts& prompts,
                   const Pause& pause = {}) {
    Restore(rows, folder, prompts, pause);
  }
  // Makes the chosen archive whole.
  void RepairArchive(const Pause& pause = {});
  // Deletes the chosen archive.
  void DeleteArchive(const Pause& pause = {});

  OverwriteMode mode() const { return mode_; }
  // For this window and, in the settings, for the next.
  void SetMode(OverwriteMode mode);

  // What the last command did, in lines.
  const std::string& outcome() const { return outcome_; }
  void Tell(std::string text) { outcome_ = std::move(text); }

 private:
  void LoadEntries(const Pause& pause);
  std::string RestoredText(const RestoreResult& result, const BackupInfo& from,
                           const std::string& to) const;
  void AppendLines(const std::vector<std::string>& lines);
  void OrderArchives();
  void OrderEntries();
  void Restore(std::span<const size_t> rows, std::string_view folder, Prompts& prompts,
               const Pause& pause);
  std::string DateText(int64_t filetime) const;
  void RemoveViewed();

  Machine machine_;
  Locale locale_;
  Backups backups_;
  OverwriteMode mode_;
  std::vector<BackupInfo> archives_;
  std::vector<BackupEntry> entries_;
  size_t chosen_ = 0;
  SortOrder<ArchiveColumn> archive_order_{ArchiveColumn::kDate, true};
  SortOrder<EntryColumn> entry_order_{EntryColumn::kPath};
  std::vector<std::string> viewed_;
  std::string outcome_;
};

}  // namespace quellix
