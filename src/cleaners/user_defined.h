#pragma once

#include "run/context.h"
#include "run/item.h"

namespace quellix {

// Cleaners of what the user lists: UDFI.txt names files, UDFO.txt folders whose files go (together
// with those of the temporary folders and Office's recent list) unless UDIFO.txt holds a part of
// their path. See Cleaner for their contract.
void CleanUserFiles(CleaningContext& context, const Item& item);
void CleanUserFolders(CleaningContext& context, const Item& item);

}  // namespace quellix
