#include "run/protected_places.h"

#include "platform/path.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

// Every precious place, by every way of spelling it: nothing in it goes, and the log says why.
class ProtectedPlacesTest : public RunFixture {
 protected:
  // Cleans the folders that the user's list names; what is left of `kept` is looked at afterwards.
  void ExpectKept(const std::string& line, const std::string& kept) {
    SCOPED_TRACE(line);
    machine->MakeFile(kept, "dear");
    machine->MakeFile(ports.program_folder + "\\UDFO.txt", line + "\r\n");
    engine.RunOneItem(*FindItem("CleanUserFolders"));
    EXPECT_TRUE(machine->Exists(kept));
  }
  static std::vector<std::string> Spellings(const std::string& path) {
    std::string doubled, slashes = path;
    for (const char c : path) doubled += c == '\\' ? "\\\\" : std::string(1, c);
    std::replace(slashes.begin(), slashes.end(), '\\', '/');
    return {path,
            path + "\\",
            path + "\\\\",
            doubled,
            slashes,
            path + ".",
            path + " ",
            "\\\\?\\" + path,
            UpCase(path),
            "\\\\.\\" + path,
            path + "\\Sub\\..",
            path + "\\.",
            "\\\\localhost\\" + path.substr(0, 1) + "$" + path.substr(2)};
  }
};

TEST_F(ProtectedPlacesTest, NoSpellingOfAPreciousFolderEmptiesIt) {
  const std::string windows = ports.system.WindowsFolder();
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const std::string drive = windows.substr(0, 2);
  for (const std::string& place :
       {drive, windows, ports.system.SystemFolder(), windows + "\\WinSxS",
        ports.system.SystemFolder() + "\\config", ports.system.SystemFolder() + "\\drivers\\etc",
        std::string(WithoutBackslash(FolderPart(profile))), profile, profile + "\\AppData",
        ports.system.Environment("ProgramFiles").value(), ports.program_folder,
        ports.program_folder + "\\Backup"}) {
    const std::string kept = place + "\\Qx kept\\dear.tmp";
    for (const std::string& line : Spellings(place)) ExpectKept(line, kept);
    ExpectKept(machine->ShortName(place), kept);
    ports.files.RemoveFile(kept);
    ports.files.RemoveFolder(place + "\\Qx kept");
  }
}

TEST_F(ProtectedPlacesTest, TheUsersOwnFoldersGoByHisListAlone) {
  const std::string documents = ports.system.Environment("USERPROFILE").value() + "\\Saved Games";
  machine->MakeFile(documents + "\\a.tmp", "1");
  ProtectedPlaces places(ports, "");
  const auto folder = ports.files.OpenFolder(documents);
  EXPECT_EQ(places.WhyNot(*folder, "*.*", true, Claim::kOwnList), "");
  EXPECT_NE(places.WhyNot(*folder, "*.*", true, Claim::kRecipe), "");
  EXPECT_NE(places.WhyNot(*folder, "*.*", true, Claim::kItem), "");
  EXPECT_TRUE(places.IsPersonal(*folder));
  ports.files.RemoveFile(documents + "\\a.tmp");
}

TEST_F(ProtectedPlacesTest, FilesThatWindowsNeedsStayWhoeverNamesThem) {
  const std::string windows = ports.system.WindowsFolder();
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const struct {
    std::string folder, name;
    bool goes;
  } kRows[] = {{windows, "MEMORY.DMP", true},       {windows, "qx.log", true},
               {windows, "qx.exe", false},          {ports.system.SystemFolder(), "qx.dll", false},
               {profile, "NTUSER.DAT.LOG1", false}, {profile, "ntuser.dat{1}.TM.blf", false},
               {scratch, "UsrClass.dat", false},    {scratch, "notes.dat", true}};
  ProtectedPlaces places(ports, "");
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.folder + "\\" + row.name);
    const auto folder = ports.files.OpenFolder(row.folder);
    EXPECT_EQ(places.WhyNotFile(*folder, row.name, Claim::kOwnList).empty(), row.goes);
  }
  machine->MakeFile(scratch + "SYSTEM", "regf and more");
  machine->MakeFile(scratch + "SOFTWARE", "a text");
  const auto folder = ports.files.OpenFolder(scratch);
  EXPECT_NE(places.WhyNotFile(*folder, "SYSTEM", Claim::kOwnList), "") << "by what is in it";
  EXPECT_EQ(places.WhyNotFile(*folder, "SOFTWARE", Claim::kOwnList), "");
}

TEST_F(ProtectedPlacesTest, AWalkGoesAroundTheProgramAndItsBackups) {
  WriteSettings("[Backup]\r\nPath=" + temp + "safe\\\r\n");
  machine->MakeFile(temp + "safe\\C_010120200000.zip", "mine");
  machine->MakeFile(temp + "junk\\a.tmp", "1");
  engine.RunOneItem(*FindItem("CleanTempFiles"));
  EXPECT_FALSE(machine->Exists(temp + "junk"));
  EXPECT_TRUE(machine->Exists(temp + "safe\\C_010120200000.zip"));
  EXPECT_NE(engine.state().RunLog.find("safe\\ is not cleaned: "), std::string::npos);
  ports.files.RemoveFile(temp + "safe\\C_010120200000.zip");
}

}  // namespace
}  // namespace quellix
