#pragma once

#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_drive.h"

namespace quellix {

// Visits the entries of the folder `held`, which `readable` reads: an errno value, or 0. `readable`
// is closed before visiting where it can be, so that deep recursions hold few descriptors.
int EnumerateFolder(int held, UniqueFd readable, Detail detail, AttributeSupport& support,
                    const EntryVisitor& visit);

}  // namespace quellix
