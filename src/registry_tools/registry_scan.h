#pragma once

#include <array>
#include <deque>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "backup/backup_reader.h"
#include "backup/registry_undo.h"
#include "platform/machine.h"
#include "registry_tools/mod_registry.h"
#include "registry_tools/registry_eraser.h"
#include "run/protected_places.h"
#include "run/views.h"
#include "settings/settings.h"

namespace quellix {

// Not judged is what this machine cannot know of: of a volume a drive that is not mapped, a
// relative name, a path with switches behind it.
enum class RowMark { kNone, kOrphaned, kValid, kNotJudged };
inline constexpr size_t kMostScanColumns = 7;

// One reference, as its list shows it and as the registry holds it.
struct ScanRow {
  std::array<std::string, kMostScanColumns> texts;
  RowMark mark = RowMark::kNone;
  bool checked = false;
  RegistryRoot root = RegistryRoot::kLocalMachine;
  std::string key, name;  // the key, and the value where the reference is one
  std::string file;       // full path, where the file can be deleted too
  // A file that the row itself is, which goes to the recycle bin; "" for what is in the registry.
  std::string own_file = {};
  Claim own_claim = Claim::kOwnList;  // by which it goes
  std::string why_stays = {};         // why it cannot be deleted, a sentence; "" where it can
  size_t entry = 0;                   // the tool's own number of it
  // What it was when it was listed, where the tool looks again.
  std::string state = {};
};

// What else can be done with a row than to delete it.
enum class ScanAction { kEnable, kDisable, kStart, kChoose };

struct ScanColumn {
  const char* title;  // named for the catalogues
  bool number = false;
};

// A count in 16 bits that stays at the highest, as ever.
class SmallCount {
 public:
  void Add() {
    if (count_ < INT16_MAX) ++count_;
  }
  int value() const { return count_; }

 private:
  int16_t count_ = 0;
};

// "Delete 3 references from the registry?", the number as its user writes it.
std::string AskToDeleteReferences(uint64_t count, const std::string& shown);

// What makes one tool differ from another to its user.
struct ScanTraits {
  const char* name;   // on the console
  const char* title;  // named for the catalogues
  std::span<const ScanColumn> columns;
  bool has_progress = true;    // it knows how many entries there are
  bool deletes_files = false;  // chkDelete
  bool edits = false;          // cmdEdit
  bool sorts = false;          // by a click on a column
  bool has_thorough = false;   // the box "Thorough"
  bool freezes = true;         // painting of the list while it scans
  bool rescans = false;        // after a deletion
  bool ticks = true;           // orphaned rows at first
  bool keeps_stayed = false;   // what could not be deleted stays in the list
  bool looks_again = false;    // before a deletion: what has changed since it was listed stays
  std::span<const ScanAction> actions = {};
  std::string (*question)(uint64_t count, const std::string& shown) = AskToDeleteReferences;
};

// Shows what a scan does. Calls are frequent: an implementation paints at its own pace.
class ScanView {
 public:
  virtual ~ScanView() = default;
  // Status, progress or commands have changed.
  virtual void ShowState() = 0;
  // A message box.
  virtual void ShowProblem(std::string_view sentence) = 0;
};

// A tool that lists the references of one registry area and deletes the checked ones: what all of
// them share. Registry failures are silent, as in mod_registry; what is told in a message is a
// damaged hive, and an undo file that could not be written; the status tells how many references
// could not be deleted.
class RegistryScan {
 public:
  // `view` and the ports must outlive it.
  RegistryScan(const Machine& machine, ScanView& view, const ScanTraits& traits);
  virtual ~RegistryScan() = default;
  RegistryScan(const RegistryScan&) = delete;
  RegistryScan& operator=(const RegistryScan&) = delete;

  const ScanTraits& traits() const { return traits_; }

