#include "registry_tools/registry_scan.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "backup/backups.h"
#include "platform/damaged.h"
#include "platform/locale.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/working_folder.h"

namespace quellix {

std::string AskToDeleteReferences(uint64_t count, const std::string& shown) {
  return TrN("Delete %1 reference from the registry?", "Delete %1 references from the registry?",
             count, shown);
}

RegistryScan::RegistryScan(const Machine& machine, ScanView& view, const ScanTraits& traits)
    : machine_(machine), view_(view), traits_(traits) {}

void RegistryScan::StartScan(const Pause& pause) {
  timer_enabled_ = false;
  stopped_ = false;
  scanning_ = true;
  pause_ = pause;
  damage_.clear();
  sorted_by_.reset();
  rows_.clear();
  orphaned_ = {};
  progress_ = {};
  view_.ShowState();
  try {
    ScanRegistry();
  } catch (const Damaged& error) {
    TellDamage(Shown(error));
  } catch (const Error&) {  // silent, as every failure of the registry
  }
  scanning_ = false;
  pause_ = {};
  view_.ShowState();
  if (!damage_.empty()) view_.ShowProblem(damage_);
}

void RegistryScan::SetStatus(std::string text) {
  status_ = std::move(text);
  view_.ShowState();
}

void RegistryScan::SetCountsAsStatus() {
  const auto gone = static_cast<size_t>(orphaned());
  SetStatus(
      JoinParts({EntriesPart(rows_.size()),
                 TrN("%1 orphaned", "%1 orphaned", gone, std::to_string(gone)), NotJudged()}));
}

std::string RegistryScan::NotJudged() const {
  const auto count =
      static_cast<size_t>(std::ranges::count(rows_, RowMark::kNotJudged, &ScanRow::mark));
  return PartOf(count, TrN("%1 not judged", "%1 not judged", count, std::to_string(count)));
}

std::string RegistryScan::EntriesPart(size_t count) {
  return TrN("%1 entries", "%1 entries", count, std::to_string(count));
}

std::string RegistryScan::Unread(size_t count) {
  return TrN("%1 could not be read", "%1 could not be read", count, std::to_string(count));
}

std::string RegistryScan::JoinParts(std::initializer_list<std::string> parts) {
  std::string joined;
  for (const std::string& part : parts) {
    // TRANSLATORS: Parts of a status line: "57 entries, 3 orphaned" and "2 not judged".
    if (!part.empty()) joined = joined.empty() ? part : Tr("%1, %2", joined, part);
  }
  return joined;
}

void RegistryScan::BeginEntries(size_t count) {
  progress_ = {.done = 0, .total = traits_.has_progress ? count : 0};
}

bool RegistryScan::Stops() {
  stopped_ = stopped_ || pause_(progress_);
  return stopped_;
}

bool RegistryScan::NextEntry() {
  if (Stops()) {
    SetStatus("");
    return false;
  }
  ++progress_.done;
  return true;
}

void RegistryScan::AddJudged(ScanRow row, RowMark mark) {
  const bool is_orphaned = mark == RowMark::kOrphaned;
  row.mark = mark;
  row.checked = is_orphaned && traits_.ticks;
  if (is_orphaned) orphaned_.Add();
  if (traits_.looks_again) row.state = StateOf(row);
  rows_.insert(is_orphaned ? rows_.begin() : rows_.end(), std::move(row));
}

void RegistryScan::AddJudgedByFile(ScanRow row) {
  RowMark mark = RowMark::kOrphaned;
  if (!machine_.files.IsGone(row.file)) {
    const bool is_seen = machine_.files.Look(row.file, Detail::kKind).has_value();
    mark = is_seen ? RowMark::kValid : RowMark::kNotJudged;
  }
  AddJudged(std::move(row), mark);
}

void RegistryScan::TellDamage(std::string_view sentence) {
  if (damage_.empty()) damage_ = sentence;
}

void RegistryScan::TellDamage(RegistryRoot root, std::string_view key) {
  try {
    const auto opened = machine_.registry.Open(root, key, RegistryAccess::kRead);
    if (!opened) return;
    opened->ValueAt(0);
    opened->SubKeyAt(0);
  } catch (const Damaged& error) {
    TellDamage(Shown(error));
  } catch (const Error&) {  // reads as empty
  }
}

// All of its values, and whether its file is there; "" for what is gone.
std::string RegistryScan::StateOf(const ScanRow& row, const Pause& pause) const {
  std::string state;
  try {
    if (row.own_file.empty()) {
      state = StateOfTarget(TargetOf(row), pause);
    } else if (const auto file = machine_.files.Look(row.own_file)) {
      state = std::to_string(file->size) + "," + std::to_string(file->last_write) +
              (file->is_link ? ",link" : "");
    }
  } catch (const Error&) {
    return "unread";
  }
  if (state.empty() || row.file.empty()) return state;
  return state + (machine_.files.IsGone(row.file) ? ",gone" : ",there");
}

std::string RegistryScan::StateOfTarget(const RegistryTarget& target, const Pause& pause) const {
  const auto key = machine_.registry.Open(target.root, target.key, RegistryAccess::kRead);
  if (!key) return {};
  const auto text = [](const RegistryValue& value) {
    return std::to_string(value.type) + ":" + std::to_string(std::hash<std::string>()(value.bytes));
  };
  if (target.kind == RegistryTarget::Kind::kValue) {
    const auto value = key->QueryValue(target.name);
    return value ? text(*value) : "";
  }
  std::string all;
  const auto add = [&](RegistryKey& each, const std::string& path) {
    all += path + "\n";
    std::string name;
    RegistryValue value;
    for (uint32_t i = 0; each.ReadValueAt(i, name, value); ++i)
      all.append(name).append("=").append(text(value)).append("\n");
  };
  WalkKeys(*key, RegistryAccess::kRead, {.enter = add, .skip = [](const auto&, const Error*) {}},
           pause);
  return std::to_string(std::hash<std::string>()(all));
}

std::string RegistryScan::WhyChanged(const ScanRow& row, const Pause& pause) {
  if (!traits_.looks_again) return {};
  const std::string now = StateOf(row, pause);
  if (now.empty() || now == row.state) return {};
  return Tr("It has changed since it was listed: %1",
            row.texts[0].empty() ? row.key : row.texts[0]);
}

void RegistryScan::NoteStayed(size_t index, const Sentence& why) {
  erased_.stays[index] = true;
  ++erased_.stayed;
  if (erased_.problem.empty()) erased_.problem = why;
}

void RegistryScan::Erase(const std::vector<size_t>& chosen, const KeepList& keep,
                         const Pause& pause) {
  erased_.stays.resize(chosen.size());
  ForgetWhatWasSeen();
  EraseTargets(chosen, keep, pause);
  RecycleOwnFiles(chosen, keep, pause);
  for (size_t i = 0; i < chosen.size(); ++i) {
    const ScanRow& row = rows_[chosen[i]];
    if (!row.why_stays.empty()) NoteStayed(i, {row.why_stays, row.why_stays});
  }
}

// Looks at a row again, with the pauses of that; where it has changed it stays. False for such a
// row, and behind a stop.
bool RegistryScan::IsAsListed(size_t index, const ScanRow& row, const Pause& pause) {
  const Pause stops = [&](const Progress&) {
    erased_.stopped = erased_.stopped || pause();
    return erased_.stopped;
  };
  if (stops()) return false;
  const std::string why = WhyChanged(row, stops);
  if (stops()) return false;
  if (!why.empty()) NoteStayed(index, {why, why});
  return why.empty();
}

// Stopped before the first was deleted.
void RegistryScan::StayAll(size_t count) {
  erased_ = {.stays = std::vector<bool>(count, true), .stopped = true};
}

void RegistryScan::EraseTargets(const std::vector<size_t>& chosen, const KeepList& keep,
                                const Pause& pause) {
  const Preferences options = Settings(machine_).Load();
  RegistryEraser eraser(machine_.registry, RegistryEraser::OnError::kSilent);
  if (options.BackupRegistry) eraser.KeepIn(undo_, machine_, options.BackupFolder);
  eraser.Leave(keep);
  eraser.OnPause(pause);
  std::vector<RegistryTarget> targets;
  std::vector<size_t> places;  // of the targets among the chosen
  for (size_t i = 0; i < chosen.size(); ++i) {
    const ScanRow& row = rows_[chosen[i]];
    if (!row.own_file.empty() || !row.why_stays.empty()) continue;
    if (traits_.looks_again && !IsAsListed(i, row, pause)) {
      if (erased_.stopped) return StayAll(chosen.size());
      continue;
    }
    targets.push_back(TargetOf(row));
    places.push_back(i);
  }
  Erasure erased = eraser.Erase(targets);
  for (size_t i = 0; i < places.size(); ++i) {
    if (erased.stays[i]) erased_.stays[places[i]] = true;
  }
  erased_.gone += erased.gone;
  erased_.stayed += erased.stayed;
  erased_.stopped = erased.stopped;
  if (!erased.problem.empty()) erased_.problem = erased.problem;
}

void RegistryScan::RecycleOwnFiles(const std::vector<size_t>& chosen, const KeepList& keep,
                                   const Pause& pause) {
  std::optional<ProtectedPlaces> places;
  for (size_t i = 0; i < chosen.size(); ++i) {
    const ScanRow& row = rows_[chosen[i]];
    if (row.own_file.empty()) continue;
    if (!places) places.emplace(machine_, Settings(machine_).Load().BackupFolder, keep);
    const bool is_as_listed = !erased_.stopped && IsAsListed(i, row, pause);
    if (!is_as_listed && !erased_.stopped) continue;
    try {
      if (erased_.stopped) throw Error(Error::Kind::kOther, Say("The deletion was stopped."));
      const auto folder = OpenFolderOf(machine_.files, row.own_file);
      const Sentence why = places->WhyNotFile(*folder, row.own_file, row.own_claim);
      if (!why.empty())
        throw Error(Error::Kind::kDenied, Say("%1 is not removed: %2", row.own_file, why));
      folder->Recycle(NamePart(row.own_file));
      ++erased_.gone;
      ++files_gone_;
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kMissing) NoteStayed(i, SentenceOf(error));
    }
  }
}

