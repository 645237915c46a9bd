#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/locale.h"

namespace quellix {

// What the names of archives tell, such as "C_141120269057.zip".

// The prefix ("C_"), the day, month, year, hour, minute and second, ".zip": the hour and the second
// without a leading zero, as the names of older archives have it.
std::string BackupArchiveName(std::string_view prefix, const LocalTime& now);

// What the paths in an archive begin with: "C:\", or "\\" for files of servers ("__...zip").
std::optional<std::string> RootOfArchive(std::string_view name);

// Nothing when the name has no date, or one that can be read in two ways.
std::optional<LocalTime> DateOfArchive(std::string_view name);

// A FILETIME as date and time, in UTC.
LocalTime ToLocalTime(int64_t filetime);

}  // namespace quellix
