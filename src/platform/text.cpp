#include "platform/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quellix {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kMalformed = 0xFFFFFFFF;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Decodes one character and advances; kMalformed takes one byte. Surrogates are accepted (WTF-8).
char32_t NextCharacter(std::string_view text, size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) return lead;
  const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || at + more > text.size()) return kMalformed;
  char32_t result = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    const auto byte = static_cast<unsigned char>(text[at + i]);
    if (!IsContinuation(byte)) return kMalformed;
    result = result << 6 | (byte & 0x3F);
  }
  static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (result < kSmallest[more] || result > 0x10FFFF) return kMalformed;
  at += more;
  return result;
}

void AppendCharacter(std::string& text, char32_t c) {
  const auto put = [&text](char32_t value) { text += static_cast<char>(value); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      put(0xE0 | c >> 12);
    } else {
      put(0xF0 | c >> 18);
      put(0x80 | (c >> 12 & 0x3F));
    }
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
}

char UpAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// Of UTF-16 both are in upper case already.
bool AreSame(char16_t a, char16_t b) { return a == b; }
bool AreSame(char a, char b) { return UpAscii(a) == UpAscii(b); }

// FindFirstFile's matching over characters of one unit each, in linear time and without memory: on
// a mismatch only the last star is tried again.
template <typename Text>
bool MatchesPattern(Text name, Text mask) {
  size_t n = 0, m = 0, star = Text::npos, resume = 0;
  while (n < name.size()) {
    if (m < mask.size() && mask[m] == '*') {
      star = m++;
      resume = n;
    } else if (m < mask.size() && (mask[m] == '?' || AreSame(mask[m], name[n]))) {
      ++m;
      ++n;
    } else if (star != Text::npos) {
      m = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  return mask.find_first_not_of('*', m) == Text::npos;
}

template <typename Text>
bool FitsMask(Text name, Text mask) {
  const bool has_extension = name.find('.') != Text::npos;
  if (mask.size() > 1 && mask.back() == '.') {
    return !has_extension && MatchesPattern(name, mask.substr(0, mask.size() - 1));
  }
  // "a.*" fits "a" as well: a name without an extension is taken as if it ended in a dot.
  const size_t stem = mask.size() > 1 && mask.back() == '*' ? mask.size() - 2 : Text::npos;
  const bool is_any = stem != Text::npos && mask[stem] == '.';
  if (is_any && !has_extension && MatchesPattern(name, mask.substr(0, stem))) return true;
  return MatchesPattern(name, mask);
}

}  // namespace

std::u16string ToUtf16(std::string_view utf8) {
  std::u16string result;
  result.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    char32_t c = NextCharacter(utf8, at);
    if (c == kMalformed) c = kReplacement;
    if (c >= 0x10000) {
      result += static_cast<char16_t>(0xD7C0 + (c >> 10));
      c = 0xDC00 | (c & 0x3FF);
    }
    result += static_cast<char16_t>(c);
  }
  return result;
}

std::string ToUtf8(std::u16string_view utf16) {
  std::string result;
  result.reserve(utf16.size());
  for (size_t at = 0; at < utf16.size(); ++at) {
    char32_t c = utf16[at];
    if (IsHighSurrogate(c) && at + 1 < utf16.size() && IsLowSurrogate(utf16[at + 1])) {
      c = 0x10000 + ((c & 0x3FF) << 10) + (utf16[++at] & 0x3FF);
    }
    AppendCharacter(result, c);
  }
  return result;
}

bool IsUtf8(std::string_view bytes) {
  for (size_t at = 0; at < bytes.size();) {
    const char32_t c = NextCharacter(bytes, at);
    if (c == kMalformed || IsHighSurrogate(c) || IsLowSurrogate(c)) return false;
  }
  return true;
}

std::string FromUtf16Bytes(std::string_view bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    const auto low = static_cast<unsigned char>(bytes[2 * i]);
    const auto high = static_cast<unsigned char>(bytes[2 * i + 1]);
    text[i] = static_cast<char16_t>(high << 8 | low);
  }
  return ToUtf8(text);
}

std::string ToUtf16Bytes(std::string_view utf8) {
  std::string bytes;
  for (const char16_t c : ToUtf16(utf8)) {
    bytes += static_cast<char>(c & 0xFF);
    bytes += static_cast<char>(c >> 8);
  }
  return bytes;
}

std::string UpCase(std::string_view utf8) {
  std::string result(utf8);
  size_t at = 0;  // of the first that is not ASCII; most texts have none
  for (; at < utf8.size() && (utf8[at] & 0x80) == 0; ++at) result[at] = UpAscii(utf8[at]);
  result.resize(at);
  while (at < utf8.size()) {
    const size_t start = at;
    const char32_t c = NextCharacter(utf8, at);
    if (c == kMalformed) {
      result += utf8[start];
    } else if (c < 0x80) {
      result += UpAscii(static_cast<char>(c));
    } else {
      AppendCharacter(result, UpCase(c));
    }
  }
  return result;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a == b) return true;
  if (!IsAscii(a) || !IsAscii(b)) return UpCase(a) == UpCase(b);
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return UpAscii(x) == UpAscii(y); });
}

// Paths in one list begin alike, and most texts are told apart before upper case is made.
int CompareNoCase(std::string_view a, std::string_view b) {
  const size_t length = std::min(a.size(), b.size());
  size_t i = 0;
  while (i + sizeof(uint64_t) <= length && std::memcmp(&a[i], &b[i], sizeof(uint64_t)) == 0) {
    i += sizeof(uint64_t);
  }
  while (i > 0 && i < length && (a[i] & 0xC0) == 0x80) --i;  // to the beginning of its character
  for (; i < length; ++i) {
    if (((a[i] | b[i]) & 0x80) != 0) return UpCase(a.substr(i)).compare(UpCase(b.substr(i)));
    const char x = UpAscii(a[i]), y = UpAscii(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool ContainsNoCase(std::string_view text, std::string_view part) {
  return UpCase(text).find(UpCase(part)) != std::string::npos;
}

std::string ReplaceNoCase(std::string_view text, std::string_view part, std::string_view with) {
  std::string result;
  size_t at = 0;
  while (!part.empty() && at + part.size() <= text.size()) {
    if (EqualsNoCase(text.substr(at, part.size()), part)) {
      result += with;
      at += part.size();
    } else {
      result += text[at++];
    }
  }
  return result.append(text.substr(at));
}

std::string_view TrimBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string_view TrimNull(std::string_view text) { return text.substr(0, text.find('\0')); }

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

bool MatchesMask(std::string_view name, std::string_view mask) {
  if (mask == "*.*" || mask == "*") return true;
  if (IsAscii(name) && IsAscii(mask)) return FitsMask(name, mask);
  const std::u16string wide_name = ToUtf16(UpCase(name)), wide_mask = ToUtf16(UpCase(mask));
  return FitsMask<std::u16string_view>(wide_name, wide_mask);
}

}  // namespace quellix
