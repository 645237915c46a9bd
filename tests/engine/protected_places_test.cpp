#include "run/protected_places.h"

#include "run/precious_names.h"
#include "run/removal.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr const char* kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr const char* kDownloads = "{374DE290-123F-4565-9164-39C4925E467B}";

// Short to write.
Names List(const auto&... texts) { return {std::string(texts)...}; }

// Every precious place, by every way of spelling it: nothing in it goes, and the log says why.
struct ProtectedPlacesTest : RunFixture {
  static Names Spellings(const std::string& path) {
    const std::string share = "\\\\localhost\\" + path.substr(0, 1) + "$" + path.substr(2);
    Names all = {path + " ", share, UpCase(path), ReplaceNoCase(path, "\\", "\\\\"),
                 ReplaceNoCase(path, "\\", "/")};
    for (const std::string& way : WordsOf("~ ~\\ ~\\\\ ~. \\\\?\\~ \\\\.\\~ ~\\Sub\\.. ~\\."))
      all.push_back(ReplaceNoCase(way, "~", path));
    return all;
  }
  static std::string WhoMay(ProtectedPlaces& places, Folder& folder, std::string_view mask) {
    const bool below = mask.starts_with('|');
    if (below) mask.remove_prefix(1);
    std::string who;
    for (const auto& [claim, letter] :
         {std::pair(Claim::kItem, 'I'), {Claim::kRecipe, 'R'}, {Claim::kOwnList, 'O'}}) {
      const Sentence why = HasWildcards(mask) ? places.WhyNot(folder, mask, below, claim)
                                              : places.WhyNotFile(folder, mask, claim);
      if (why.empty()) who += letter;
    }
    return who;
  }
};

TEST_F(ProtectedPlacesTest, NoSpellingOfAPreciousFolderEmptiesIt) {
  const std::string windows = ports.system.WindowsFolder(), system = ports.system.SystemFolder();
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const Names places =
      List(windows.substr(0, 2), windows, system, windows + "\\WinSxS", system + "\\config",
           system + "\\drivers\\etc", std::string(WithoutBackslash(FolderPart(profile))), profile,
           profile + "\\AppData", ports.system.Environment("ProgramFiles").value(),
           ports.program_folder, own + "Backup", own + "Plugins\\Deep");
  std::string lines;
  for (const std::string& place : places) {
    machine->MakeFile(place + "\\Qx kept\\dear.tmp", "dear");
    for (const std::string& line : Spellings(place)) lines += line + "\r\n";
    lines += machine->ShortName(place) + "\r\n";
  }
  WriteOwn("UDFO.txt", lines);
  Clean("CleanUserFolders");
  for (const std::string& place : places) {
    const std::string& log = engine.state().RunLog;
    EXPECT_TRUE(machine->Exists(place + "\\Qx kept\\dear.tmp")) << place << log;
    EXPECT_TRUE(Holds(log, place + "\\ is not cleaned: ")) << place << log;
    ports.files.RemoveFile(place + "\\Qx kept\\dear.tmp");
    ports.files.RemoveFolder(place + "\\Qx kept");
  }
}

// What is asked of a folder: its files of a mask, behind "||" with those below it; and those who
// may: the items (I), recipes (R), the user's own list (O).
struct ProtectedPlacesWhoTest : ProtectedPlacesTest {
  void SetUp() override {
    machine->SetText(kMachine, list, "ProfileImagePath", listed);
    machine->SetText(kUser, kShellFolders, kDownloads, "%USERPROFILE%\\Qx moved");
    machine->MakeFolder(aside);
    machine->MakeFolderLink(scratch + "way", aside);
    machine->SetText(kMachine, kShellFolders, "CommonVideo", scratch + "way");
    if (!had_boot_file) machine->MakeFile(root + "bootmgr", "1");
    for (const std::string& folder : {system + "\\Qx", config + "\\Qx", system + "\\LogFiles\\Qx",
                                      other + "\\Qx", listed, games, cloud, moved})
      machine->MakeFolder(folder);
  }
  void TearDown() override {
    machine->RemoveRegistryTree(kMachine, list);
    ports.registry.Open(kUser, kShellFolders, RegistryAccess::kWrite)->DeleteValue(kDownloads);
    ports.registry.Open(kMachine, kShellFolders, RegistryAccess::kWrite)
        ->DeleteValue("CommonVideo");
    if (!had_boot_file) ports.files.RemoveFile(root + "bootmgr");
  }

