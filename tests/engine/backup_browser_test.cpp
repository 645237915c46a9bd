#include "backup/backup_browser.h"

#include "backup/can_run.h"
#include "backup/registry_undo.h"
#include "support/backup_fixture.h"

namespace quellix {
namespace {

struct BackupBrowserTest : BackupFixture {
  BackupBrowserTest() {
    machine->MakeFile(tree + "b.txt", "12345");
    machine->MakeFile(tree + "A.txt", std::string(2000, 'a'));
    machine->MakeFile(tree + "sub\\c.txt", "1");
    Clean(tree);
    archive = OnlyArchive();
  }

  // The names in an order of the list.
  std::string Order() {
    std::string names;
    for (size_t row = 0; row < browser.EntryCount(); ++row)
      names += NamePart(browser.EntryText(row, EntryColumn::kPath)).substr(0, 1);
    return names;
  }

  BackupBrowser browser{ports};
  std::string archive;
  ScriptedPrompts prompts;
};

TEST_F(BackupBrowserTest, ShowsAndSortsRows) {
  AddArchive("D_141120009057.zip", {"x"});
  machine->MakeFile(safe + "E_141120019057.zip", "no archive");
  browser.Refresh();
  ASSERT_EQ(browser.ArchiveCount(), 3u);
  EXPECT_EQ(browser.Chosen()->name, archive);  // the newest
  EXPECT_EQ(browser.ArchiveText(0, ArchiveColumn::kFiles), "3");
  EXPECT_EQ(browser.ArchiveText(0, ArchiveColumn::kState), "Whole");
  EXPECT_EQ(browser.ArchiveText(1, ArchiveColumn::kState), "Cannot be read");
  EXPECT_EQ(browser.ArchiveText(2, ArchiveColumn::kDate), "11/14/2000 9:05:07 AM");
  EXPECT_TRUE(Holds(browser.outcome(), "E_141120019057.zip cannot be read: "));
  browser.SortArchives(ArchiveColumn::kDate);
  EXPECT_EQ(browser.ArchiveText(0, ArchiveColumn::kDrive), "D:");
  EXPECT_EQ(browser.Chosen()->name, archive);  // follows its archive
  EXPECT_EQ(browser.ChosenRow(), 2u);

  EXPECT_EQ(Order(), "Abc");
  const std::pair<EntryColumn, const char*> kOrders[] = {{EntryColumn::kPath, "cbA"},
                                                         {EntryColumn::kSize, "cbA"},
                                                         {EntryColumn::kSize, "Abc"},
                                                         {EntryColumn::kState, "Abc"},
                                                         {EntryColumn::kPath, "Abc"}};
  for (const auto& [column, names] : kOrders) {
    browser.SortEntries(column);
    EXPECT_EQ(Order(), names);
  }
  EXPECT_EQ(browser.EntryText(0, EntryColumn::kSize), "2,000");

  browser.ChooseArchive(1);
  EXPECT_EQ(browser.EntryCount(), 0u);
  EXPECT_TRUE(Holds(browser.outcome(), "cannot be read"));
  EXPECT_TRUE(!browser.Available(0).restore_all && browser.Available(0).delete_archive);
}

TEST_F(BackupBrowserTest, RestoresWhatIsSelected) {
  browser.Refresh();
  browser.RestoreSelected({}, prompts);
  EXPECT_EQ(browser.outcome(), "Nothing is selected.");
  EXPECT_FALSE(machine->Exists(tree + "b.txt"));

  const size_t rows[] = {1};
  browser.RestoreSelected(rows, prompts);
  EXPECT_EQ(Read(tree + "b.txt"), "12345");
  EXPECT_FALSE(machine->Exists(tree + "A.txt"));
  EXPECT_TRUE(browser.outcome().starts_with("1 file restored to ")) << browser.outcome();

  prompts.overwrites = {OverwriteAnswer::kNo};
  browser.RestoreAll(prompts);
  EXPECT_EQ(prompts.asked, Names{tree + "b.txt"});
  EXPECT_TRUE(browser.outcome().ends_with(", 1 left as they were.\n")) << browser.outcome();
  EXPECT_EQ(Read(tree + "A.txt"), std::string(2000, 'a'));

  browser.SetMode(OverwriteMode::kNever);
  browser.RestoreInto(rows, scratch + "into", prompts);
  EXPECT_EQ(Read(scratch + "into\\" + tree.substr(3) + "b.txt"), "12345");
  EXPECT_EQ(machine->Tree(scratch + "into").back().substr(0, 1), tree.substr(3, 1));
  EXPECT_EQ(BackupBrowser(ports).mode(), OverwriteMode::kNever);  // kept in the settings
}

TEST_F(BackupBrowserTest, SaysWhatIsRefusedAndRepairsOnRequest) {
  AddArchive("C_141120109057.zip", {"../climbs", "fine", "zz/con.txt"});
  const std::string bytes = *ports.files.ReadWholeFile(safe + archive);
  ports.files.WriteWholeFile(safe + archive, bytes.substr(0, bytes.size() - 5));
  browser.Refresh();
  EXPECT_EQ(browser.ArchiveText(0, ArchiveColumn::kState), "Incomplete");
  EXPECT_TRUE(Holds(browser.outcome(), archive + ": "));
  EXPECT_TRUE(Holds(browser.outcome(), "3 file(s) whole"));
  EXPECT_FALSE(Holds(browser.outcome(), "climbs"));
  EXPECT_EQ(Read(safe + archive).size(), bytes.size() - 5);
  EXPECT_TRUE(browser.Available(0).repair);
  browser.RepairArchive();
  EXPECT_TRUE(Holds(browser.outcome(), "repaired: 3 file(s) whole"));
  EXPECT_EQ(browser.ArchiveText(0, ArchiveColumn::kState), "Whole");
  EXPECT_EQ(Read(safe + archive).size(), bytes.size());
  EXPECT_FALSE(browser.Available(0).repair);
  browser.ChooseArchive(1);
  EXPECT_TRUE(Holds(browser.outcome(), "climbs"));
  EXPECT_EQ(browser.EntryText(0, EntryColumn::kState), "Refused");
  EXPECT_EQ(browser.View(0), "");
  EXPECT_TRUE(Holds(browser.outcome(), "cannot be viewed: "));
  browser.RestoreInto({}, scratch + "into", prompts);
  EXPECT_EQ(machine->Tree(scratch + "into"), Names{"fine"});
  EXPECT_TRUE(browser.outcome().starts_with("1 file restored to ")) << browser.outcome();
  EXPECT_TRUE(Holds(browser.outcome(), "climbs"));
  EXPECT_TRUE(Holds(browser.outcome(), "con.txt"));
}

TEST_F(BackupBrowserTest, ACopyToViewGoesWithTheWindow) {
  machine->SetText(kMachine, "Software\\Classes\\.txt", "", "txtfile");
  engine.state().FixedRemovalMode = kDelete;  // of earlier copies
  Clean("CleanTempFiles");
  std::string copy;
  {
    BackupBrowser shown(ports);
    shown.Refresh();
    copy = shown.View(1);
    EXPECT_EQ(Read(copy), "12345");
    EXPECT_TRUE(copy.starts_with(temp)) << copy;
  }
  EXPECT_FALSE(machine->Exists(copy) || machine->Exists(temp + "Quellix"));
}

TEST_F(BackupBrowserTest, WhatIsRestoredOfTheRegistryIsToldAsKeys) {
  RegistryUndo undo;
  for (const char* key : {"Software\\QxBrowser\\a", "Software\\QxBrowser\\b"}) {
    machine->SetText(kUser, key, "v", "1");
    undo.AddKey(ports.registry, kUser, key);
  }
  undo.Store(ports, safe);
  machine->RemoveRegistryTree(kUser, "Software\\QxBrowser");
  browser.Refresh();
  for (size_t row = 0; row < browser.ArchiveCount(); ++row) {
    if (browser.ArchiveText(row, ArchiveColumn::kDrive) == "Registry") browser.ChooseArchive(row);
  }
  browser.RestoreAll(prompts);
  EXPECT_EQ(browser.outcome(), "2 registry keys restored to the registry.\n");
  EXPECT_EQ(machine->ValueNames(kUser, "Software\\QxBrowser\\b"), Names{"v"});
  machine->RemoveRegistryTree(kUser, "Software\\QxBrowser");
}

TEST_F(BackupBrowserTest, WhatMayRunIsShownInItsFolderInstead) {
  AddArchive("D_141120009057.zip", {"a.exe", "b.PS1", "c.lnk", "d.unheardof", "e", "f.txt.scr"});
  for (const char* type : {".known", ".jnlp"})
    machine->SetText(kMachine, std::string("Software\\Classes\\") + type, "", "x");
  EXPECT_TRUE(CanRun(ports, "a.JNLP")) << "whoever knows it";
  for (const char* name : {"a.b.known", "a.known. "}) EXPECT_FALSE(CanRun(ports, name)) << name;
  EXPECT_TRUE(CanRun(ports, "C:\\x\\a.exe. "));
  browser.Refresh();
  browser.ChooseArchive(1);
  ASSERT_EQ(browser.EntryCount(), 6u);
  for (size_t row = 0; row < browser.EntryCount(); ++row) {
    const std::string folder = browser.View(row);
    EXPECT_EQ(machine->Tree(folder).size(), row + 1) << folder;
    EXPECT_TRUE(Holds(browser.outcome(), "is not opened"));
  }
  for (const char* type : {".known", ".jnlp"})
    machine->RemoveRegistryTree(kMachine, std::string("Software\\Classes\\") + type);
}

TEST_F(BackupBrowserTest, DeletesTheChosenArchive) {
  AddArchive("D_141120009057.zip", {"x"});
  browser.Refresh();
  browser.ChooseArchive(1);
  browser.DeleteArchive();
  EXPECT_EQ(Archives(), Names{archive});
  EXPECT_EQ(browser.outcome(), "D_141120009057.zip is deleted.\n");
  ASSERT_TRUE(browser.Chosen());
  EXPECT_EQ(browser.Chosen()->name, archive);
  EXPECT_EQ(browser.EntryCount(), 3u);
  browser.DeleteArchive();
  EXPECT_FALSE(browser.Chosen());
  browser.DeleteArchive();
  browser.RestoreAll(prompts);
  EXPECT_EQ(browser.outcome(), "There is no backup to restore from.");
}

}  // namespace
}  // namespace quellix