void RegistryScan::KeepValue(RegistryRoot root, std::string_view key, std::string_view name) {
  const Preferences options = Settings(machine_).Load();
  const std::string place = std::string(RootName(root)).append("\\").append(key) + "|";
  const std::string known = UpCase(place + std::string(name));
  if (!options.BackupRegistry || kept_values_.contains(known)) return;
  try {
    undo_.AddState(machine_.registry, root, key, name);
    undo_.Store(machine_, options.BackupFolder);
  } catch (const Error& error) {
    undo_.Forget();
    throw NotKept(error);
  }
  kept_values_.insert(known);
}

RestoreResult RegistryScan::Undo(Prompts& prompts, const Pause& pause) {
  const std::string& path = undo_.path();
  RestoreResult result =
      Backups(machine_, std::string(FolderPart(path)))
          .Restore(NamePart(path), {.entry_paths = {}, .to = ""}, prompts, pause);
  timer_enabled_ = true;
  if (result.cancelled || result.skipped > 0 || !result.problems.empty()) return result;
  undo_ = {};
  kept_values_.clear();
  files_gone_ = 0;
  return result;
}

void RegistryScan::Act(ScanAction action, const std::vector<size_t>& rows, const Pause& pause) {
  erased_ = {};
  erased_.stays.resize(rows.size());
  for (size_t i = 0; i < rows.size() && !pause(); ++i) {
    if (!Offers(action, rows[i])) continue;
    try {
      Do(action, rows_[rows[i]]);
      ++erased_.gone;
    } catch (const Error& error) {
      NoteStayed(i, SentenceOf(error));
    }
  }
  // TRANSLATORS: A count of what is listed, and why something of it could not be changed.
  SetStatus(erased_.stayed == 0 ? Recounted() : Tr("%1. %2", Recounted(), failure()));
}

