#include "app/explorer_menu.h"

#include <algorithm>
#include <string>

#include "app/startup.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/mod_registry.h"
#include "registry_tools/registry_eraser.h"

namespace quellix {
namespace {

constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
// All files, and folders.
constexpr const char* kKeys[] = {"Software\\Classes\\*\\shell\\Quellix.Remove",
                                 "Software\\Classes\\Directory\\shell\\Quellix.Remove"};

constexpr int kLevelsOfAClass = 2;  // "shell", and the class itself

struct Value {
  const char *below, *name;
  std::string text;
};

// Explorer starts the program once for each that is selected.
std::vector<Value> ValuesOf(const Machine& machine) {
  const std::string program = "\"" + machine.installed_folder + "\\quellix.exe\"";
  return {{"", "", Tr("Remove with Quellix...")},
          {"", "Icon", program + ",0"},
          {"", "MultiSelectModel", "Player"},
          {"\\command", "", program + " " + std::string(kRemoveSwitch) + " \"%1\""}};
}

bool Has(const Machine& machine, const std::string& key, const Value& value) {
  const auto open = machine.registry.Open(kUser, key + value.below, RegistryAccess::kRead);
  return open && EqualsNoCase(modRegistry::ReadText(*open, value.name), value.text);
}

void Write(const Machine& machine, const std::string& key) {
  for (const Value& value : ValuesOf(machine)) {
    const auto open = machine.registry.Create(kUser, key + value.below);
    open->SetValue(value.name, {kRegSz, ToUtf16Bytes(value.text) + std::string(2, '\0')});
    open->Flush();
  }
}

// With the keys above it, as long as nothing else is in them.
void Remove(const Machine& machine, const std::string& key) {
  using Kind = RegistryTarget::Kind;
  RegistryEraser eraser(machine.registry, RegistryEraser::OnError::kTold);
  eraser.Erase({Kind::kTree, kUser, key, ""});
  std::string_view above = key;
  for (int level = 0; level < kLevelsOfAClass; ++level) {
    above = WithoutBackslash(FolderPart(above));
    const auto open = machine.registry.Open(kUser, above, RegistryAccess::kRead);
    if (!open || open->ValueAt(0) || open->SubKeyAt(0)) return;
    eraser.Erase({Kind::kKey, kUser, std::string(above), ""});
  }
}

}  // namespace

ExplorerMenu LookAtExplorerMenu(const Machine& machine) {
  size_t there = 0;
  bool is_ours = true;
  for (const std::string key : kKeys) {
    const auto open = machine.registry.Open(kUser, key, RegistryAccess::kRead);
    if (!open) continue;
    ++there;
    is_ours = is_ours && !open->SubKeyAt(1);  // what may stand before the command
    for (const Value& value : ValuesOf(machine)) is_ours = is_ours && Has(machine, key, value);
  }
  if (there == 0) return ExplorerMenu::kMissing;
  return is_ours && there == std::size(kKeys) ? ExplorerMenu::kOurs : ExplorerMenu::kChanged;
}

void SaveExplorerMenu(const Machine& machine, bool wanted) {
  if (LookAtExplorerMenu(machine) == (wanted ? ExplorerMenu::kOurs : ExplorerMenu::kMissing))
    return;
  for (const char* const key : kKeys) Remove(machine, key);
  if (!wanted) return;
  for (const char* const key : kKeys) Write(machine, key);
  if (LookAtExplorerMenu(machine) != ExplorerMenu::kOurs)
    throw Error(Error::Kind::kOther, Say("The entry was written and is not as it should be."));
}

}  // namespace quellix