  const std::string list = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-9";
  const std::string windows = ports.system.WindowsFolder(), root = windows.substr(0, 3);
  const std::string system = ports.system.SystemFolder(), config = system + "\\config";
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const std::string listed = scratch + "listed", moved = profile + "\\Qx moved";
  const std::string cloud = profile + "\\OneDrive - Qx", games = profile + "\\Saved Games";
  const std::string aside = scratch + "Qx\\videos";
  const std::string other = std::string(FolderPart(profile)) + "Somebody Else";
  const bool had_boot_file = machine->Exists(root + "bootmgr");

  // A row's text, which begins with the name of a place.
  std::string Full(const std::string& word) const {
    const size_t end = word.find_first_of("\\|");
    return *(std::ranges::find(named, word.substr(0, end)) + 1) + word.substr(end);
  }
  // Each name with its place behind it.
  const Names named = List("windows", windows, "root", root, "system", system, "config", config,
                           "profile", profile, "listed", listed, "moved", moved, "cloud", cloud,
                           "games", games, "aside", aside, "shelf", scratch + "Qx", "other", other,
                           "own", ports.program_folder, "scratch", scratch);
};

const std::pair<const char*, const char*> kWhoRows[] = {
    {"",
     "windows|qx.exe windows|qx windows|q?.zzz windows||*.log windows||*.txt system|*.txt "
     "system|qx.dll system|*.spl system\\Qx||*.* config|*.log config\\Qx|qx.log root|BOOTMGR "
     "profile|NTUSER.DAT.LOG1 profile|ntuser.dat{1}.TM.blf other||*.* listed||*.* own|qx.log "
     "scratch|UsrClass.dat root|qx*.TXT profile|*.txt"},
    {"I", "system\\Qx||*.spl"},
    {"IO", "root|qx.exe profile|qx.MUI"},
    {"O", "games||*.* games||*.log cloud||*.* moved||*.* aside||*.* shelf||*.*"},
    {"IRO",
     "windows|MEMORY.DMP windows|*.log windows|*.txt windows|qx.zzz system\\LogFiles\\Qx||*.* "
     "root|qx.zzz profile|qx.dat other\\Qx||*.* games|*.log scratch|notes.dat"}};

TEST_F(ProtectedPlacesWhoTest, DependsOnThePlaceTheMaskAndWhoAsks) {
  ProtectedPlaces places(ports, "");
  for (const auto& [who, asked] : kWhoRows) {
    for (const std::string& word : WordsOf(asked)) {
      SCOPED_TRACE(word);
      const std::string row = Full(word), at = row.substr(0, row.find('|'));
      const auto folder = ports.files.OpenFolder(at);
      EXPECT_EQ(WhoMay(places, *folder, row.substr(at.size() + 1)), who);
      const bool is_personal = at == games || at == cloud || at == moved || at == aside;
      EXPECT_EQ(places.IsPersonal(*folder), is_personal);
      EXPECT_EQ(places.IsSpared(folder->Id()),
                !is_personal && at != scratch && !at.ends_with("\\Qx"));
      EXPECT_EQ(places.WhyNotEdit(*folder, "qx.ini").empty(),
                !at.starts_with(config) && at != ports.program_folder);
    }
  }
}

