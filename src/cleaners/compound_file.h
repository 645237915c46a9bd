#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// The bytes of a stream of a compound file ([MS-CFB], "OLE file"), by its ASCII name, wherever in
// the file's tree it is; nothing when there is none. `file` is all of the file. Throws Error
// (kOther) where the file is none, its parts do not fit together, or two streams have the name. No
// chain of sectors is followed for longer than the file has sectors.
std::optional<std::string> ReadStream(std::string_view file, std::string_view name);

}  // namespace quellix
