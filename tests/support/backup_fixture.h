#pragma once

#include "backup/backups.h"
#include "backup/zip_repair.h"
#include "platform/path.h"
#include "run/removal.h"
#include "support/run_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix {

// A machine whose files are removed with a backup, and its backups.
struct BackupFixture : RunFixture {
  BackupFixture() {
    state.BackupFolder = safe;
    state.RemovalMode = kBackUp;
  }

  // Collects and removes what is in a folder, as a cleaner does, and finishes the archive.
  void Clean(const std::string& folder) {
    RemovePendingFiles(context, Collect(folder));
    mod_zip.Close();
  }
  // Removes the named files of the tree in this order.
  void CleanInOrder(std::initializer_list<const char*> names) {
    FileList list{ports.files.OpenFolder(tree), tree, {}, {}};
    for (const char* name : names) list.PendingFiles.Append(tree, name);
    RemovePendingFiles(context, list);
    mod_zip.Close();
  }
  Names Archives() { return machine->Tree(safe); }
  std::string OnlyArchive() {
    const Names archives = Archives();
    EXPECT_EQ(archives.size(), 1u);
    return archives.empty() ? "none" : archives[0];
  }
  // Takes the end of the only archive away.
  void CutArchive() {
    const std::string archive = safe + OnlyArchive();
    ports.files.Open(archive, OpenMode::kWrite)->Resize(Read(archive).size() - 5);
  }
  // Puts an archive made by another program into the backup folder; each file holds its own name.
  void AddArchive(const std::string& name, std::initializer_list<const char*> entries,
                  uint16_t flags = kUtf8Name) {
    MakeFolders(ports.files, safe);
    ZipWriter writer(ports.files.Open(safe + name, OpenMode::kReadAndCreate), 0);
    for (const char* stored : entries) {
      machine->MakeFile(scratch + "source", stored);
      writer.Add({.name = stored, .flags = flags},
                 *ports.files.Open(scratch + "source", OpenMode::kRead), {});
    }
    writer.Finish();
    ports.files.RemoveFile(scratch + "source");
  }
  // An archive's paths and bytes, as far as it is whole.
  std::map<std::string, std::string> Content(const std::string& archive) {
    std::map<std::string, std::string> content;
    std::optional<Repair> found;
    const auto reader = OpenZip(ports.files, archive, found);
    reader->Visit([&](const ZipEntry& entry) {
      std::string& bytes = content[entry.name];
      reader->Extract(entry, [&](std::string_view part) { bytes += part; });
      return true;
    });
    return content;
  }
  // What is left of an archive of the backup folder; nothing when it is whole.
  std::optional<Repair> FoundIn(std::string_view archive) {
    std::optional<Repair> found;
    OpenZip(ports.files, safe + std::string(archive), found);
    return found;
  }
  BackupInfo Describe(std::string_view archive) {
    for (const BackupInfo& info : backups.List()) {
      if (info.name == archive) return info;
    }
    ADD_FAILURE() << archive << " is not listed";
    return {};
  }
  static std::string Stored(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path.substr(3);
  }

  RunState& state = engine.state();
  std::string safe = own + "Backup\\", tree = scratch + "tree\\";
  Backups backups{ports, safe};
};

struct RestoreFixture : BackupFixture {
  RestoreResult Restore(const Names& entries = {}, std::string_view to = "",
                        OverwriteMode mode = OverwriteMode::kAsk) {
    return backups.Restore(OnlyArchive(), {entries, std::string(to), mode}, prompts, pause);
  }
  FileInfo Look(const std::string& path) { return ports.files.Look(path).value(); }

  ScriptedPrompts prompts;
  Pause pause;
};

}  // namespace quellix
