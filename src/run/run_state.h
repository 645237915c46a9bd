#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "run/item.h"
#include "run/run_choice.h"
#include "run/run_entries.h"
#include "run/run_parts.h"
#include "run/views.h"
#include "settings/removal_options.h"

namespace quellix {

class KeepList;
class ProtectedPlaces;

// What became of the item in work.
struct ItemTotals {
  int32_t FilesDeleted = 0;
  double SpaceGained = 0;   // bytes
  bool PlaceFound = false;  // something of its kind is here (NotePlace), else why not:
  std::string WhyNothing;   // a sentence, or ""
  uint8_t ItemInWork = 0;   // its run order; 0 for none
};

// What a run did so far: each begins with none.
struct RunTotals : ItemTotals {
  bool AbortRequested = false;
  bool SomeFilesLocked = false;  // something stayed, for whatever reason
  bool SomeErrors = false;       // an item failed and showed its message

  // What the run came by; a report goes on showing it.
  std::shared_ptr<RunEntries> Entries = std::make_shared<RunEntries>();
  uint64_t StayedCount = 0;       // files and folders (NoteStayed)
  uint64_t StayedLocked = 0;      // those that were locked or in use
  std::vector<size_t> MaybeHeld;  // the first that a program may hold, as indexes of Entries
  uint64_t KeptCount = 0;         // what the user keeps (NoteKept)
  uint64_t LeftToStart = 0;       // of those that were in use: the system's next start takes them

  int32_t RunFilesDeleted = 0;
  double RunSpaceGained = 0;  // bytes
  int32_t FilesBackedUp = 0;
  int32_t FilesNotBackedUp = 0;  // and gone all the same
  int32_t ProgressCounter = 0;
  double MozillaFilesDeleted = 0;
  double MozillaSpaceGained = 0;  // bytes

  std::array<Outcome, kItemCount> Outcomes{};  // by run order, from 0
  std::string SettingsProblem;                 // why LastCleaned could not be stored, said once
  std::string BackupDrive;                     // letter of the archive that is open, "" for none
  std::string RunLog;
};

// The state of a cleaning run, one for the whole program; every run loads its options and begins
// with new totals.
struct RunState : RemovalOptions, RunTotals {
  int16_t FixedRemovalMode = 0;               // chosen for this program run; 0: as the settings say
  std::optional<int16_t> FixedOlderThanDays;  // likewise
  std::shared_ptr<RunChoice> Choice;          // what the next run may remove; null: everything
  bool IsForAnother = false;                  // its user's: nothing of it is noted as one's own
  bool LeavesToStart = false;                 // the next run what is in use, where that is safe
  bool IsPreview = false;                     // nothing is really removed
  bool Hidden = false;                        // nobody is watching: nothing waits for a person
  bool BySelf = false;                        // it began by itself: somebody need not be there
  double MozillaSpaceFound = 0;               // bytes, since the program started

  ProgressBar Progress;                     // as shown last
  FileProgress Files;                       // likewise
  std::shared_ptr<const KeepList> Keep;     // see KeepOf; null until somebody asks
  std::shared_ptr<ProtectedPlaces> Places;  // see PlacesOf; likewise
  RunParts Parts;
};

// Whether somebody watches the run, who can be asked.
inline bool IsAttended(const RunState& state) { return !state.Hidden && !state.BySelf; }

}  // namespace quellix
