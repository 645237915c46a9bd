#include "backup/registry_undo.h"

#include "backup/backup_names.h"
#include "platform/error.h"
#include "platform/path.h"

namespace quellix {
namespace {

constexpr std::string_view kPrefix = "R_";
constexpr std::string_view kExtension = ".reg";

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
  AddPresent(registry, root, key, name);
}

void RegistryUndo::AddState(Registry& registry, RegistryRoot root, std::string_view key,
                            std::string_view name) {
  if (AddPresent(registry, root, key, name)) return;
  const KeyHome lasting = registry.LastingName(root, key);
  added_.AddKey(lasting.root, lasting.key);
  added_.AddValue(name, std::nullopt);
}

// False where there is none.
bool RegistryUndo::AddPresent(Registry& registry, RegistryRoot root, std::string_view key,
                              std::string_view name) {
  for (const KeyHome& home : KeyHomes(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    const auto value = opened ? opened->QueryValue(name) : std::nullopt;
    if (!value) continue;
    const KeyHome lasting = registry.LastingName(home.root, home.key);
    added_.AddKey(lasting.root, lasting.key);
    added_.AddValue(name, *value);
    return true;
  }
  return false;
}

void RegistryUndo::AddKey(Registry& registry, RegistryRoot root, std::string_view key,
                          const Pause& pause) {
  for (const KeyHome& home : KeyHomes(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    const KeyHome lasting = registry.LastingName(home.root, home.key);
    if (opened && !opened->SubKeyAt(0)) AddOpenKey(lasting.root, lasting.key, *opened, pause);
  }
}

// What is behind a link stays when the tree is deleted.
void RegistryUndo::AddTree(Registry& registry, RegistryRoot root, std::string_view key,
                           const Pause& pause) {
  for (const KeyHome& home : KeyHomes(root, key)) {
    const auto opened = registry.Open(home.root, home.key, RegistryAccess::kRead);
    if (opened == nullptr) continue;
    const KeyHome lasting = registry.LastingName(home.root, home.key);
    WalkKeys(*opened, RegistryAccess::kRead,
             {.enter =
                  [&](RegistryKey& each, const std::string& path) {
                    AddOpenKey(lasting.root, lasting.key + path, each, pause);
                  }},
             pause);
  }
}

void RegistryUndo::AddOpenKey(RegistryRoot root, const std::string& path, RegistryKey& key,
                              const Pause& pause) {
  added_.AddKey(root, path);
  std::string name;
  RegistryValue value;
  for (uint32_t i = 0; !pause() && key.ReadValueAt(i, name, value); ++i) {
    added_.AddValue(name, value);
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
