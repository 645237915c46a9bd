#pragma once

#include <string>

namespace quellix {

// What the first bytes of a disk, a partition or an image of one tell.
struct DiskState {
  enum class Kind { kUnknown, kNtfs, kBitLocker, kPartitioned, kVirtual };
  Kind kind = Kind::kUnknown;
  bool is_dirty = false;    // an NTFS that Windows wants to check at its next start
  bool is_hidden = false;   // it is there and may not be read, so that nothing is known of it
  std::string format = {};  // of a virtual machine's disk, as QEMU names it ("qcow2")
};

// Of a device or an image file; kUnknown where it cannot be read. Nothing is written.
DiskState LookAtDisk(const std::string& file);

}  // namespace quellix
