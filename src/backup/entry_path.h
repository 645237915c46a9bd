#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// The path of an entry below the folder it is restored to, with "\" between its parts.
std::string EntryPath(std::string_view stored_name);

// Why an entry's stored name is not restored: it would leave the folder, or is no name a Windows
// file can have safely. Nothing when it is fine.
std::optional<std::string> RefusalOf(std::string_view stored_name);

}  // namespace quellix
