#include <algorithm>
#include <set>

#include "backup/preview_archive.h"
#include "platform/preview/preview_machine.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

using Paths = std::set<std::string>;

class PreviewRunTest : public RunFixture {
 protected:
  // Everything in two folders, by full path, folders without "\" at their end.
  Paths Everything() {
    Paths paths;
    for (const std::string& folder : {temp, scratch}) {
      for (std::string name : machine->Tree(folder)) {
        if (name.ends_with('\\')) name.pop_back();
        paths.insert(UpCase(folder + name));
      }
    }
    return paths;
  }
  static Paths Files(const ChangeLog& changes) {
    Paths paths;
    for (const Change& change : changes) {
      if (change.kind <= ChangeKind::kRemoveFolder) paths.insert(UpCase(change.target));
    }
    return paths;
  }
};

TEST_F(PreviewRunTest, WhatAPreviewListsIsWhatARunThenRemoves) {
  const struct {
    const char* name;
    const char* settings;
  } kRows[] = {{"delete", "[General]\r\nDelMethod=D\r\n"},
               {"recycle", "[General]\r\nDelMethod=R\r\n"},
               {"wipe", "[General]\r\nDelMethod=W\r\nRename=1\r\nWipeStep=4096\r\n"},
               {"back up", "[General]\r\nDelMethod=B\r\n[Backup]\r\nStrict=1\r\n"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    for (const char* name : {"qx a", "qx sub\\b", "qx sub\\deep\\c"}) {
      machine->MakeFile(temp + name, "123");
    }
    machine->MakeFile(scratch + "kept", "1");
    machine->MakeFile(scratch + "mine\\listed.txt", "12");
    machine->RemoveRegistryTree(kUser, kRunMruKey);
    machine->SetText(kUser, kRunMruKey, "a", "x");
    machine->SetText(kUser, kRunMruKey, "MRUList", "a");
    WriteSettings(row.settings);
    machine->MakeFile(ports.program_folder + "\\UDFI.txt", scratch + "mine\\listed.txt\r\n");
    Tick({"CleanTempFiles", "CleanRunMRU", "CleanUserFiles"});
    const Paths before = Everything();
    const std::string settings_before = ReadProgramFile("Settings.ini");

    PreviewMachine preview(ports);
    PreviewArchive archive(preview.machine().files);
    Engine previewed(preview.machine(), view, &archive);
    for (const Item& item : AllItems()) {
      previewed.selection().SetChecked(item, engine.selection().IsChecked(item));
    }
    previewed.RunCleaning();
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(ReadProgramFile("Settings.ini"), settings_before);
    EXPECT_EQ(machine->ValueNames(kUser, kRunMruKey).size(), 2u);
    const std::string log = previewed.state().RunLog;

    engine.RunCleaning();
    Paths gone;
    const Paths after = Everything();
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::inserter(gone, gone.end()));
    EXPECT_EQ(Files(preview.changes()), gone);
    EXPECT_GE(gone.size(), 6u);
    EXPECT_EQ(std::ranges::count(preview.changes(), ChangeKind::kDeleteValue, &Change::kind), 2);
    EXPECT_EQ(engine.state().RunLog, log) << "the same log";
  }
}

}  // namespace
}  // namespace quellix
