#include "platform/path.h"

#include <algorithm>
#include <random>

#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kTemporary = "~qx", kTemporaryEnd = ".tmp";

bool HasOnly(std::string_view text, std::string_view characters) {
  return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

}  // namespace

std::string WithBackslash(std::string_view folder) {
  std::string result(folder);
  if (!result.empty() && result.back() != '\\') result += '\\';
  return result;
}

std::string_view WithoutBackslash(std::string_view folder) {
  return folder.ends_with('\\') ? folder.substr(0, folder.size() - 1) : folder;
}

std::string_view FolderPart(std::string_view path) { return path.substr(0, path.rfind('\\') + 1); }

std::string_view NamePart(std::string_view path) { return path.substr(path.rfind('\\') + 1); }

std::string TemporaryName() {
  std::random_device random;
  std::string name(kTemporary);
  for (int i = 0; i < 16; ++i) name += "0123456789abcdef"[random() % 16];
  return name.append(kTemporaryEnd);
}

bool IsTemporaryName(std::string_view name) {
  if (EqualsNoCase(name, "~quellix-restore.tmp")) return true;
  if (name.size() < 8 || !EqualsNoCase(name.substr(name.size() - 4), kTemporaryEnd)) return false;
  const std::string_view stem = name.substr(0, name.size() - 4);
  if (EqualsNoCase(stem.substr(0, 3), kTemporary)) {
    return HasOnly(stem.substr(3), "0123456789abcdefABCDEF");
  }
  if (stem.size() < 9 || !EqualsNoCase(stem.substr(0, 8), "quellix-")) return false;
  const size_t dash = stem.rfind('-');
  return HasOnly(stem.substr(std::min<size_t>(8, dash), dash - 8), "0123456789") &&
         HasOnly(stem.substr(dash + 1), "0123456789");
}

}  // namespace quellix
