#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/machine.h"

namespace quellix {

// What the user wants no search to find. Everything compares without regard to case; empty lines of
// the lists mean nothing.
class IgnoreLists {
 public:
  IgnoreLists() = default;
  IgnoreLists(const std::vector<std::string>& files, const std::vector<std::string>& extensions,
              const std::vector<std::string>& folders);

  bool IsIgnoredFile(std::string_view name) const;
  // The text behind the last dot; a name without one is never ignored.
  bool IsIgnoredExtension(std::string_view name) const;
  // Any part of the path counts: "temp" also keeps "C:\MyTemplates\" out. Users' lists rely on it.
  // The recycle bins count as named.
  bool IsIgnoredFolder(std::string_view path) const;

  // File or extension, for a name that is in upper case already.
  bool Ignores(const std::string& upper_name) const;

 private:
  std::unordered_set<std::string> files_, extensions_;
  std::vector<std::string> folders_;
};

// From IFI.txt (or else DefIFI.txt), IE.txt and UDIFO.txt. Throws Error when one is there but
// cannot be read: what the user protected must not be found.
IgnoreLists LoadIgnoreLists(const Machine& machine);

}  // namespace quellix
