#include "settings/path_check.h"

#include <algorithm>
#include <vector>

#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

bool IsDrivePath(std::string_view path) {
  const char letter = static_cast<char>(path.empty() ? 0 : path[0] | 0x20);
  const bool drive = (letter >= 'a' && letter <= 'z') || path.starts_with('@');
  return drive && path.substr(1).starts_with(":\\");
}

// "\\server\share", with or without more behind it.
bool IsNetworkPath(std::string_view path) {
  if (!path.starts_with("\\\\") || path.starts_with("\\\\.") || path.starts_with("\\\\?")) {
    return false;
  }
  const size_t share = path.find('\\', 2);
  return share > 2 && share != path.npos && share + 1 < path.size() && path[share + 1] != '\\';
}

bool HasEmptyStep(std::string_view path) {
  std::vector<std::string> steps = Split(path, '\\');
  if (steps.size() > 1 && steps.back().empty()) steps.pop_back();
  return std::ranges::any_of(steps, [](const std::string& step) {
    return step.find_first_not_of(" .") == std::string::npos;  // "", "." and ".." among them
  });
}

}  // namespace

bool HasControlCharacters(std::string_view text) {
  return std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

std::string WhyNoPath(std::string_view path) {
  const bool on_drive = IsDrivePath(path);
  if (!on_drive && !IsNetworkPath(path)) {
    return Mark("Please enter a full path, such as C:\\Folder.");
  }
  const std::string_view rest = path.substr(on_drive ? 3 : 2);
  if (rest.find_first_of("/:*?\"<>|") != rest.npos || HasControlCharacters(rest)) {
    return Mark("A path cannot hold any of the characters / : * ? \" < > |.");
  }
  if (!rest.empty() && HasEmptyStep(rest)) return Mark("A part of the path is no name.");
  return {};
}

std::string WhyNoName(std::string_view name) {
  if (name.find_first_not_of(" .") == name.npos) return Mark("Please enter a name.");
  if (name.find_first_of("\\/:*?\"<>|") != name.npos || HasControlCharacters(name)) {
    return Mark("A name cannot hold any of the characters \\ / : * ? \" < > |.");
  }
  return {};
}

}  // namespace quellix
