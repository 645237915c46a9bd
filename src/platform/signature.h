#pragma once

#include <string>
#include <string_view>

namespace quellix {

// Whether whoever has the private half of a key has signed these bytes: ECDSA over the curve P-256
// (FIPS 186-4), of their SHA-256. Key (X and Y) and signature (r and s) are 128 hexadecimal digits;
// false for what is none. Verified by the system's own library or a common one; throws Error where
// that fails.
bool IsSignedBy(std::string_view key, std::string_view bytes, std::string_view signature);

// Bytes written as hexadecimal digits; "" where other characters, or an odd number, are there.
std::string FromHexDigits(std::string_view digits);

}  // namespace quellix