// Most are missing, that is why their rows are here.
void RegistryScan::RemoveFileOf(const ScanRow& row, ProtectedPlaces& places) {
  try {
    const auto folder = OpenFolderOf(machine_.files, row.file);
    if (!places.WhyNotFile(*folder, row.file, Claim::kItem).empty()) return;
    folder->RemoveFile(NamePart(row.file));
    ++files_gone_;
  } catch (const Error&) {
    return;
  }
}

// A stop does not part a file from its reference that has gone.
void RegistryScan::DeleteFiles(std::span<const ScanRow> going, const KeepList& keep,
                               const Pause& pause) {
  ProtectedPlaces places(machine_, Settings(machine_).Load().BackupFolder, keep);
  for (const ScanRow& row : going) {
    pause();
    if (!row.file.empty()) RemoveFileOf(row, places);
  }
}

// Takes the chosen rows, which are the targets, out of the list, but for those that a stop left.
std::vector<ScanRow> RegistryScan::TakeErased(const std::vector<size_t>& chosen) {
  std::vector<ScanRow> gone;
  std::vector<bool> is_gone(rows_.size());
  for (size_t i = 0; i < chosen.size(); ++i) {
    if ((erased_.stopped || traits_.keeps_stayed) && erased_.stays[i]) continue;
    is_gone[chosen[i]] = true;
    gone.push_back(std::move(rows_[chosen[i]]));
  }
  std::deque<ScanRow> left;
  for (size_t row = 0; row < rows_.size(); ++row) {
    if (!is_gone[row]) left.push_back(std::move(rows_[row]));
  }
  rows_ = std::move(left);
  return gone;
}

