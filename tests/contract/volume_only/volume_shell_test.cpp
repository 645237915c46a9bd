#include "contract/error_kind.h"
#include "platform/text.h"
#include "support/shortcut_bytes.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

struct VolumeBin : testing::Test {
  std::string Content(const std::string& name) { return ReadNative(test_->Native(bin_ + name)); }
  std::string IndexName() {
    for (const std::string& name : test_->Tree(bin_)) {
      if (name.starts_with("$I")) return name;
    }
    return "(none)";
  }

  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  Shell& shell_ = test_->machine().shell;
  const std::string bin_ = std::string("C:\\$Recycle.Bin\\") + kTesterSid + "\\";
};

TEST_F(VolumeBin, EntriesAreWrittenAsWindowsReadsThem) {
  const std::string path = test_->Scratch() + "ä.txt";
  const std::string zeroes(7, '\0');
  for (const bool is_10 : {true, false}) {
    SCOPED_TRACE(is_10 ? "Windows 10" : "before it");
    test_->SetRegistryValue(
        RegistryRoot::kLocalMachine, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
        "CurrentMajorVersionNumber", {kRegDword, (is_10 ? "\xA" : "\6") + std::string(3, '\0')});
    test_->MakeFile(path, "12345");
    test_->machine().files.Recycle(path);
    const std::string name = IndexName(), index = Content(name);
    EXPECT_EQ(name.size(), 12u);
    EXPECT_EQ(Content("$R" + name.substr(2)), "12345");
    EXPECT_EQ(index.substr(0, 8), (is_10 ? "\2" : "\1") + zeroes);
    EXPECT_EQ(index.substr(8, 8), "\5" + zeroes);
    EXPECT_EQ(index.size(), is_10 ? 28 + ToUtf16Bytes(path).size() + 2 : 544u);
    EXPECT_EQ(TrimNull(FromUtf16Bytes(index.substr(is_10 ? 28 : 24))), path);
    shell_.EmptyRecycleBin();
    EXPECT_EQ(test_->Tree(bin_), Names{"desktop.ini"});
  }
}

TEST_F(VolumeBin, FoldersInItGoWithoutFollowingLinks) {
  test_->MakeFile("C:\\outside\\kept.txt", "kept");
  test_->MakeFile(bin_ + "$RAAAAAA\\deep\\x.txt", "x");
  test_->MakeFile(bin_ + "$IAAAAAA", std::string("\2\0\0\0\0\0\0\0\7", 9) + std::string(19, '\0'));
  test_->MakeFolderLink(bin_ + "$RAAAAAA\\link", "C:\\outside");
  test_->MakeFile(bin_ + "$IBBBBBB", "an index alone");
  EXPECT_EQ(shell_.QueryRecycleBin().items, 1u);
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 7u) << "as recorded";
  shell_.EmptyRecycleBin();
  EXPECT_TRUE(test_->Tree(bin_).empty() && test_->Exists("C:\\outside\\kept.txt"));
}

TEST_F(VolumeBin, WhatIsLeftIsSaid) {
  test_->MakeFile(test_->Scratch() + "a.txt", "x");
  test_->machine().files.Recycle(test_->Scratch() + "a.txt");
  {
    const auto lock = test_->LockFile(bin_ + "$R" + IndexName().substr(2));
    EXPECT_TRUE(KindOf([this] { shell_.EmptyRecycleBin(); }));
    test_->MakeFile(test_->Scratch() + "held.txt", "x");
    const auto held = test_->LockFile(test_->Scratch() + "held.txt");
    const auto before = test_->Tree(bin_);
    EXPECT_TRUE(KindOf([this] { test_->machine().files.Recycle(test_->Scratch() + "held.txt"); }));
    EXPECT_EQ(test_->Tree(bin_), before) << "no record of what did not go";
    EXPECT_EQ(shell_.QueryRecycleBin().items, 1u) << "it can still be restored";
  }
  shell_.EmptyRecycleBin();
  EXPECT_EQ(shell_.QueryRecycleBin().items, 0u);
}

TEST_F(VolumeBin, BinsOfBeforeVistaAreCountedAndEmptied) {
  const std::string old = std::string("C:\\RECYCLER\\") + kTesterSid + "\\";
  const std::string others = "C:\\RECYCLER\\S-1-5-21-9-9-9-500\\Dc1.txt";
  test_->MakeFile(old + "INFO2", std::string(20, '\0'));
  test_->MakeFile(old + "desktop.ini", "");
  test_->MakeFile(old + "Dc1.txt", "123");
  test_->MakeFile(old + "Dc2\\inner.txt", "4567");
  test_->MakeFile(others, "of another user");
  EXPECT_EQ(shell_.QueryRecycleBin().items, 2u);
  EXPECT_EQ(shell_.QueryRecycleBin().bytes, 7u);
  shell_.EmptyRecycleBin();
  EXPECT_EQ(test_->Tree(old), Names{"desktop.ini"});
  EXPECT_TRUE(test_->Exists(others));
}

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
