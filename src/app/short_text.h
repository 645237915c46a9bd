#pragma once

#include <string>
#include <string_view>

namespace quellix {

// A text of at most `most` bytes of whole characters, and "..." where there was more.
inline std::string Shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return std::string(text.substr(0, most)) + "...";
}

}  // namespace quellix
