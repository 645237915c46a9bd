#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

namespace quellix {

// The program's UTF-8 and the wide characters of Windows.
inline std::wstring Wide(std::string_view utf8) {
  const std::u16string text = ToUtf16(utf8);
  return std::wstring(text.begin(), text.end());
}

inline std::string Narrow(std::wstring_view wide) {
  return ToUtf8(std::u16string(wide.begin(), wide.end()));
}

}  // namespace quellix
