#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "run/backup_archive.h"
#include "run/run_parts.h"
#include "run/views.h"

namespace quellix {

class ProtectedPlaces;

enum RemovalModes : int16_t { kDelete = 1, kRecycle = 2, kWipe = 3, kBackUp = 4 };

// Something that a run was to remove and that is still there.
struct StayedEntry {
  std::string path;
  std::string reason;  // a sentence, the system's own where it gave one
};

// The state of a cleaning run, one for the whole program; every run resets it.
struct RunState {
  // What the user chose (LoadDeletionSettings).
  int16_t RemovalMode = kDelete;
  uint8_t ExtraSecurity = 0;       // any value but 0 selects the random pass
  uint8_t RenameBeforeDelete = 0;  // only 1 renames
  uint64_t WipeStep = 1;           // bytes overwritten at a time
  std::string BackupFolder;        // ends in "\"
  BackupOptions Backup;
  bool AllValues = false;  // registry lists are cleared to their end

  int16_t FixedRemovalMode = 0;  // chosen for this program run; 0: as the settings say
  bool Hidden = false;           // nobody is watching: nothing waits for a person
  bool AbortRequested = false;
  bool SomeFilesLocked = false;  // something stayed, for whatever reason
  bool SomeErrors = false;       // an item failed and showed its message

  // What stayed (NoteStayed). The first kMostStayed are named, the rest only counted.
  static constexpr size_t kMostStayed = 100'000;
  std::vector<StayedEntry> Stayed;
  uint64_t StayedCount = 0;   // all of them
  uint64_t StayedLocked = 0;  // those that were locked or in use

  // Totals of the run, and of the item in work.
  int32_t RunFilesDeleted = 0;
  double RunSpaceGained = 0;  // bytes
  int32_t FilesBackedUp = 0;
  int32_t FilesNotBackedUp = 0;  // and gone all the same
  int32_t FilesDeleted = 0;
  double SpaceGained = 0;  // bytes
  int32_t ProgressCounter = 0;
  double MozillaFilesDeleted = 0;  // in this run
  double MozillaSpaceGained = 0;   // bytes, in this run
  double MozillaSpaceFound = 0;    // bytes, since the program started

  ProgressBar Progress;                // as shown last
  std::array<Outcome, 30> Outcomes{};  // by run order, from 0
  // Of the item in work: whether anything of its kind is here (NotePlace), else why not.
  bool PlaceFound = false;
  std::string WhyNothing;       // a sentence, or ""
  std::string SettingsProblem;  // why LastCleaned could not be stored, said once

  std::string BackupDrive;                  // letter of the archive that is open, "" for none
  std::shared_ptr<ProtectedPlaces> Places;  // see PlacesOf; null until somebody asks
  RunParts Parts;
  std::string RunLog;
};

}  // namespace quellix
