#include "cli/console_fixture.h"
#include "support/registry_fixture.h"

namespace quellix {
namespace {

struct BackupConsoleTest : ConsoleTest {
  // Cleans two files with a backup; the archive's name.
  std::string CleanTwo() {
    machine->MakeFile(file, "bytes");
    machine->MakeFile(temp + "b.tmp", "more");
    Expect({"clean", "--item", "CleanTempFiles", "--method", "backup"}, 0, {"Backed Up 2 file(s)"});
    EXPECT_FALSE(machine->Exists(file));
    const std::vector<std::string> archives = machine->Tree(safe);
    EXPECT_EQ(archives.size(), 1u);
    return archives.empty() ? "none" : archives[0];
  }
  const std::string safe = own + "Backup\\", file = temp + "deep\\a b.tmp";
};

TEST_F(BackupConsoleTest, CleanedFilesAreListedAndRepaired) {
  Expect({"backup", "list"}, 0);  // no backups yet
  const std::string archive = CleanTwo();
  Expect({"backup", "list"}, 0, {archive, "2 file(s)"});
  Expect({"backup", "list", archive}, 0, {file.substr(3)});
  Expect({"backup", "repair", archive}, 0, {"nothing to repair"});
  const std::string bytes = Read(safe + archive);
  ports.files.WriteWholeFile(safe + archive, bytes.substr(0, bytes.size() - 9));
  Expect({"backup", "list"}, 3, {"incomplete: 2 file(s) whole"});
  Expect({"backup", "list", archive}, 3, {"incomplete: 2 file(s) whole"});
  EXPECT_EQ(Read(safe + archive).size(), bytes.size() - 9) << "reading writes nothing";
  Expect({"backup", "repair", archive}, 0, {"2 file(s) whole"});
  EXPECT_EQ(Read(safe + archive).size(), bytes.size());
}

TEST_F(BackupConsoleTest, CleanedFilesAreRestored) {
  const std::string archive = CleanTwo();
  Expect({"backup", "restore", archive, file.substr(3)}, 0);
  EXPECT_EQ(Read(file), "bytes");
  EXPECT_FALSE(machine->Exists(temp + "b.tmp"));
  machine->MakeFile(file, "changed");
  Expect({"backup", "restore", archive, file.substr(3)}, 1, {"nobody could be asked"});
  Expect({"backup", "restore", archive}, 3, {"nobody could be asked"});
  Expect({"backup", "restore", archive, "--overwrite", "never"}, 0);
  EXPECT_EQ(Read(file) + Read(temp + "b.tmp"), "changedmore");
  Expect({"backup", "restore", archive, "--overwrite", "Always"}, 0);
  EXPECT_EQ(Read(file), "bytes");
  Expect({"backup", "restore", archive, "--to", scratch + "new"}, 0);
  EXPECT_EQ(Read(scratch + "new\\" + file.substr(3)), "bytes");
}

using RegistryConsoleTest = Console<RegistryFixture>;

TEST_F(RegistryConsoleTest, ReferencesAreListedDeletedWhenAskedAndRestored) {
  const std::string key = std::string(kComponents) + "\\";
  Set(kMachine, key + "{1}", "", Text("gone"));
  Set(kMachine, key + "{2}", "", Text("here"));
  Set(kMachine, key + "{2}", "IsInstalled", Number(1));
  const RegistryPicture before = PictureOfAll();
  EXPECT_EQ(Run({"registry", "components"}).output,
            "orphaned\tgone\tFalse\t\t{1}\nvalid\there\tTrue\t\t{2}\n2 entries, 1 orphaned\n");
  Expect({"registry", "components", "--json", "--delete"}, 0,
         {"SubKey: {1}\"", "1 entries, 0 orphaned"});
  EXPECT_FALSE(machine->KeyExists(kMachine, key + "{1}"));
  ASSERT_EQ(UndoFiles().size(), 1u);
  Expect({"backup", "list"}, 0, {"1 key(s)"});
  Expect({"backup", "restore", UndoFiles()[0]}, 0);
  EXPECT_EQ(PictureOfAll(), before);

  Set(kUser, "Qx1\\deep", "QxGone", Text(scratch + "gone.txt"));
  const ProgramResult plain = Run({"registry", "file-references"});
  EXPECT_FALSE(Holds(plain.output, "QxGone"));
  Expect({"registry", "file-references", "--thorough"}, 0,
         {"orphaned\tHKEY_CURRENT_USER:Qx1\\deep\\\tQxGone\t" + scratch + "gone.txt\n"});
}

}  // namespace
}  // namespace quellix
