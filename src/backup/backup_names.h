#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/locale.h"

namespace quellix {

// What the names of archives tell, such as "C_141120269057.zip".

// The prefix ("C_"), the day, month, year, hour, minute and second, the suffix: the hour and the
// second without a leading zero, as the names of older archives have it.
std::string BackupArchiveName(std::string_view prefix, const LocalTime& now,
                              std::string_view suffix = ".zip");

// What the paths in an archive begin with: "C:\", or "\\" for files of servers ("__...zip").
std::optional<std::string> RootOfArchive(std::string_view name);

// One second later, within the day: for when a name is taken.
LocalTime NextSecond(LocalTime time);

// Whether a name is of the form that BackupArchiveName gives an archive.
bool IsArchiveName(std::string_view name);

// The date of a name with a prefix of two characters and a suffix of four; nothing when it has
// none, or one that can be read in two ways.
std::optional<LocalTime> DateOfArchive(std::string_view name);

}  // namespace quellix
