#include "search/ignore_lists.h"

#include <algorithm>

#include "platform/text.h"
#include "settings/list_files.h"

namespace quellix {
namespace {

bool HasExtensionIn(std::string_view upper_name, const std::unordered_set<std::string>& set) {
  const size_t dot = upper_name.rfind('.');
  return dot != std::string_view::npos && set.contains(std::string(upper_name.substr(dot + 1)));
}

// What lies there belongs together in pairs, one half for the name and one for the contents.
bool IsRecycleBin(std::string_view upper_path) {
  const size_t start = upper_path.find('\\') + 1;
  const std::string_view name = upper_path.substr(start, upper_path.find('\\', start) - start);
  return start != 0 && (name == "$RECYCLE.BIN" || name == "RECYCLER" || name == "RECYCLED");
}

std::unordered_set<std::string> UpperSet(const std::vector<std::string>& entries) {
  std::unordered_set<std::string> set;
  for (const std::string& entry : entries) {
    if (!entry.empty()) set.insert(UpCase(entry));
  }
  return set;
}

}  // namespace

IgnoreLists::IgnoreLists(const std::vector<std::string>& files,
                         const std::vector<std::string>& extensions,
                         const std::vector<std::string>& folders)
    : files_(UpperSet(files)), extensions_(UpperSet(extensions)) {
  for (const std::string& folder : folders) {
    if (!folder.empty()) folders_.push_back(UpCase(folder));
  }
}

bool IgnoreLists::IsIgnoredFile(std::string_view name) const {
  return files_.contains(UpCase(name));
}

bool IgnoreLists::IsIgnoredExtension(std::string_view name) const {
  return HasExtensionIn(UpCase(name), extensions_);
}

bool IgnoreLists::IsIgnoredFolder(std::string_view path) const {
  const std::string upper = UpCase(path);
  return IsRecycleBin(upper) || std::ranges::any_of(folders_, [&upper](const std::string& part) {
           return upper.find(part) != std::string::npos;
         });
}

bool IgnoreLists::Ignores(const std::string& upper_name) const {
  return files_.contains(upper_name) ||
         (!extensions_.empty() && HasExtensionIn(upper_name, extensions_));
}

IgnoreLists LoadIgnoreLists(const Machine& machine) {
  return {ReadListFile(machine, "IFI.txt", "DefIFI.txt"), ReadListFile(machine, "IE.txt"),
          ReadListFile(machine, "UDIFO.txt")};
}

}  // namespace quellix
