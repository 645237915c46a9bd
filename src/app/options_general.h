#pragma once

#include <optional>
#include <string>

#include "app/refusal.h"
#include "platform/machine.h"
#include "settings/preferences.h"

namespace quellix {

// The pages General, Deletion and Backups of the Options window. Texts are as typed.
struct GeneralOptions : Preferences {
  bool start_with_windows = false;
  bool explorer_menu = false;
  bool extra_security = false, rename = false;
  std::string typed_duration = "1", typed_low_disk = "0";
};

// Cleaning when the disk is low needs the icon in the notification area: who wants the one gets the
// other, and who does without the other does without the one.
void TypeLowDisk(GeneralOptions& options, std::string typed);
void TakeTrayIcon(GeneralOptions& options, bool wanted);

// From Settings.ini and the Run value. What is missing, unreadable or makes no sense has its
// default.
GeneralOptions LoadGeneralOptions(const Machine& machine);

// The first field that cannot be saved as it is.
std::optional<Refusal> CheckGeneralOptions(const Machine& machine, const GeneralOptions& options);

// Writes what was checked. A field that was not asked for, and so may hold anything, keeps what
// `loaded` has; keys that not every user has are written when they differ from it. Returns a
// sentence for each file or registry value that could not be written and so stays as it was; "" for
// none.
std::string SaveGeneralSettings(const Machine& machine, const GeneralOptions& options,
                                const GeneralOptions& loaded);

// Starting with Windows. Another program may have changed the value: it is there, but does not
// start this program as it should.
enum class RunValue { kMissing, kOurs, kChanged };
// Throws Error.
RunValue LookAtRunValue(const Machine& machine);

// What automatic cleaning may be set to, for fields and messages.
int LongestDuration(bool hours);

}  // namespace quellix
