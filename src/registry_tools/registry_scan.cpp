#include "registry_tools/registry_scan.h"

#include <algorithm>
#include <set>
#include <utility>

#include "app/working_folder.h"
#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"

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
  SetStatus(std::to_string(rows_.size()) + " entries, " + std::to_string(orphaned()) + " orphaned");
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

void RegistryScan::AddJudged(ScanRow row, bool is_orphaned) {
  row.mark = is_orphaned ? RowMark::kOrphaned : RowMark::kValid;
  row.checked = is_orphaned;
  if (is_orphaned) orphaned_.Add();
  rows_.insert(is_orphaned ? rows_.begin() : rows_.end(), std::move(row));
}

void RegistryScan::AddJudgedByFile(ScanRow row) {
  const bool is_gone = machine_.files.IsGone(row.file);
  AddJudged(std::move(row), is_gone);
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

// False, with a message, when nothing may be deleted.
bool RegistryScan::KeepChecked() {
  RunState state;
  Settings(machine_).LoadDeletionSettings(state);
  if (!state.Backup.registry) return true;
  try {
    for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
      if (row->checked) KeepReference(undo_, *row);
    }
    undo_.Store(machine_, state.BackupFolder);
    return true;
  } catch (const Error& error) {
    undo_.Forget();
    view_.ShowProblem(std::string("Nothing is deleted, because it could not be backed up first. ") +
                      error.what());
    return false;
  }
}

void RegistryScan::StoreAll(const std::vector<const ScanRow*>& deleted) {
  std::set<std::pair<RegistryRoot, std::string_view>> keys;
  for (const ScanRow* row : deleted) keys.emplace(row->root, row->key);
  for (const auto& [root, key] : keys) {
    try {
      modRegistry::StoreChanges(access(), root, key);
    } catch (const Error& error) {
      failure_ = error.what();
    }
  }
}

// Most are missing, that is why their rows are here.
void RegistryScan::RemoveFileOf(const ScanRow& row, std::optional<ProtectedPlaces>& places) {
  try {
    const auto folder = OpenFolderOf(machine_.files, row.file);
    if (!places) places = LoadPlaces(machine_);
    if (!places->WhyNotFile(*folder, NamePart(row.file), Claim::kItem).empty()) return;
    folder->RemoveFile(NamePart(row.file));
  } catch (const Error&) {
    return;
  }
}

void RegistryScan::DeleteChecked(bool files_also) {
  failure_.clear();
  if (!KeepChecked()) return;
  std::vector<const ScanRow*> deleted;
  std::optional<ProtectedPlaces> places;
  for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
    if (!row->checked) continue;
    DeleteReference(*row);
    deleted.push_back(&*row);
    if (!files_also || row->file.empty()) continue;
    RemoveFileOf(*row, places);
  }
  StoreAll(deleted);
  std::erase_if(rows_, [](const ScanRow& row) { return row.checked; });
  timer_enabled_ = traits_.rescans;
  if (!traits_.rescans) SetStatus(Recounted());
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
