#pragma once

#include <string>
#include <string_view>

namespace quellix::modPlugin {

// The SHA-256 of some bytes (FIPS 180-4), as 64 hexadecimal digits: nobody finds other bytes that
// have the same one.
std::string Fingerprint(std::string_view bytes);

}  // namespace quellix::modPlugin
