#pragma once

#include <string_view>

#include "platform/words.h"
#include "run/context.h"
#include "run/item.h"
#include "run/stayed.h"

namespace quellix {

// The steps that every cleaner of a run shares.

// Reads how files go, as the settings say or by the mode that was fixed for this program run, and
// the language of logs.
void LoadRemovalOptions(CleaningContext& context);

// Begins a run: resets its state, reads from the settings how files go, and shows the run as begun.
// Where files are to be backed up and cannot be, the user is asked; false when nothing may be
// removed then: he has been told, and the run counts as failed.
[[nodiscard]] bool BeginRun(CleaningContext& context, int items);

// Finishes the archive of a run that backs up; a failure gets a line in RunLog.
void CloseBackup(CleaningContext& context);

// After a stop: drops the archive, unless stopped runs keep theirs. What is in it, and gone, has no
// backup any more.
void DropArchive(CleaningContext& context);

// Shows that nothing runs any longer.
void ShowIdle(CleaningContext& context, std::string_view status);

// Shows the item as the one in work.
void BeginItem(CleaningContext& context, const Item& item);

// Ends an item or, with a message, the run. Without a message the present time is stored as
// LastCleaned. The Clean command comes back, progress and current item are hidden.
void EndRun(CleaningContext& context, std::string_view message);

// Shows a failure as a critical message; in a hidden run it goes into RunLog instead.
void ReportCritical(CleaningContext& context, const Sentence& text);

// A cleaner has found a place of its item's kind, with or without anything in it: the folder, the
// registry key, the recycle bin. An item that finds none gets a line in the log that says so.
inline void NotePlace(RunState& state) { state.PlaceFound = true; }
}  // namespace quellix
