#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Cleans one of the six Firefox items in every profile of the user, by plain deletion whatever the
// removal mode says; which one the item's key tells. See Cleaner for the contract.
void CleanMozilla(CleaningContext& context, const Item& item);

namespace modMozilla {

// "95", "98", "NT", "2K", "XP", "Vista", "Win7", or "" for every other Windows: Firefox is left
// alone there.
std::string GetWindowsVersionName(const WindowsVersion& version);

// The folder of all profiles, ending in "\"; "" where the Windows version has no name.
std::string GetFirefoxProfilesFolder(System& system);

// Deletes what fits `mask` below `folder`, links not entered, and adds to the run's Firefox
// counters; a file counts as deleted even when its deletion failed. Returns the bytes matched.
double FindMozillaFiles(CleaningContext& context, std::string_view folder, std::string_view mask);
// The same for files directly in a folder named exactly "Cache"; others are only matched.
double FindMozillaCacheFiles(CleaningContext& context, std::string_view folder,
                             std::string_view mask);

}  // namespace modMozilla
}  // namespace quellix
