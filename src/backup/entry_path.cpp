#include "backup/entry_path.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr std::u16string_view kUpperHalf437 =
    u"\u00C7\u00FC\u00E9\u00E2\u00E4\u00E0\u00E5\u00E7\u00EA\u00EB\u00E8\u00EF\u00EE\u00EC"
    u"\u00C4\u00C5\u00C9\u00E6\u00C6\u00F4\u00F6\u00F2\u00FB\u00F9\u00FF\u00D6\u00DC\u00A2"
    u"\u00A3\u00A5\u20A7\u0192\u00E1\u00ED\u00F3\u00FA\u00F1\u00D1\u00AA\u00BA\u00BF\u2310"
    u"\u00AC\u00BD\u00BC\u00A1\u00AB\u00BB\u2591\u2592\u2593\u2502\u2524\u2561\u2562\u2556"
    u"\u2555\u2563\u2551\u2557\u255D\u255C\u255B\u2510\u2514\u2534\u252C\u251C\u2500\u253C"
    u"\u255E\u255F\u255A\u2554\u2569\u2566\u2560\u2550\u256C\u2567\u2568\u2564\u2565\u2559"
    u"\u2558\u2552\u2553\u256B\u256A\u2518\u250C\u2588\u2584\u258C\u2590\u2580\u03B1\u00DF"
    u"\u0393\u03C0\u03A3\u03C3\u00B5\u03C4\u03A6\u0398\u03A9\u03B4\u221E\u03C6\u03B5\u2229"
    u"\u2261\u00B1\u2265\u2264\u2320\u2321\u00F7\u2248\u00B0\u2219\u00B7\u221A\u207F\u00B2"
    u"\u25A0\u00A0";
static_assert(kUpperHalf437.size() == 128);

// The part before the first dot decides, as Windows has it: NUL.txt is a device as well.
bool IsDevice(std::string_view part) {
  std::string_view name = part.substr(0, part.find('.'));
  while (name.ends_with(' ')) name.remove_suffix(1);
  for (const char* device : {"CON", "PRN", "AUX", "NUL", "CLOCK$", "CONIN$", "CONOUT$"}) {
    if (EqualsNoCase(name, device)) return true;
  }
  const std::string_view port = name.substr(0, 3),
                         number = name.substr(std::min<size_t>(3, name.size()));
  if (!EqualsNoCase(port, "COM") && !EqualsNoCase(port, "LPT")) return false;
  for (const char* digit :
       {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"}) {
    if (number == digit) return true;
  }
  return false;
}

const char* FaultOf(std::string_view part, bool own) {
  if (part.empty())
    return Mark("\"%1\" is not restored: its path begins with a slash or holds an empty part.");
  if (part == "." || part == "..")
    return Mark("\"%1\" is not restored: its path climbs out of its folder.");
  if (part.find(':') != std::string_view::npos)
    return Mark("\"%1\" is not restored: its path names a drive or a stream.");
  if (part.find('\\') != std::string_view::npos)
    return Mark("\"%1\" is not restored: its path holds a backslash.");
  const bool forbidden = std::any_of(part.begin(), part.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 ||
           std::string_view("*?<>\"|").find(c) != std::string_view::npos;
  });
  if (forbidden)
    return Mark("\"%1\" is not restored: its path holds a character no file name can hold.");
  if (own) return nullptr;
  if (part.ends_with('.') || part.ends_with(' '))
    return Mark("\"%1\" is not restored: its path ends in a dot or a blank.");
  if (IsDevice(part)) return Mark("\"%1\" is not restored: its path names a device.");
  return nullptr;
}

}  // namespace

std::string EntryName(std::string_view stored) {
  if (IsUtf8(stored)) return std::string(stored);
  std::u16string name;
  for (const char c : stored) {
    const auto byte = static_cast<unsigned char>(c);
    name += byte < 0x80 ? static_cast<char16_t>(byte) : kUpperHalf437[byte - 0x80];
  }
  return ToUtf8(name);
}

std::string EntryPath(std::string_view stored_name) {
  std::string path(stored_name);
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::optional<std::string> RefusalOf(std::string_view stored_name, bool own) {
  std::string_view rest = stored_name;
  if (rest.ends_with('/')) rest.remove_suffix(1);  // a folder
  for (const std::string& part : Split(rest, '/')) {
    const char* const fault = FaultOf(part, own);
    if (fault == nullptr) continue;
    return Tr(fault, stored_name);
  }
  return std::nullopt;
}

}  // namespace quellix
