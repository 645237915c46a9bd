#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace quellix {

// Where Windows keeps a user's folders, whether or not they were moved.

// The path that a text value of the key holds, variables replaced; "" when there is none.
std::string ReadFolderValue(const Machine& machine, RegistryKey& key, std::string_view name);

// The path of "Desktop", "Documents", "Downloads", "Favorites", "Music", "Pictures", "Videos" or
// "LocalLowAppData", in any case; nothing for another name. The folder need not be there.
std::optional<std::string> KnownFolder(const Machine& machine, std::string_view name);

}  // namespace quellix