std::string RegistryScan::KeyOfRow(size_t index) const {
  const RegistryTarget target = TargetOf(rows_[index]);
  return std::string(RootName(target.root)).append("\\").append(WithoutBackslash(target.key));
}

std::vector<size_t> RegistryScan::CheckedRows() const {
  std::vector<size_t> rows;
  for (size_t row = 0; row < rows_.size(); ++row) {
    if (rows_[row].checked) rows.push_back(row);
  }
  return rows;
}

std::string RegistryScan::QuestionFor(size_t count, bool files_also) const {
  if (count == 0 || !Settings(machine_).Load().ask) return {};
  const std::string shown = FormatCount(count, machine_.system.UserLocale());
  if (!files_also) return traits_.question(count, shown);
  return TrN("Delete %1 reference from the registry, and the file that it names?",
             "Delete %1 references from the registry, and the files that they name?", count, shown);
}

// The rows as they are ticked now: what is ticked meanwhile has its own turn.
void RegistryScan::DeleteChecked(bool files_also, const Pause& pause) {
  DeleteRows(CheckedRows(), files_also, pause);
}

void RegistryScan::DeleteRows(std::vector<size_t> chosen, bool files_also, const Pause& pause) {
  std::ranges::sort(chosen, std::greater());
  erased_ = {};
  try {
    const KeepList keep(machine_);
    Erase(chosen, keep, pause);
    const std::vector<ScanRow> gone = TakeErased(chosen);
    if (files_also) DeleteFiles(gone, keep, pause);
  } catch (const Error& error) {
    return view_.ShowProblem(Shown(error));
  }
  timer_enabled_ = traits_.rescans && !erased_.stopped;
  if (timer_enabled_) return;
  const std::string stopped = erased_.stopped ? Tr("the deletion was stopped") : "";
  SetStatus(JoinParts({Recounted(), erased_.stopped ? stopped : StayedPart()}));
}

std::string RegistryScan::StayedPart() const {
  const size_t count = erased_.stayed;
  if (count == 0) return {};
  const std::string number = std::to_string(count);
  if (traits_.keeps_stayed)
    return TrN("%1 could not be deleted: %2", "%1 could not be deleted: %2", count, number,
               failure());
  return TrN("%1 could not be deleted", "%1 could not be deleted", count, number);
}

void RegistryScan::SortRows(size_t column, bool descending) {
  std::vector<std::pair<std::string, ScanRow>> keyed;
  for (ScanRow& row : rows_) {
    std::string key = UpCase(std::string_view(row.texts[column]));
    keyed.emplace_back(std::move(key), std::move(row));
  }
  std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto& a, const auto& b) {
    return descending ? b.first < a.first : a.first < b.first;
  });
  rows_.clear();
  for (auto& [key, row] : keyed) rows_.push_back(std::move(row));
  sorted_by_ = column;
  descending_ = descending;
}

void RegistryScan::SortBy(size_t column) {
  if (traits_.sorts && column < traits_.columns.size()) SortRows(column, !descending_);
}

}  // namespace quellix
