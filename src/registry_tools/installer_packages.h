#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/machine.h"
#include "platform/pause.h"

namespace quellix {

// What the Windows Installer knows of the packages that it keeps in Windows\Installer, with which
// it changes and removes products.
struct InstallerPackages {
  std::map<std::string, std::string> products;  // by packed code, the package of each; "" for none
  std::set<std::string> names;                  // of packages and patches, in upper case
  bool is_whole = false;                        // all that it knows was read, and it knows of some
};

// A stop leaves it less than whole.
InstallerPackages ReadInstallerPackages(const Machine& machine, const Pause& pause);

// A product's code as the installer writes it in its keys: of
// "{01234567-89AB-CDEF-0123-456789ABCDEF}" "76543210BA98FEDC1032547698BADCFE"; "" for what is no
// such code.
std::string PackedCode(std::string_view code);

}  // namespace quellix
