#include "app/free_space_drives.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/locale.h"
#include "platform/words.h"
#include "run/removal.h"
#include "search/drive_list.h"

namespace quellix {
namespace {

std::string Sized(const Machine& machine, uint64_t bytes) {
  return FormatSize(static_cast<double>(bytes), 2, true, machine.system.UserLocale());
}

}  // namespace

std::string WhyNotWiped(const Machine& machine, char letter) {
  const std::string root{letter, ':', '\\'};
  const auto drives = machine.system.Drives();
  const auto drive = std::ranges::find(drives, letter, &Drive::letter);
  if (drive == drives.end()) return "there is no drive " + root;
  const bool is_disk = drive->type == DriveType::kFixed || drive->type == DriveType::kRemovable;
  return is_disk ? "" : root + " is no disk of this machine.";
}

void FreeSpaceDrives::List() {
  rows_.clear();
  summary_.clear();
  for (const Drive& drive : machine_.system.Drives()) {
    // The floppy drives of old would only rattle.
    const bool is_floppy = drive.type == DriveType::kRemovable && drive.letter < 'C';
    if (is_floppy || !WhyNotWiped(machine_, drive.letter).empty()) continue;
    Row row{.root = {drive.letter, ':', '\\'}, .kind = Tr(DriveTypeName(drive))};
    ReadRoom(row);
    if (row.size > 0) rows_.push_back(std::move(row));
  }
}

// One without its disk has no size.
void FreeSpaceDrives::ReadRoom(Row& row) {
  try {
    const auto root = machine_.files.OpenFolder(row.root);
    if (!root) return;
    const DiskRoom room = root->Room();
    row.free = room.free;
    row.size = room.is_read_only ? 0 : room.size;
  } catch (const Error&) {  // it does not tell
  }
}

bool FreeSpaceDrives::HasTicks() const { return std::ranges::any_of(rows_, &Row::is_ticked); }

std::string FreeSpaceDrives::Question(bool zeros) const {
  std::string drives;
  uint64_t bytes = 0;
  for (const Row& row : rows_) {
    if (!row.is_ticked) continue;
    drives += (drives.empty() ? "" : ", ") + row.root;
    bytes += row.free;
  }
  const std::string size = Sized(machine_, bytes);
  const std::string question =
      zeros ? Tr("Overwrite what is free on %1 (%2) with zeros?", drives, size)
            : Tr("Overwrite what is free on %1 (%2) with random numbers?", drives, size);
  return question + "\n\n" +
         Tr("No file that is there is touched. The disk is full meanwhile but for a reserve of 64 "
            "MB, and a solid-state disk wears a little.") +
         "\n\n" + Tr(kBeyondWiping);
}

void FreeSpaceDrives::Wipe(bool zeros, const Pause& pause) {
  is_stopped_ = false;
  size_t done = 0, wanted = 0;
  for (Row& row : rows_) {
    row.result.clear();
    wanted += row.is_ticked ? 1 : 0;
  }
  for (Row& row : rows_) {
    if (!row.is_ticked || is_stopped_) continue;
    done += WipeOne(row, zeros, pause) ? 1 : 0;
  }
  const std::string of_done = std::to_string(done), of_wanted = std::to_string(wanted);
  summary_ = is_stopped_
                 ? TrN("%1 of %2 drive wiped, stopped", "%1 of %2 drives wiped, stopped", wanted,
                       of_done, of_wanted)
                 : TrN("%1 of %2 drive wiped", "%1 of %2 drives wiped", wanted, of_done, of_wanted);
}

// What came of one.
std::string FreeSpaceDrives::TextOf(const FreeSpaceWiped& wiped) const {
  const std::string size = Sized(machine_, wiped.bytes),
                    count = FormatCount(wiped.records, machine_.system.UserLocale());
  const std::string done =
      wiped.is_stopped ? TrN("%1 overwritten, %2 small file, stopped",
                             "%1 overwritten, %2 small files, stopped", wiped.records, size, count)
                       : TrN("%1 overwritten, %2 small file", "%1 overwritten, %2 small files",
                             wiped.records, size, count);
  return wiped.problem.empty() ? done : done + ". " + wiped.problem;
}

bool FreeSpaceDrives::WipeOne(Row& row, bool zeros, const Pause& pause) {
  const FreeSpaceWiped wiped = WipeFreeSpace(machine_, row.root, {.zeros = zeros}, pause);
  is_stopped_ = wiped.is_stopped;
  row.result = TextOf(wiped);
  ReadRoom(row);
  return !wiped.is_stopped && wiped.problem.empty();
}

}  // namespace quellix