  // Whether Timer1 is to start a scan: at first, and after a deletion or an edit that asks for one.
  bool timer_enabled() const { return timer_enabled_; }
  // A stop ends it with the rows there are by then. Progress is told where the tool shows one.
  void StartScan(const Pause& pause = {});
  bool is_scanning() const { return scanning_; }
  bool is_frozen() const { return scanning_ && traits_.freezes; }
  // For the next scan; where the tool has that box.
  void SetThorough(bool thorough) { thorough_ = thorough; }

  const std::string& status() const { return status_; }

  size_t RowCount() const { return rows_.size(); }
  const ScanRow& row(size_t index) const { return rows_[index]; }
  // The key of its reference, or that which holds its value: "HKEY_LOCAL_MACHINE\\Software".
  std::string KeyOfRow(size_t index) const;
  void SetChecked(size_t index, bool checked) { rows_[index].checked = checked; }

  // Deletes the references of the checked rows, from the last to the first, without a question;
  // their files as well with `files_also`, where the tool has that box. The rows go even when a
  // deletion fails; stayed() and failure() then tell how many stayed, and why the first one did.
  // Those that a stop kept from their turn stay, checked.
  void DeleteChecked(bool files_also, const Pause& pause = {});
  // The same for rows of a user's choice, whether checked or not.
  void DeleteRows(std::vector<size_t> rows, bool files_also, const Pause& pause = {});
  std::vector<size_t> CheckedRows() const;
  // What to ask before that many references are deleted, a verb first; "" where the settings ask
  // for no question, and for none.
  std::string QuestionFor(size_t count, bool files_also) const;
  // Whether something of traits().actions can be done with a row as it is.
  virtual bool Offers(ScanAction, size_t) const { return false; }
  // What to ask before it is done with a row; "" for nothing.
  virtual std::string QuestionForAction(ScanAction, size_t) const { return {}; }
  // What could stand where a row's reference does (kChoose), and putting it there; the next scan
  // shows it. Throws Error.
  virtual std::vector<std::string> ChoicesFor(size_t) const { return {}; }
  virtual void Choose(size_t, const std::string& /*choice*/) {}
  // Does it with those rows that it can be done with; stayed() and failure() tell of the others.
  void Act(ScanAction action, const std::vector<size_t>& rows, const Pause& pause = {});
  size_t stayed() const { return erased_.stayed; }
  const std::string& failure() const { return erased_.problem.shown; }
  // The .reg file of this window's deletions, "" when there is none.
  const std::string& undo_path() const { return undo_.path(); }
  // Puts what it holds back into the registry; a scan is due then. `prompts` is asked where other
  // values have come since. When all of it is back the file is this window's no more. Throws Error
  // when it cannot be read.
  RestoreResult Undo(Prompts& prompts, const Pause& pause = {});
  // Files that went with the references since then, which Undo does not bring back.
  size_t files_gone() const { return files_gone_; }

  // A click on a column: sorted by it, in the other order than before.
  void SortBy(size_t column);
  std::optional<size_t> sorted_by() const { return sorted_by_; }
  bool descending() const { return descending_; }

  // Asks for a new location of a row's file, in the form its second column has; nothing when the
  // user cancels.
  virtual std::optional<std::string> Browse(size_t, Prompts&) { return std::nullopt; }
  // Writes the location that the edit dialog of a row ended with, when it is another one.
  virtual void SaveEdit(size_t, std::string_view) {}
  // The edit dialog was closed.
  void EndEdit() { timer_enabled_ = true; }

 protected:
  virtual void ScanRegistry() = 0;
  // What goes from the registry with a row.
  virtual RegistryTarget TargetOf(const ScanRow& row) const = 0;
  // Of what Offers says: changes the row as well. Throws Error.
  virtual void Do(ScanAction, ScanRow&) {}
  // What a tool has seen of the machine counts no more: rows will be looked at again.
  virtual void ForgetWhatWasSeen() {}
  // Why a row must not go as it was listed, a sentence; "" where it is as it was then, and where it
  // is gone. What it says behind a stop does not count.
  virtual std::string WhyChanged(const ScanRow& row, const Pause& pause);
  // Keeps a value that is about to be changed, or that there is none, where the settings want that:
  // as it was before the first of this window's changes. Throws NotKept.
  void KeepValue(RegistryRoot root, std::string_view key, std::string_view name);
  // The status from the rows that are left, where no scan follows.
  virtual std::string Recounted() const { return status_; }

