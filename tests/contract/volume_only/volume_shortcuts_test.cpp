#include "support/shortcut_bytes.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

TEST(VolumeShortcuts, OnlyWhatAVolumeCanKnowIsGone) {
  const auto test = TestMachine::Create();
  const std::string scratch = test->Scratch();
  test->MakeFolder(scratch + "real");
  test->MakeFolderLink(scratch + "link", scratch + "real");
  FileSystem& files = test->machine().files;
  const std::pair<std::string, bool> rows[] = {{scratch + "real", false},
                                               {scratch + "REAL\\", false},
                                               {scratch + "none", true},
                                               {scratch + "none\\deeper", true},
                                               {scratch + "link\\none", false},
                                               {scratch + "link", false},
                                               {scratch + "NOSUCH~1\\x", false},
                                               {"%ProgramFiles%\\none", false},
                                               {"Q:\\none", false},
                                               {"\\\\server\\share\\none", false},
                                               {"", true}};
  for (const auto& [path, gone] : rows) EXPECT_EQ(files.IsGone(path), gone) << path;
}

TEST(VolumeShortcuts, WhatOnlyWindowsCanResolveHasNoAnswer) {
  const auto test = TestMachine::Create();
  const std::string path = test->Scratch() + "a.lnk";
  test->MakeFile(path, ShortcutBytes("", "C:\\x", "\x1F\x50"));
  const auto reader = test->machine().shell.OpenShortcuts();
  EXPECT_FALSE(reader->Read(path));
  test->MakeFile(path, ShortcutBytes("C:\\a\\b.exe", "C:\\x"));
  const auto read = reader->Read(path);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->target, "C:\\a\\b.exe");
  EXPECT_EQ(read->working_folder, "C:\\x");
}

}  // namespace
}  // namespace quellix
