#include "platform/wiping_note.h"

namespace quellix {

// No driver lets a file's record and its folder's index be overwritten for certain.
std::string_view WipingNote() {
  return "The contents of wiped files are overwritten; their names may stay readable in the file "
         "table and in folder indexes until something else is written there.";
}

}  // namespace quellix
