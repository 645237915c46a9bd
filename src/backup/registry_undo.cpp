#include "backup/registry_undo.h"

#include "backup/backup_names.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

constexpr std::string_view kPrefix = "R_";
constexpr std::string_view kExtension = ".reg";

struct Home {
  RegistryRoot root;
  std::string key;
};

// Where a key is kept: HKEY_CLASSES_ROOT shows the user's classes over the machine's, and what is
// written to it does not always come back to where it was.
std::vector<Home> HomesOf(RegistryRoot root, std::string_view key) {
  const std::string plain(WithoutBackslash(key));
  if (root != RegistryRoot::kClassesRoot) return {{root, plain}};
  return {{RegistryRoot::kCurrentUser, "Software\\Classes\\" + plain},
          {RegistryRoot::kLocalMachine, "Software\\Classes\\" + plain}};
}

// A file of the same second is someone else's, and may be cut off.
std::string FreePath(const Machine& machine, std::string_view folder) {
  for (LocalTime time = machine.system.Now();; time = NextSecond(time)) {
    std::string path = std::string(folder) + BackupArchiveName(kPrefix, time, kExtension);
    if (!machine.files.Look(path, Detail::kKind)) return path;
  }
}

// Appends to a file, or to what it makes anew; after a failure it is as before.
void Append(FileSystem& files, std::string_view path, const std::string& bytes) {
  std::unique_ptr<RandomFile> file = files.Open(path, OpenMode::kReadAndCreate);
  const uint64_t size = file->Size();
  try {
    file->Write(size, size == 0 ? RegFileHeader() + bytes : bytes);
    file->Flush();
  } catch (const Error&) {
    file->Resize(size);
    file.reset();
    if (size == 0) files.RemoveFile(path);
    throw;
  }
}

}  // namespace

void RegistryUndo::AddValue(Registry& registry, RegistryRoot root, std::string_view key,
                            std::string_view name) {
  for (const Home& home : HomesOf(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    const auto value = opened ? opened->QueryValue(name) : std::nullopt;
    if (!value) continue;
    added_.AddKey(home.root, home.key);
    added_.AddValue(name, *value);
    return;
  }
}

void RegistryUndo::AddKey(Registry& registry, RegistryRoot root, std::string_view key) {
  for (const Home& home : HomesOf(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    if (opened && !opened->SubKeyAt(0)) AddOpenKey(home.root, home.key, *opened, false);
  }
}

void RegistryUndo::AddTree(Registry& registry, RegistryRoot root, std::string_view key) {
  for (const Home& home : HomesOf(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    if (opened) AddOpenKey(home.root, home.key, *opened, true);
  }
}

void RegistryUndo::AddOpenKey(RegistryRoot root, const std::string& path, RegistryKey& key,
                              bool deep) {
  added_.AddKey(root, path);
  std::string name;
  RegistryValue value;
  for (uint32_t i = 0; key.ReadValueAt(i, name, value); ++i) added_.AddValue(name, value);
  if (!deep) return;
  for (uint32_t i = 0; const auto sub_key = key.SubKeyAt(i); ++i) {
    if (key.IsLink(*sub_key)) continue;  // stays when the tree is deleted
    const auto child = key.Open(*sub_key, RegistryAccess::kRead);
    if (child) AddOpenKey(root, path + "\\" + *sub_key, *child, true);
  }
}

void RegistryUndo::Store(const Machine& machine, std::string_view folder) {
  const RegFileText added = std::exchange(added_, {});
  if (added.IsEmpty()) return;
  MakeFolders(machine.files, folder);
  const std::string path = path_.empty() ? FreePath(machine, folder) : path_;
  Append(machine.files, path, added.Bytes());
  path_ = path;
}

}  // namespace quellix
