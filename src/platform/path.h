#pragma once

#include <string>
#include <string_view>

namespace quellix {

// `folder` with a "\" at its end unless it is empty or has one.
std::string WithBackslash(std::string_view folder);
// Without the "\" at its end.
std::string_view WithoutBackslash(std::string_view folder);
// Up to and including the last "\"; empty when there is none.
std::string_view FolderPart(std::string_view path);
// Behind the last "\"; the whole text when there is none.
std::string_view NamePart(std::string_view path);

// A random name for a file that takes its real name when it is whole: "~qx", 16 hexadecimal digits,
// ".tmp". Such files are made exclusively; those that a kill left are cleared away later.
std::string TemporaryName();
// Whether a name is one of those, or of the forms that earlier editions gave
// ("quellix-PID-N.tmp", "~qxN.tmp", "~quellix-restore.tmp").
bool IsTemporaryName(std::string_view name);

}  // namespace quellix
