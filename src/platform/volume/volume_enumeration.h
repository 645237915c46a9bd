#pragma once

#include "platform/volume/volume_drive.h"

namespace quellix {

// Visits the entries of the folder `held`, which `readable` (it may be the same) reads from where
// it stands: an errno value, or 0. EBADF before the first visit when it is for looking up names
// only.
int EnumerateFolder(int held, int readable, Detail detail, AttributeSupport& support,
                    const EntryVisitor& visit);

}  // namespace quellix
