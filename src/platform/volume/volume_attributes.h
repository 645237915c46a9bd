#pragma once

#include <sys/stat.h>

#include <cstdint>

#include "platform/volume/volume_drive.h"

namespace quellix {

inline constexpr const char* kSambaName = "user.DOSATTRIB";

// The Windows attributes of an entry (FileAttribute bits): as the disk's driver or Samba keeps them
// beside it, else read-only alone, from the owner's missing right to write.
uint32_t ReadAttributes(const Located& entry, AttributeSupport& support);
// Those of an open file, whose mode is given.
uint32_t ReadAttributes(int file, mode_t mode, AttributeSupport& support);

// Stores them in the form that is there, else in Samba's where the disk can hold it and more than
// read-only is asked for; and sets the owner's right to write. Links keep what they have. An errno
// value, or 0.
int WriteAttributes(const Located& entry, uint32_t attributes, AttributeSupport& support);
// Those of an open file, whose mode is given.
int WriteAttributes(int file, mode_t mode, uint32_t attributes, AttributeSupport& support);

// Whether a link whose target is missing is a junction of NTFS.
bool IsJunction(const Located& entry, const AttributeSupport& support);

}  // namespace quellix
