#include "cleaners/named_places.h"

#include "run/exit_code.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

struct NamedPlacesTest : RunFixture {
  void Remove(const Names& paths) { engine.RunOthers({.paths = paths}); }
  std::string Log() { return view.report ? view.report->log : ""; }
};

TEST_F(NamedPlacesTest, WhatIsNamedGoesWholeHoweverYoungAndNothingElse) {
  WriteSettings("[General]\r\nOlderThanDays=9\r\n");
  engine.ApplyGeneralSettings();
  MakeFiles(scratch, "one.txt tree\\a tree\\sub\\b tree\\sub\\deep\\c outside\\dear stays");
  machine->MakeFolder(scratch + "tree\\empty");
  Names named = {scratch + "one.txt", scratch + "tree\\", scratch + "tree\\sub\\b"};
  if (machine->Can(Ability::kRemoveLinks)) {
    machine->MakeFolderLink(scratch + "tree\\link", scratch + "outside");
    machine->MakeFolderLink(scratch + "other link", scratch + "outside");
    named.push_back(scratch + "other link");
  }
  const Names before = machine->Tree(scratch);
  PreviewRun preview(ports, view);
  preview.RunOthers({.paths = named});
  EXPECT_EQ(machine->Tree(scratch), before) << "a preview removes nothing";
  Remove(named);
  EXPECT_EQ(machine->Tree(scratch), (Names{"outside\\", "outside\\dear", "stays"}));
  EXPECT_TRUE(Holds(Log(), "Named by hand... Files Deleted: 4 Space Gained: 4 Bytes"));
  EXPECT_EQ(ExitCodeOf(engine.state()), kDone);
  const auto texts = [](const RunEntries& entries) {
    Names all;
    for (const RunEntry& entry : entries.all) all.push_back(entry.place);
    std::ranges::sort(all);
    return all;
  };
  EXPECT_EQ(texts(*preview.entries()), texts(*engine.state().Entries));
  Remove(named);
  EXPECT_EQ(ExitCodeOf(engine.state()), kSomeFilesStayed);
  EXPECT_TRUE(Holds(Log(), "There is no such file or folder."));
}

TEST_F(NamedPlacesTest, LinksThatLeadToWhatIsPreciousOrAreKeptStay) {
  if (!machine->Can(Ability::kRemoveLinks)) GTEST_SKIP() << "no link is removed here";
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  WriteOwn("keep.txt", scratch + "kept\r\n" + scratch + "by name\r\n");
  MakeFiles(scratch, "outside\\dear kept\\x");
  machine->MakeFolder(profile + "\\Documents");
  const std::pair<std::string, std::string> kLinks[] = {
      {scratch + "kept\\link", scratch + "outside"},
      {scratch + "by name", scratch + "outside"},
      {scratch + "moved documents", profile + "\\Documents"},
      {own + "link", scratch + "outside"},
      {ports.system.WindowsFolder() + "\\WinSxS\\qx link", scratch + "outside"}};
  for (const auto& [link, target] : kLinks) {
    SCOPED_TRACE(link);
    machine->MakeFolderLink(link, target);
    Remove({link});
    EXPECT_TRUE(machine->Exists(link)) << Log();
    EXPECT_NE(ExitCodeOf(engine.state()), kFailed);
    ports.files.RemoveFolder(link);
  }
}

TEST_F(NamedPlacesTest, AShortNameIsJudgedByTheLongOne) {
  WriteOwn("keep.txt", "*.longbackup\r\n");
  MakeFiles(scratch, "letter.longbackup");
  const std::string name = machine->ShortName(scratch + "letter.longbackup");
  Remove({name, scratch + "letter.longbackup::$DATA", scratch + "LETTER.LONGBACKUP"});
  EXPECT_TRUE(machine->Exists(scratch + "letter.longbackup")) << name << Log();
}

TEST_F(NamedPlacesTest, WhatIsPreciousOrKeptStays) {
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const std::string windows = ports.system.WindowsFolder();
  WriteOwn("keep.txt", scratch + "kept\r\n*.bak\r\n");
  WriteSettings("[Backup]\r\nPath=" + scratch + "full\\Bak\r\n");
  engine.ApplyGeneralSettings();
  const std::tuple<const char*, std::string, std::string, const char*> kRows[] = {
      {"a drive", scratch.substr(0, 3), scratch + "dear", "a whole drive"},
      {"Windows", windows, windows + "\\Qx\\dear", "a whole drive, Windows"},
      {"the program", own, own + "dear", "belongs to this program"},
      {"a profile", profile, profile + "\\Qx\\dear", "profile"},
      {"the desktop", profile + "\\Desktop", profile + "\\Desktop\\dear", "user's own folders"},
      {"what holds it", profile + "\\AppData", profile + "\\AppData\\dear", ""},
      {"a part of Windows", windows + "\\WinSxS", windows + "\\WinSxS\\dear", "part of Windows"},
      {"a hive", profile + "\\NTUSER.DAT", profile + "\\NTUSER.DAT", "needs"},
      {"the temporary folder", temp, temp + "dear", "name what lies in it"},
      {"what holds the backups", scratch + "full", scratch + "full\\Bak\\dear", "is not cleaned"},
      {"a kept folder", scratch + "kept", scratch + "kept\\dear", "kept"},
      {"a kept file", scratch + "a.bak", scratch + "a.bak", "*.bak"},
      {"what holds a kept file", scratch + "holds", scratch + "holds\\deep\\a.bak", "*.bak"}};
  for (const auto& [row, named, dear, why] : kRows) {
    SCOPED_TRACE(row);
    if (!machine->Exists(dear)) machine->MakeFile(dear, "dear");
    Remove({named});
    EXPECT_TRUE(machine->Exists(dear)) << Log();
    EXPECT_TRUE(Holds(Log(), why)) << Log();
  }
  Remove({scratch + "full"});
  EXPECT_EQ(ExitCodeOf(engine.state()), kSomeFilesStayed) << "it holds the backups";
  Remove({profile + "\\Desktop\\dear"});
  EXPECT_FALSE(machine->Exists(profile + "\\Desktop\\dear")) << "a file there is one like others";
}

}  // namespace
}  // namespace quellix
