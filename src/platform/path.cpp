#include "platform/path.h"

namespace quellix {

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

}  // namespace quellix
