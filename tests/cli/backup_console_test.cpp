#include "cli/console_fixture.h"

namespace quellix {
namespace {

class BackupConsoleTest : public ConsoleTest {
 protected:
  ProgramResult Backup(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "backup");
    const std::vector<std::string> where = MachineArguments(*machine);
    arguments.insert(arguments.end(), where.begin(), where.end());
    return RunQuellixctl(arguments);
  }
  std::string Read(const std::string& path) {
    return ports.files.ReadWholeFile(path).value_or("<missing>");
  }
  std::string safe() { return ports.program_folder + "\\Backup\\"; }
};

TEST_F(BackupConsoleTest, CleanedFilesAreListedRepairedAndRestored) {
  EXPECT_EQ(Backup({"list"}).exit_code, 0);  // no backups yet
  const std::string file = temp + "deep\\a b.tmp";
  machine->MakeFile(file, "bytes");
  machine->MakeFile(temp + "b.tmp", "more");
  const ProgramResult cleaned = Clean({"--item", "CleanTempFiles", "--method", "backup"});
  EXPECT_EQ(cleaned.exit_code, 0) << cleaned.output;
  EXPECT_NE(cleaned.output.find("Backed Up 2 file(s)"), std::string::npos) << cleaned.output;
  EXPECT_FALSE(machine->Exists(file));
  const std::vector<std::string> archives = machine->Tree(safe());
  ASSERT_EQ(archives.size(), 1u);
  const std::string archive = archives[0];

  const ProgramResult list = Backup({"list"});
  EXPECT_NE(list.output.find(archive), std::string::npos) << list.output;
  EXPECT_NE(list.output.find("2 file(s)"), std::string::npos) << list.output;
  const ProgramResult entries = Backup({"list", archive});
  EXPECT_NE(entries.output.find(file.substr(3)), std::string::npos) << entries.output;

  EXPECT_NE(Backup({"repair", archive}).output.find("nothing to repair"), std::string::npos);
  const std::string bytes = Read(safe() + archive);
  ports.files.WriteWholeFile(safe() + archive, bytes.substr(0, bytes.size() - 9));
  for (const auto& arguments : {std::vector<std::string>{"list"}, {"list", archive}}) {
    const ProgramResult incomplete = Backup(arguments);
    EXPECT_EQ(incomplete.exit_code, 3);
    EXPECT_NE(incomplete.output.find("incomplete: 2 file(s) whole"), std::string::npos);
    EXPECT_EQ(Read(safe() + archive).size(), bytes.size() - 9);
  }
  EXPECT_NE(Backup({"repair", archive}).output.find("2 file(s) whole"), std::string::npos);
  EXPECT_EQ(Read(safe() + archive).size(), bytes.size());

  const ProgramResult one = Backup({"restore", archive, file.substr(3)});
  EXPECT_EQ(one.exit_code, 0) << one.output;
  EXPECT_EQ(Read(file), "bytes");
  EXPECT_FALSE(machine->Exists(temp + "b.tmp"));
  machine->MakeFile(file, "changed");
  for (const auto& [entry, exit_code] :
       {std::pair(file.substr(3), 1), std::pair(std::string(), 3)}) {
    std::vector<std::string> arguments = {"restore", archive};
    if (!entry.empty()) arguments.push_back(entry);
    const ProgramResult unasked = Backup(arguments);
    EXPECT_EQ(unasked.exit_code, exit_code) << unasked.output;
    EXPECT_NE(unasked.output.find("nobody could be asked"), std::string::npos) << unasked.output;
    if (entry.empty()) break;
  }
  EXPECT_EQ(Backup({"restore", archive, "--overwrite", "never"}).exit_code, 0);
  EXPECT_EQ(Read(file), "changed");
  EXPECT_EQ(Read(temp + "b.tmp"), "more");
  EXPECT_EQ(Backup({"restore", archive, "--overwrite", "Always"}).exit_code, 0);
  EXPECT_EQ(Read(file), "bytes");
  const ProgramResult to = Backup({"restore", archive, "--to", scratch + "new"});
  EXPECT_EQ(to.exit_code, 0) << to.output;
  EXPECT_EQ(Read(scratch + "new\\" + file.substr(3)), "bytes");
}

TEST_F(BackupConsoleTest, WrongArgumentsAreTold) {
  machine->MakeFile(safe() + "C_010120200000.zip", "MZ no archive");
  struct Row {
    std::vector<std::string> arguments;
    int exit_code;
    const char* told;
  };
  const Row rows[] = {
      {{}, 2, "subcommand"},
      {{"restore"}, 2, "ARCHIVE"},
      {{"restore", "C_010120200000.zip", "--overwrite", "maybe"}, 2, "maybe"},
      {{"restore", "none.zip"}, 1, "none.zip"},
      {{"repair", "C_010120200000.zip"}, 1, "is not a zip archive."},
      {{"list", "..\\Settings.ini"}, 1, "is no archive of the backup folder."},
      {{"list"}, 1, "is not a zip archive."},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.told);
    const ProgramResult result = Backup(row.arguments);
    EXPECT_EQ(result.exit_code, row.exit_code);
    EXPECT_NE(result.output.find(row.told), std::string::npos) << result.output;
  }
  EXPECT_EQ(Read(safe() + "C_010120200000.zip"), "MZ no archive");
}

}  // namespace
}  // namespace quellix
