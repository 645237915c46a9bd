#include <filesystem>

#include "cleaners/volume_items.h"
#include "cli/console_fixture.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

const struct {
  const char* item;
  Names goes, stays;  // below C:
} kRows[] = {
    {"VolumeEventLogs",
     {"Windows\\System32\\winevt\\Logs\\System.evtx", "Windows\\System32\\config\\SecEvent.Evt",
      "Windows\\System32\\config\\APPEVENT.EVT", "Windows\\System32\\config\\SysEvent.Evt",
      "Windows\\System32\\config\\Internet.evt"},
     {"Windows\\System32\\winevt\\Logs\\Mine.txt", "Windows\\System32\\config\\Other.Evt"}},
    {"VolumePrefetch",
     {"Windows\\Prefetch\\CMD.EXE-1.pf", "Windows\\Prefetch\\ReadyBoot\\a.fx"},
     {"Windows\\Prefetched\\a.pf"}},
    {"VolumeHibernationFile", {"hiberfil.sys"}, {"hiberfil.old.sys"}},
    {"VolumePageFile", {"pagefile.sys", "swapfile.sys"}, {"bootmgr"}},
    {"VolumeRecycleBins",
     {"$Recycle.Bin\\S-1-5-21-1\\$R1.txt", "$Recycle.Bin\\S-1-5-21-1\\$I1.txt",
      "$Recycle.Bin\\S-1-5-21-2\\$R2\\SYSTEM", "$Recycle.Bin\\S-1-5-21-2\\$R2\\desktop.ini",
      "RECYCLER\\S-1-5-21-3\\Dc1.txt", "RECYCLED\\Dc2.txt"},
     {"$Recycle.Bin\\S-1-5-21-1\\desktop.ini", "Recycled by me\\a"}},
    {"VolumeOldWindows",
     {"Windows.old\\Windows\\System32\\config\\SYSTEM", "Windows.old\\Users\\A\\NTUSER.DAT",
      "windows.OLD.000\\a", "$Windows.~BT\\b", "$Windows.~WS\\b"},
     {"Windows.older\\a", "Windows.old.mine\\a", "Windows.old.0x0\\a", "$Windows.~mine\\a"}},
    {"VolumeUpdateDownloads",
     {"Windows\\SoftwareDistribution\\Download\\0a\\u.cab",
      "Windows\\SoftwareDistribution\\DeliveryOptimization\\d",
      "Windows\\ServiceProfiles\\NetworkService\\AppData\\Local\\Microsoft\\Windows\\"
      "DeliveryOptimization\\Cache\\c"},
     {"Windows\\SoftwareDistribution\\DataStore\\DataStore.edb"}}};

struct VolumeItemsTest : ConsoleTest {
  VolumeItemsTest() {
    for (const auto& row : kRows) {
      for (const Names& names : {row.goes, row.stays})
        for (const std::string& name : names) machine->MakeFile("C:\\" + name, "regf" + name);
    }
    StoreMachine(*machine);
  }
  auto Picture() { return PictureOf(dynamic_cast<VolumeTestMachine&>(*machine).options().volume); }
  Names Left(const Names& names) {
    Names left;
    for (const std::string& name : names)
      if (machine->Exists("C:\\" + name)) left.push_back(name);
    return left;
  }
};

TEST_F(VolumeItemsTest, EachTakesWhatItIsForAndNothingElseOnlyWhenNamed) {
  Expect({"clean", "--all", "--method", "delete"}, 0);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.item);
    EXPECT_EQ(Left(row.goes), row.goes) << "gone unasked";
    const Names clean = {"clean", "--item", row.item};
    const auto before = Picture();
    const std::string preview = Run(With(clean, {"--preview"})).output;
    for (const std::string& name : row.goes) EXPECT_TRUE(ContainsNoCase(preview, name)) << preview;
    EXPECT_TRUE(Picture() == before);
    const std::string json = Run(With(clean, {"--json"})).output;
    EXPECT_TRUE(Holds(json, "Files Deleted: " + std::to_string(row.goes.size()) + " Space"));
    EXPECT_TRUE(Holds(json, row.item)) << "its rule";
    EXPECT_EQ(json.find("nothing of this kind"), std::string::npos);
    EXPECT_EQ(Left(row.goes), Names{});
    const auto after = Picture();
    Expect(With(clean, {"--method", "wipe"}), 0, {"Files Deleted: 0"});
    EXPECT_TRUE(Picture() == after);
  }
  for (const auto& row : kRows) EXPECT_EQ(Left(row.stays), row.stays) << row.item;
  EXPECT_FALSE(machine->Exists("C:\\Windows.old"));
  EXPECT_EQ(std::size(kRows), VolumeItems().size());
}

