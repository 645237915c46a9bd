#include <map>

#include "app/removal.h"
#include "backup/backup_names.h"
#include "backup/zip_repair.h"
#include "search/drive_scan.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

// The files of a machine, backed up and looked at again.
class BackupTest : public RunFixture {
 protected:
  BackupTest() : state(engine.state()), safe(ports.program_folder + "\\Backup\\") {
    state.BackupFolder = safe;
    state.RemovalMode = kBackUp;
  }

  std::vector<std::string> Archives() { return machine->Tree(safe); }
  // Names and bytes of an archive's entries; the archive may need a repair.
  std::map<std::string, std::string> Content(const std::string& archive) {
    std::map<std::string, std::string> content;
    std::optional<Repair> repair;
    const ZipDirectory directory = OpenDirectory(ports.files, archive, repair);
    const auto file = ports.files.Open(archive, OpenMode::kRead);
    VisitEntries(directory, [&](const ZipEntry& entry) {
      ExtractEntry(*file, entry, [&](std::string_view bytes) { content[entry.name] += bytes; });
      content[entry.name];
      return true;
    });
    return content;
  }
  void Clean(const std::string& folder) {
    ClearPending(state);
    CollectFiles(context, folder, "*.*");
    RemovePendingFiles(context);
  }

  RunState& state;
  std::string safe;
};

TEST(BackupArchiveNameTest, HourAndSecondHaveNoLeadingZero) {
  struct Row {
    LocalTime time;
    const char* name;
  };
  const Row rows[] = {
      {{2026, 11, 14, 9, 5, 7}, "C_141120269057.zip"},
      {{2026, 1, 2, 0, 0, 0}, "C_020120260000.zip"},
      {{1999, 12, 31, 23, 59, 59}, "C_31121999235959.zip"},
  };
  for (const Row& row : rows) EXPECT_EQ(BackupArchiveName("C_", row.time), row.name);
}

TEST_F(BackupTest, EveryKindOfFileIsInTheArchiveAndGone) {
  const std::map<std::string, std::string> files = {
      {"plain.txt", "text text text text text text text"},
      {"empty", ""},
      {"\xE6\x97\xA5\xE6\x9C\xAC \xD0\x96", "names of any script"},
      {"deep\\er\\one.bin", std::string("\0\1\2\xFF", 4)},
      {"large.dat", std::string(3 << 20, 'x') + "end"},
  };
  for (const auto& [name, bytes] : files) machine->MakeFile(scratch + "tree\\" + name, bytes);
  Clean(scratch + "tree\\");
  EXPECT_EQ(state.RunFilesDeleted, 5);
  EXPECT_EQ(state.FilesBackedUp, 5);
  EXPECT_FALSE(state.SomeFilesLocked);
  EXPECT_TRUE(mod_zip.Close());
  ASSERT_EQ(Archives().size(), 1u);
  std::map<std::string, std::string> want;
  for (const auto& [name, bytes] : files) {
    std::string stored = (scratch + "tree\\" + name).substr(3);
    std::replace(stored.begin(), stored.end(), '\\', '/');
    want[stored] = bytes;
  }
  EXPECT_EQ(Content(safe + Archives()[0]), want);
}

}  // namespace
}  // namespace quellix
