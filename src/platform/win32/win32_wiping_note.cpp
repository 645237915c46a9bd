#include "platform/wiping_note.h"

namespace quellix {

// Whoever minds has files renamed before they go.
std::string_view WipingNote() { return {}; }

}  // namespace quellix