// What is far too large for an archive, and what was thrown away already, is deleted; what is not,
// goes as the user says.
TEST_F(VolumeItemsTest, SomeAreNeverArchivedOrRecycled) {
  const std::tuple<const char*, const char*, bool> kWays[] = {
      {"VolumePageFile", "backup", false},
      {"VolumeHibernationFile", "recycle", false},
      {"VolumeRecycleBins", "backup", false},
      {"VolumeEventLogs", "backup", true}};
  for (const auto& [item, method, is_archived] : kWays) {
    const size_t archives = machine->Tree(own + "Backup\\").size();
    Expect({"clean", "--item", item, "--method", method}, 0);
    EXPECT_EQ(machine->Tree(own + "Backup\\").size() > archives, is_archived) << item;
  }
  EXPECT_EQ(Left({"pagefile.sys", "hiberfil.sys"}), Names{});
  // One after the other: the way that was chosen is there again.
  for (const char* name : {"pagefile.sys", "Windows\\Prefetch\\B.pf"})
    machine->MakeFile(std::string("C:\\") + name, "1");
  Expect({"clean", "--item", "VolumePageFile", "VolumePrefetch", "--method", "backup"}, 0,
         {"Page files... Files Deleted: 1", "Backed Up 3 file(s)"});
  // What is recycled is not emptied out of the bin by the same run.
  machine->MakeFile(temp + "a.tmp", "1");
  Expect({"clean", "--item", "VolumeRecycleBins", "CleanTempFiles", "--method", "recycle"}, 0);
  EXPECT_EQ(ports.shell.QueryRecycleBin().items, 1u);
}

// Nobody else may take them, and the keep list holds here as well.
TEST_F(VolumeItemsTest, TheyAreForThatClaimAloneAndKeptByTheKeepList) {
  WriteOwn("UDFI.txt", "C:\\pagefile.sys\r\nC:\\Windows\\System32\\config\\SecEvent.Evt\r\n");
  WriteOwn("UDFO.txt", "C:\\$Recycle.Bin\r\nC:\\Windows.old\r\n");
  Run({"clean", "--item", "CleanUserFiles", "CleanUserFolders", "--method", "delete"});
  EXPECT_EQ(Left(kRows[3].goes), kRows[3].goes);
  EXPECT_EQ(Left(kRows[4].goes), kRows[4].goes);
  EXPECT_EQ(Left(kRows[0].goes), kRows[0].goes);
  EXPECT_EQ(Left(kRows[5].goes), kRows[5].goes) << "hives";
  WriteOwn("keep.txt", "C:\\pagefile.sys\r\nC:\\Windows.old\r\n");
  Run({"clean", "--item", "VolumePageFile", "VolumeOldWindows", "--method", "delete"});
  EXPECT_EQ(Left(kRows[3].goes), Names{"pagefile.sys"});
  EXPECT_EQ(Left(kRows[5].goes).size(), 2u) << "what is kept";
}

TEST_F(VolumeItemsTest, EachDriveHasItsOwn) {
  const std::string drive = OutputFile() + "-drive";
  for (const char* name :
       {"pagefile.sys", "$Recycle.Bin/S-1-5-21-1/$R1", "Windows.old/a", "mine"}) {
    const std::filesystem::path file = drive + "/" + name;
    std::filesystem::create_directories(file.parent_path());
    WriteNative(file, "1");
  }
  Expect({"clean", "--item", "VolumePageFile", "VolumeRecycleBins", "VolumeOldWindows", "--method",
          "delete", "--drive", "D:=" + drive},
         0);
  Names left;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(drive))
    left.push_back(entry.path().filename());
  std::ranges::sort(left);
  EXPECT_EQ(left, (Names{"$Recycle.Bin", "mine"}));
  std::filesystem::remove_all(drive);
}

// A link in the place of a folder leads nowhere, and a place that is a link is none.
TEST_F(VolumeItemsTest, LinksInTheirPlacesLeadNowhere) {
  machine->MakeFile(scratch + "mine.txt", "1");
  std::filesystem::remove_all(dynamic_cast<VolumeTestMachine&>(*machine).Native("C:\\Windows.old"));
  machine->MakeFolderLink("C:\\Windows.old", scratch);
  machine->MakeFolderLink("C:\\$Recycle.Bin\\S-1-5-21-1\\$R9", scratch);
  machine->MakeFolderLink("C:\\Windows\\Prefetch\\link", scratch);
  Run({"clean", "--item", "VolumeOldWindows", "VolumeRecycleBins", "VolumePrefetch", "--method",
       "delete"});
  EXPECT_EQ(Read(scratch + "mine.txt"), "1");
  EXPECT_TRUE(machine->Exists("C:\\Windows.old"));
}

}  // namespace
}  // namespace quellix
