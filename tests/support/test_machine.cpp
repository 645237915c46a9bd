#include "support/test_machine.h"

#include "platform/text.h"

namespace quellix {
namespace {

void AddTree(FileSystem& files, const std::string& folder, const std::string& prefix,
             Names& names) {
  Names folders;
  files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
    const std::string name = prefix + std::string(entry.name);
    names.push_back(entry.info.is_folder ? name + "\\" : name);
    if (entry.info.is_folder && !entry.info.is_link) folders.emplace_back(entry.name);
    return true;
  });
  for (const std::string& name : folders)
    AddTree(files, folder + "\\" + name, prefix + name + "\\", names);
}

}  // namespace

void TestMachine::SetText(RegistryRoot root, std::string_view key, std::string_view name,
                          std::string_view text) {
  SetRegistryValue(root, key, name, {kRegSz, ToUtf16Bytes(text) + std::string(2, '\0')});
}

Names TestMachine::Tree(std::string_view folder) {
  if (folder.ends_with('\\')) folder.remove_suffix(1);
  Names names;
  AddTree(machine().files, std::string(folder), "", names);
  std::sort(names.begin(), names.end());
  return names;
}

Names TestMachine::ValueNames(RegistryRoot root, std::string_view key) {
  Names names;
  const auto open = machine().registry.Open(root, key, RegistryAccess::kRead);
  if (!open) return names;
  for (uint32_t i = 0; const auto value = open->ValueAt(i); ++i) names.push_back(value->name);
  std::sort(names.begin(), names.end());
  return names;
}

bool TestMachine::KeyExists(RegistryRoot root, std::string_view key) {
  return machine().registry.Open(root, key, RegistryAccess::kRead) != nullptr;
}

}  // namespace quellix
