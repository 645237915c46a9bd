#pragma once

#include <optional>
#include <string_view>

namespace quellix {

// What happens when a file to restore is there already.
enum class OverwriteMode { kAsk, kAlways, kNewer, kNever };

// "Always", "Newer", "Never", "Ask", without regard to case; nothing for another word.
std::optional<OverwriteMode> ParseOverwriteMode(std::string_view word);
// "Always" and so on, as the settings have it.
std::string_view OverwriteWord(OverwriteMode mode);

}  // namespace quellix
