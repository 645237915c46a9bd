#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// A stored name in UTF-8. Older programs write names in code page 437, as the format's first
// edition has it, and do not say so.
std::string EntryName(std::string_view stored);

// The path of an entry below the folder it is restored to, with "\" between its parts.
std::string EntryPath(std::string_view stored_name);

// Why an entry's stored name is not restored: it would leave the folder, or is no name a Windows
// file can have safely. Nothing when it is fine. Of an archive of our `own` names of devices and
// such that end in a dot or a blank come back: what could be removed can be put back.
std::optional<std::string> RefusalOf(std::string_view stored_name, bool own = false);

}  // namespace quellix
