#pragma once

#include <string_view>

namespace quellix {

// Whether a registry hive is put together as one must be before it is written: every cell lies in
// its bin, is in use and belongs to one place only. hivex looks where it goes while it reads, but
// takes all that for granted while it writes. `bytes` is the whole file.
bool IsSoundHive(std::string_view bytes);

}  // namespace quellix
