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

}  // namespace quellix
