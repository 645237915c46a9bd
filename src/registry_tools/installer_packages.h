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
  // By packed code; of each user who has it, and of the machine, the package, "" for none.
  std::multimap<std::string, std::string> products;
  std::set<std::string> names;  // of packages and patches, in upper case
  bool is_whole = false;        // all that it knows was read, and it knows of some
};

// Whether a product has one of its packages, or cannot be told to have none.
bool HasPackage(const Machine& machine, const InstallerPackages& packages,
                const std::string& packed_code);

// Why a file of Windows\\Installer is not one that nothing needs, a sentence; "" where no product
// and no patch names it and it lies there for a day or longer, which an installation that goes on
// does not take. `packages` is whole.
std::string WhyNeeded(const Machine& machine, const InstallerPackages& packages,
                      const std::string& path);

// A stop leaves it less than whole.
InstallerPackages ReadInstallerPackages(const Machine& machine, const Pause& pause);

// A product's code as the installer writes it in its keys: of
// "{01234567-89AB-CDEF-0123-456789ABCDEF}" "76543210BA98FEDC1032547698BADCFE"; "" for what is no
// such code.
std::string PackedCode(std::string_view code);

}  // namespace quellix
