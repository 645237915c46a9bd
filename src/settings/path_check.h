#pragma once

#include <string>
#include <string_view>

namespace quellix {

// Why a text cannot be the full path of a file or folder ("C:\Temp", "\\server\share\x"), in a
// sentence for its user, in English; "" when it can. Nothing needs to be there.
std::string WhyNoPath(std::string_view path);

// The same for a name without a folder: no separators, no wildcards.
std::string WhyNoName(std::string_view name);

// Whether a text holds characters that no line of a list can hold.
bool HasControlCharacters(std::string_view text);

}  // namespace quellix
