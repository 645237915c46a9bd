#include "registry_tools/registry_scan.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/working_folder.h"

namespace quellix {

RegistryScan::RegistryScan(const Machine& machine, ScanView& view, const ScanTraits& traits)
    : machine_(machine), view_(view), traits_(traits) {}

void RegistryScan::StartScan() {
  timer_enabled_ = false;
  stop_requested_ = false;
  scanning_ = true;
  damage_.clear();
  sorted_by_.reset();
  rows_.clear();
  orphaned_ = {};
  progress_ = {.visible = traits_.has_progress, .max = 1, .value = 0};
  view_.ShowState();
  try {
    ScanRegistry();
  } catch (const Damaged& error) {
    TellDamage(error.what());
  } catch (const Error&) {  // silent, as every failure of the registry
  }
  scanning_ = false;
  progress_ = {};
  view_.ShowState();
  if (!damage_.empty()) view_.ShowProblem(damage_);
}

void RegistryScan::SetStatus(std::string text) {
  status_ = std::move(text);
  view_.ShowState();
}

void RegistryScan::SetCountsAsStatus() {
  SetStatus(std::to_string(rows_.size()) + " entries, " + std::to_string(orphaned()) + " orphaned" +
            NotJudged());
}

std::string RegistryScan::NotJudged() const {
  const auto count = std::ranges::count(rows_, RowMark::kNotJudged, &ScanRow::mark);
  return count == 0 ? "" : ", " + std::to_string(count) + " not judged";
}

void RegistryScan::BeginEntries(size_t count) {
  progress_.max = std::max(1, static_cast<int32_t>(count));
  progress_.value = 0;
}

bool RegistryScan::NextEntry() {
  view_.Yield();
  view_.Yield();
  if (stop_requested_) {
    progress_ = {};
    SetStatus("");
    return false;
  }
  ++progress_.value;
  view_.ShowState();
  return true;
}

void RegistryScan::AddJudged(ScanRow row, RowMark mark) {
  const bool is_orphaned = mark == RowMark::kOrphaned;
  row.mark = mark;
  row.checked = is_orphaned;
  if (is_orphaned) orphaned_.Add();
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
    TellDamage(error.what());
  } catch (const Error&) {  // reads as empty
  }
}

void RegistryScan::EraseChecked(const KeepList& keep) {
  const RemovalOptions options = Settings(machine_).Load();
  RegistryEraser eraser(machine_.registry, RegistryEraser::OnError::kSilent);
  if (options.BackupRegistry) eraser.KeepIn(undo_, machine_, options.BackupFolder);
  eraser.Leave(keep, nullptr);
  std::vector<RegistryTarget> targets;
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
    if (row->checked) targets.push_back(TargetOf(*row));
  }
  erased_ = eraser.Erase(targets);
}

// Most are missing, that is why their rows are here.
void RegistryScan::RemoveFileOf(const ScanRow& row, ProtectedPlaces& places) {
  try {
    const auto folder = OpenFolderOf(machine_.files, row.file);
    if (!places.WhyNotFile(*folder, NamePart(row.file), Claim::kItem).empty()) return;
    if (!places.keep().ForPath(row.file).empty()) return;
    folder->RemoveFile(NamePart(row.file));
  } catch (const Error&) {
    return;
  }
}

void RegistryScan::DeleteFiles(const KeepList& keep) {
  ProtectedPlaces places(machine_, Settings(machine_).Load().BackupFolder, keep);
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
    if (row->checked && !row->file.empty()) RemoveFileOf(*row, places);
  }
}

void RegistryScan::DeleteChecked(bool files_also) {
  erased_ = {};
  try {
    const KeepList keep(machine_);
    EraseChecked(keep);
    if (files_also) DeleteFiles(keep);
  } catch (const Error& error) {
    return view_.ShowProblem(error.what());
  }
  std::erase_if(rows_, [](const ScanRow& row) { return row.checked; });
  timer_enabled_ = traits_.rescans;
  if (traits_.rescans) return;
  const std::string stayed = std::to_string(erased_.stayed) + " could not be deleted";
  SetStatus(Recounted() + (erased_.stayed == 0 ? "" : ", " + stayed));
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
