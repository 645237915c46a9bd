#include "registry_tools/installer_packages.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/filetime.h"
#include "platform/path.h"
#include "platform/text.h"
#include "registry_tools/mod_registry.h"

namespace quellix {
namespace {

constexpr const char* kUserData =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::string_view kCodeForm = "{00000000-0000-0000-0000-000000000000}";

class Reader {
 public:
  explicit Reader(const Pause& pause) : pause_(pause) {}

  InstallerPackages Read(RegistryKey& users) {
    for (const std::string& user : SubKeyNames(users, pause_)) {
      const auto key = users.Open(user, RegistryAccess::kRead);
      if (key) ReadUser(*key);
    }
    packages_.is_whole = !pause_() && !packages_.names.empty();
    return std::move(packages_);
  }

 private:
  void ReadUser(RegistryKey& user) {
    ForEach(user, "Products", [this](RegistryKey& key, const std::string& code) {
      const auto properties = key.Open("InstallProperties", RegistryAccess::kRead);
      packages_.products.emplace(UpCase(std::string_view(code)),
                                 properties ? Note(*properties) : "");
    });
    ForEach(user, "Patches", [this](RegistryKey& key, const std::string&) { Note(key); });
  }

  template <typename Use>
  void ForEach(RegistryKey& above, const char* name, const Use& use) {
    const auto list = above.Open(name, RegistryAccess::kRead);
    if (!list) return;
    for (const std::string& each : SubKeyNames(*list, pause_)) {
      if (pause_()) return;
      const auto key = list->Open(each, RegistryAccess::kRead);
      if (key) use(*key, each);
    }
  }

  // The package that a key names.
  std::string Note(RegistryKey& key) {
    std::string path;
    // The second is that of a product which its administrator has given to the user.
    for (const char* value : {"ManagedLocalPackage", "LocalPackage"}) {
      const std::string named = modRegistry::ReadText(key, value);
      if (named.empty()) continue;
      packages_.names.insert(UpCase(NamePart(named)));
      path = named;
    }
    return path;
  }

  const Pause& pause_;
  InstallerPackages packages_;
};

}  // namespace

InstallerPackages ReadInstallerPackages(const Machine& machine, const Pause& pause) {
  try {
    const auto users =
        machine.registry.Open(RegistryRoot::kLocalMachine, kUserData, RegistryAccess::kRead);
    return users ? Reader(pause).Read(*users) : InstallerPackages();
  } catch (const Error&) {  // then nothing may be said to be known to nobody
    return {};
  }
}

bool HasPackage(const Machine& machine, const InstallerPackages& packages,
                const std::string& packed_code) {
  const auto [first, last] = packages.products.equal_range(packed_code);
  return std::any_of(first, last, [&machine](const auto& product) {
    return !product.second.empty() && !machine.files.IsGone(product.second);
  });
}

std::string WhyNeeded(const Machine& machine, const InstallerPackages& packages,
                      const std::string& path) {
  if (packages.names.contains(UpCase(NamePart(path))))
    return Tr("A product that is installed needs it: %1", path);
  try {
    const FileTimes times = machine.files.Open(path, OpenMode::kRead)->Times();
    const int64_t yesterday = machine.system.UtcNow() - kFiletimesADay;
    if (times.created <= yesterday && times.last_write <= yesterday) return {};
    return Tr("It is of today, perhaps of an installation that goes on: %1", path);
  } catch (const Error& error) {
    return Tr("How old it is cannot be told: %1", Shown(error));
  }
}

std::string PackedCode(std::string_view code) {
  const bool fits = std::ranges::equal(code, kCodeForm, [](char c, char form) {
    return form == '0' ? std::string_view("0123456789ABCDEFabcdef").find(c) != std::string::npos
                       : c == form;
  });
  if (!fits) return {};
  // The first three numbers are turned around, of the rest each pair of digits.
  std::string digits;
  for (const char c : code) {
    if (std::string_view("{-}").find(c) == std::string_view::npos) digits += c;
  }
  constexpr size_t kGroups[] = {8, 4, 4, 2, 2, 2, 2, 2, 2, 2, 2};
  auto start = digits.begin();
  for (const size_t group : kGroups) {
    std::reverse(start, start + static_cast<std::ptrdiff_t>(group));
    start += static_cast<std::ptrdiff_t>(group);
  }
  return UpCase(std::string_view(digits));
}

}  // namespace quellix
