#include "browser_tools/cache_preview.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr size_t kShown = 64u << 10;  // bytes of a file, enough to tell what it is
constexpr std::string_view kRecordMarks[] = {"Cookie:", "Visited:"};

bool IsPicture(std::string_view bytes) {
  constexpr std::string_view kSignatures[] = {
      {"GIF8", 4}, {"\x89PNG\r\n\x1A\n", 8}, {"\xFF\xD8\xFF", 3}, {"\0\0\1\0", 4}};
  // Two letters alone may begin a text; in a picture NULs follow.
  if (bytes.starts_with("BM") && bytes.substr(0, 14).find('\0') != std::string_view::npos) {
    return true;
  }
  return std::ranges::any_of(kSignatures,
                             [&](std::string_view mark) { return bytes.starts_with(mark); });
}

// Without a character that was cut through at the end.
std::string_view WholeCharacters(std::string_view bytes) {
  while (!bytes.empty() && (bytes.back() & 0xC0) == 0x80) bytes.remove_suffix(1);
  if (!bytes.empty() && (bytes.back() & 0xC0) == 0xC0) bytes.remove_suffix(1);
  return bytes;
}

std::string ToText(std::string_view bytes, bool cut_off, System& system) {
  if (bytes.starts_with("\xFF\xFE")) return FromUtf16Bytes(bytes.substr(2));
  if (bytes.find('\0') != std::string_view::npos) {
    return Tr("The file of this entry is neither a text nor a picture.");
  }
  return DecodeText(cut_off ? WholeCharacters(bytes) : bytes, system);
}

std::string OneLineEnd(const std::string& text) {
  std::string lines = ReplaceNoCase(text, "\r\n", "\n");
  std::ranges::replace(lines, '\r', '\n');
  std::erase(lines, '\0');
  return lines;
}

}  // namespace

bool IsCacheRecord(std::string_view source) {
  return std::ranges::any_of(kRecordMarks, [&](std::string_view mark) {
    return source.find(mark) != std::string_view::npos;
  });
}

std::string DescribeCacheRecord(std::string_view source) {
  const std::string_view rest = TrimBlanks(source.substr(source.find(':') + 1));
  const size_t at = rest.find('@');
  if (at == std::string_view::npos) return Tr("Address: %1", rest);
  return Tr("User: %1", rest.substr(0, at)) + "\n" + Tr("Address: %1", rest.substr(at + 1));
}

CacheContent ReadCacheContent(const Machine& machine, const UrlCacheEntry& entry) {
  if (entry.local_file.empty()) return {.text = Tr("This entry has no file."), .picture = {}};
  try {
    const auto file = machine.files.Open(entry.local_file, OpenMode::kRead);
    std::string bytes(kShown, '\0');
    bytes.resize(file->Read(0, bytes));
    if (IsPicture(bytes)) return {.text = {}, .picture = entry.local_file};
    return {.text = OneLineEnd(ToText(bytes, file->Size() > bytes.size(), machine.system)),
            .picture = {}};
  } catch (const Error& error) {
    return {.text = Shown(error), .picture = {}};
  }
}

}  // namespace quellix
