#include "backup/leftovers.h"
#include "backup/registry_undo.h"
#include "support/backup_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

// What is in memory alone while names change and files go would be lost with the power.
struct DiskOrder {
  std::set<std::string> unflushed;  // files and, where names changed, folders
  int files_flushed = 0;
};

struct WatchedFile : ForwardingFile {
  WatchedFile(std::unique_ptr<RandomFile> file, std::string path, DiskOrder& order)
      : ForwardingFile(std::move(file)), path_(std::move(path)), order_(order) {}
  void Write(uint64_t offset, std::string_view bytes) override {
    order_.unflushed.insert(path_);
    ForwardingFile::Write(offset, bytes);
  }
  void Flush() override {
    ForwardingFile::Flush();
    order_.unflushed.erase(path_);
    ++order_.files_flushed;
  }

  std::string path_;
  DiskOrder& order_;
};

struct WatchedFolder : ForwardingFolder {
  WatchedFolder(std::unique_ptr<Folder> folder, std::string path, DiskOrder& order)
      : ForwardingFolder(std::move(folder)), path_(std::move(path)), order_(order) {}
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    return std::make_unique<WatchedFile>(ForwardingFolder::Open(name, mode),
                                         path_ + std::string(name), order_);
  }
  void Rename(std::string_view from, std::string_view to, IfThere if_there) override {
    EXPECT_FALSE(order_.unflushed.contains(path_ + std::string(from))) << from << " to " << to;
    ForwardingFolder::Rename(from, to, if_there);
    order_.unflushed.insert(path_);
  }
  void RemoveFile(std::string_view name) override {
    // Notes and probes may be lost.
    std::erase_if(order_.unflushed,
                  [](const std::string& path) { return IsTemporaryName(NamePart(path)); });
    EXPECT_EQ(order_.unflushed, std::set<std::string>()) << "when " << name << " goes";
    ForwardingFolder::RemoveFile(name);
  }
  void Flush() override {
    ForwardingFolder::Flush();
    order_.unflushed.erase(path_);
  }

  std::string path_;
  DiskOrder& order_;
};

struct BackupOrderTest : BackupFixture {
  void KeepAnEntry(const Machine& watched) {
    machine->SetText(kUser, kRunMruKey, "a", "x");
    RegistryUndo undo;
    undo.AddValue(ports.registry, kUser, kRunMruKey, "a");
    undo.Store(watched, safe);
  }
};

TEST_F(BackupOrderTest, WhatIsWrittenIsOnTheDiskBeforeNamesChangeAndFilesGo) {
  DiskOrder order;
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    return std::make_unique<WatchedFolder>(std::move(folder), path, order);
  });
  const Machine watched = WithFiles(ports, files);
  Engine run(watched, view);
  Backups there(watched, safe);
  ScriptedPrompts prompts;
  const auto clean = [&](const char* method) {
    WriteSettings(std::string("[General]\r\nDelMethod=") + method);
    for (const char* name : {"a", "b"}) machine->MakeFile(temp + name, "12345");
    run.RunOneItem(*FindItem("CleanTempFiles"));
    EXPECT_GE(run.state().RunFilesDeleted, 2) << "the system may keep files of its own there";
  };
  // least: files flushed.
  const std::tuple<const char*, std::function<void()>, int> kRows[] = {
      {"wipe byte by byte", [&] { clean("W"); }, 10},
      {"wipe", [&] { clean("W\r\nWipeStep=4096"); }, 2},
      {"back up", [&] { clean("B"); }, 2},
      {"restore", [&] { there.Restore(OnlyArchive(), {}, prompts, {}); }, 2},
      {"repair",
       [&] {
         CutArchive();
         EXPECT_NE(there.Repair(OnlyArchive()), "");
       },
       1},
      {"keep a registry entry", [&] { KeepAnEntry(watched); }, 1}};
  for (const auto& [what, work, least] : kRows) {
    SCOPED_TRACE(what);
    order = {};
    work();
    EXPECT_EQ(order.unflushed, std::set<std::string>());
    EXPECT_GE(order.files_flushed, least);
  }
}

}  // namespace
}  // namespace quellix
