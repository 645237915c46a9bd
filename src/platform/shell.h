#pragma once

#include <cstdint>
#include <string_view>

namespace quellix {

struct RecycleBinContent {
  uint64_t items = 0;
  uint64_t bytes = 0;
};

// What the Windows shell does for one user.
class Shell {
 public:
  virtual ~Shell() = default;

  // Moves a file into the recycle bin of its drive without asking, so that it can be restored.
  // Throws Error; the file then stays where it is.
  virtual void Recycle(std::string_view path) = 0;

  // Items and bytes in the user's recycle bins of all drives. Throws Error.
  virtual RecycleBinContent QueryRecycleBin() = 0;

  // Empties them without asking. An empty bin is no error. Throws Error when something is left.
  virtual void EmptyRecycleBin() = 0;

  // Forgets the addresses visited with Internet Explorer. Throws Error (NotAvailable for a volume).
  virtual void ClearAddressHistory() = 0;

  // Empties the clipboard of all formats. Throws Error (NotAvailable for a volume).
  virtual void EmptyClipboard() = 0;
};

}  // namespace quellix