  const Machine& machine() const { return machine_; }
  modRegistry::Access access() const { return {machine_.registry, machine_.system}; }
  ScanView& view() { return view_; }
  // A pause of the scan, behind which it may be stopped.
  bool Stops();
  bool is_stopped() const { return stopped_; }
  // The same for a list that is read whole before: the stop takes effect behind it.
  Pause PauseForList() {
    return [this](const Progress&) { return Stops(), false; };
  }
  bool thorough() const { return thorough_; }
  const std::deque<ScanRow>& rows() const { return rows_; }

  void SetStatus(std::string text);
  // "57 entries, 3 orphaned"
  void SetCountsAsStatus();
  // The parts of a status with commas between them; those that are empty are left out.
  static std::string JoinParts(std::initializer_list<std::string> parts);
  // "" where there are none.
  static std::string PartOf(size_t count, std::string part) { return count == 0 ? "" : part; }
  static std::string EntriesPart(size_t count);  // "57 entries"
  static std::string Unread(size_t count);       // "2 could not be read"
  std::string NotJudged() const;                 // "2 not judged", "" where there are none
  // Begins a list of that many entries.
  void BeginEntries(size_t count);
  // Before each entry; false when the user has stopped, with the stop path gone.
  bool NextEntry();
  // Orphaned rows stand at the top, checked where the tool ticks, and are counted; others at the
  // end.
  void AddJudged(ScanRow row, RowMark mark);
  // Orphaned is a row whose file is gone.
  void AddJudgedByFile(ScanRow row);
  int orphaned() const { return orphaned_.value(); }
  void AddPlain(ScanRow row) { rows_.push_back(std::move(row)); }
  void SortRows(size_t column, bool descending);
  // Says once in a scan when the hive of a key is damaged.
  void TellDamage(RegistryRoot root, std::string_view key);
  void TellDamage(std::string_view sentence);

 private:
  void Erase(const std::vector<size_t>& chosen, const KeepList& keep, const Pause& pause);
  void EraseTargets(const std::vector<size_t>& chosen, const KeepList& keep, const Pause& pause);
  bool IsAsListed(size_t index, const ScanRow& row, const Pause& pause);
  void StayAll(size_t count);
  void RecycleOwnFiles(const std::vector<size_t>& chosen, const KeepList& keep, const Pause& pause);
  std::string StateOf(const ScanRow& row, const Pause& pause = {}) const;
  std::string StateOfTarget(const RegistryTarget& target, const Pause& pause) const;
  std::string StayedPart() const;
  void NoteStayed(size_t index, const Sentence& why);
  void RemoveFileOf(const ScanRow& row, ProtectedPlaces& places);
  std::vector<ScanRow> TakeErased(const std::vector<size_t>& chosen);
  void DeleteFiles(std::span<const ScanRow> going, const KeepList& keep, const Pause& pause);

  Machine machine_;
  ScanView& view_;
  const ScanTraits& traits_;
  RegistryUndo undo_;
  std::set<std::string> kept_values_;  // by KeepValue
  size_t files_gone_ = 0;
  std::deque<ScanRow> rows_;
  std::string status_, damage_;
  Erasure erased_;
  Pause pause_;  // of the scan in work
  Progress progress_;
  SmallCount orphaned_;
  std::optional<size_t> sorted_by_;
  bool descending_ = false;
  bool timer_enabled_ = true, scanning_ = false, stopped_ = false, thorough_ = false;
};

}  // namespace quellix
