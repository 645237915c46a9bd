#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// UTF-8 and UTF-16. Unpaired surrogates travel as WTF-8 and come back; other malformed UTF-8
// becomes U+FFFD.
std::u16string ToUtf16(std::string_view utf8);
std::string ToUtf8(std::u16string_view utf16);
bool IsUtf8(std::string_view bytes);

// UTF-16LE bytes, as the registry and Windows structures hold texts; an odd last byte is ignored.
std::string FromUtf16Bytes(std::string_view bytes);
std::string ToUtf16Bytes(std::string_view utf8);

// One character in upper case, in Windows' simple mapping (one character to one). Defined by the
// platform that is linked.
char32_t UpCase(char32_t character);

// Upper case of a whole text; malformed bytes stay.
std::string UpCase(std::string_view utf8);
bool EqualsNoCase(std::string_view a, std::string_view b);
// As the upper case of both compares: less than, equal to or greater than 0.
int CompareNoCase(std::string_view a, std::string_view b);
bool ContainsNoCase(std::string_view text, std::string_view part);
// `text` with every occurrence of `part`, in any case, replaced.
std::string ReplaceNoCase(std::string_view text, std::string_view part, std::string_view with);

std::string_view TrimBlanks(std::string_view text);
std::string_view TrimNull(std::string_view text);  // what stands left of the first NUL
std::vector<std::string> Split(std::string_view text, char separator);

// Whether a file name fits a FindFirstFile pattern: "*", "?", without regard to case. "*.*" fits
// every name, and a pattern that ends in "." fits names without an extension.
bool MatchesMask(std::string_view name, std::string_view mask);

}  // namespace quellix
