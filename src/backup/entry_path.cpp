#include "backup/entry_path.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix {
namespace {

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

const char* FaultOf(std::string_view part) {
  if (part.empty()) return "begins with a slash or holds an empty part";
  if (part == "." || part == "..") return "climbs out of its folder";
  if (part.find(':') != std::string_view::npos) return "names a drive or a stream";
  if (part.find('\\') != std::string_view::npos) return "holds a backslash";
  const bool forbidden = std::any_of(part.begin(), part.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 ||
           std::string_view("*?<>\"|").find(c) != std::string_view::npos;
  });
  if (forbidden) return "holds a character no file name can hold";
  if (part.ends_with('.') || part.ends_with(' ')) return "ends in a dot or a blank";
  if (IsDevice(part)) return "names a device";
  return nullptr;
}

}  // namespace

std::string EntryPath(std::string_view stored_name) {
  std::string path(stored_name);
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::optional<std::string> RefusalOf(std::string_view stored_name) {
  std::string_view rest = stored_name;
  if (rest.ends_with('/')) rest.remove_suffix(1);  // a folder
  for (const std::string& part : Split(rest, '/')) {
    const char* const fault = FaultOf(part);
    if (fault == nullptr) continue;
    return "\"" + std::string(stored_name) + "\" is not restored: its path " + fault + ".";
  }
  return std::nullopt;
}

}  // namespace quellix
