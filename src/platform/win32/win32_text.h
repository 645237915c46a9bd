#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/text.h"

namespace quellix {

// The border between the program's UTF-8 and the wide Windows calls.
static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::wstring Wide(std::string_view utf8) {
  const std::u16string text = ToUtf16(utf8);
  return {text.begin(), text.end()};
}

inline std::string Narrow(std::wstring_view wide) {
  return ToUtf8(std::u16string(wide.begin(), wide.end()));
}

// The text of a Windows call that fills a buffer and tells its length, or the size it needs when
// the buffer is too small; "" when it fails. `call` is given buffer and size in characters.
template <typename Call>
std::wstring GrowingText(Call call) {
  std::wstring text(260, L'\0');
  while (true) {
    const uint32_t size = static_cast<uint32_t>(text.size());
    const uint32_t length = call(text.data(), size);
    const bool fits = length < size;
    text.resize(length);
    if (fits) return text;
  }
}

}  // namespace quellix