TEST_F(ProtectedPlacesTest, AHiveIsKnownByItsNameAndWhatIsInIt) {
  const std::tuple<const char*, const char*, bool> kRows[] = {{"SYSTEM", "regf and more", false},
                                                              {"software.log1", "regf", false},
                                                              {"Sam{1}.TM.blf", "regf", false},
                                                              {"SECURITY", "a text", true},
                                                              {"DEFAULTS", "regf", true},
                                                              {"Default", nullptr, false},
                                                              {"bcd", "reg", true}};
  ProtectedPlaces places(ports, "");
  const auto folder = ports.files.OpenFolder(scratch);
  EXPECT_EQ(places.WhyNotFile(*folder, "DRIVERS", Claim::kOwnList).english, "") << "it is missing";
  for (const auto& [name, bytes, goes] : kRows) {
    const std::string path = scratch + name;
    bytes ? machine->MakeFile(path, bytes) : machine->MakeFolder(path);  // unreadable
    EXPECT_EQ(places.WhyNotFile(*folder, name, Claim::kOwnList).empty(), goes) << name;
    EXPECT_EQ(places.WhyNotEdit(*folder, name).empty(), goes) << name;
  }
}

// Shares and disks that nobody listed, and systems that cannot tell what a folder is.
TEST_F(ProtectedPlacesTest, WhatIsUnknownIsTakenForPrecious) {
  struct Strange : ForwardingFolder {
    Strange(std::unique_ptr<Folder> folder, FileId id)
        : ForwardingFolder(std::move(folder)), own(id) {}
    FileId Id() override { return own; }
    std::vector<FileId> Above() override { return {}; }
    FileId own;
  };
  ProtectedPlaces places(ports, "");
  for (const FileId& id : {FileId{}, FileId{99, {1, 2}}}) {
    Strange folder(ports.files.OpenFolder(scratch), id);
    EXPECT_NE(places.WhyNot(folder, "*.dat", false, Claim::kItem).english, "") << id.is_known();
    EXPECT_EQ(places.WhyNotFile(folder, "a.dat", Claim::kItem).empty(), id.is_known());
  }
}

// Named in the user's list of files, or come to be precious after the scan.
TEST_F(ProtectedPlacesTest, ARemovalAsksAgain) {
  const std::string windows = ports.system.WindowsFolder(), root = windows.substr(0, 3);
  const std::string library = windows + "\\qx.dll", part = windows + "\\WinSxS\\qx.tmp";
  for (const std::string& path : {library, part}) machine->MakeFile(path, "1");
  WriteOwn("UDFI.txt", library + "\r\n");
  machine->MakeFolder(windows + "\\Installer");
  machine->MakeFolder(scratch + "safe");
  WriteSettings("[Backup]\r\nPath=" + scratch + "safe\\\r\n");
  Clean("CleanUserFiles");
  FileList list{ports.files.OpenFolder(root), root, {}, {}};
  list.PendingFiles.Append(part);
  list.PendingFolders.Append(windows + "\\Installer\\");
  RemovePendingFiles(context, list);
  RemovePendingFolders(context, list);
  EXPECT_TRUE(machine->Exists(windows + "\\Installer"));
  list = {ports.files.OpenFolder(scratch), scratch, {}, {}};
  list.PendingFolders.Append(scratch + "safe\\");
  RemovePendingFolders(context, list);
  EXPECT_TRUE(machine->Exists(scratch + "safe")) << "where backups are kept";
  for (const std::string& path : {library, part}) {
    EXPECT_TRUE(machine->Exists(path)) << path;
    ports.files.RemoveFile(path);
  }
}

TEST_F(ProtectedPlacesTest, AWalkGoesAroundTheProgramAndItsBackups) {
  WriteSettings("[Backup]\r\nPath=" + temp + "safe\\\r\n");
  machine->MakeFile(temp + "safe\\C_010120200000.zip", "mine");
  MakeFiles(temp, "junk\\a.tmp hive\\UsrClass.dat");
  Clean("CleanTempFiles");
  EXPECT_TRUE(!machine->Exists(temp + "junk") && machine->Exists(temp + "hive\\UsrClass.dat"));
  ports.files.RemoveFile(temp + "hive\\UsrClass.dat");
  EXPECT_TRUE(machine->Exists(temp + "safe\\C_010120200000.zip"));
  EXPECT_TRUE(Holds(engine.state().RunLog, "safe\\ is not cleaned: "));
  ports.files.RemoveFile(temp + "safe\\C_010120200000.zip");
}

}  // namespace
}  // namespace quellix
