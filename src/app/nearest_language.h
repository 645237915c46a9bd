#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quellix {

// The known language that suits a user best; "" for English. Both as Windows or gettext name
// languages ("de-AT", "pt_BR"), in any case; what the user wants most comes first. A language
// serves for its other countries, but a script does not serve for another one.
std::string NearestLanguage(std::span<const std::string> wanted,
                            std::span<const std::string> known);

// Whether both name the same language of the same country.
bool IsSameLanguage(std::string_view a, std::string_view b);

}  // namespace quellix
