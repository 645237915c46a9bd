#include <gtest/gtest.h>

#include "contract/error_kind.h"
#include "platform/preview/preview_machine.h"
#include "platform/text.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

constexpr auto kUser = RegistryRoot::kCurrentUser;
constexpr auto kWrite = RegistryAccess::kWrite;

class PreviewContract : public testing::Test {
 protected:
  PreviewContract() { test_->RemoveRegistryTree(kUser, key_); }
  ~PreviewContract() override { test_->RemoveRegistryTree(kUser, key_); }

  std::string At(std::string_view name) const { return scratch_ + std::string(name); }
  std::vector<std::string> Names(FileSystem& files, const std::string& folder) {
    std::vector<std::string> names;
    files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
      names.emplace_back(entry.name);
      return true;
    });
    std::sort(names.begin(), names.end());
    return names;
  }
  // What was recorded, a line each.
  std::vector<std::string> Recorded() {
    std::vector<std::string> lines;
    for (const Change& change : preview_.changes()) {
      lines.push_back(std::string(KindText(change.kind)) + " " + PlaceText(change));
    }
    return lines;
  }

  std::unique_ptr<TestMachine> test_ = TestMachine::Create();
  const std::string scratch_ = test_->Scratch();
  const std::string key_ = "Software\\Quellix Contract";
  PreviewMachine preview_{test_->machine()};
  FileSystem& files_ = preview_.machine().files;
};

TEST_F(PreviewContract, WhatWasRemovedIsNoLongerSeenAndStillThere) {
  for (const char* name : {"in\\A.txt", "in\\sub\\b", "in\\sub\\deep\\c"}) {
    test_->MakeFile(At(name), "123");
  }
  test_->MakeFolderLink(At("in\\link"), At("in\\sub"));
  const auto before = test_->Tree(scratch_);
  EXPECT_EQ(KindOf([&] { files_.RemoveFolder(At("in\\sub")); }), Error::Kind::kNotEmpty);
  files_.RemoveFile(At("IN\\a.TXT"));
  files_.RemoveFolder(At("in\\link"));
  files_.RemoveFile(At("in\\sub\\deep\\c"));
  files_.RemoveFolder(At("in\\sub\\deep\\"));
  EXPECT_FALSE(files_.Look(At("in\\a.txt")) || files_.Look(At("in\\sub\\deep\\c")));
  EXPECT_FALSE(files_.ReadWholeFile(At("in\\A.txt")));
  EXPECT_EQ(Names(files_, At("in")), std::vector<std::string>{"sub"});
  EXPECT_EQ(Names(files_, At("in\\sub\\")), std::vector<std::string>{"b"});
  EXPECT_FALSE(files_.Enumerate(At("in\\sub\\deep"), Detail::kKind, [](auto&) { return true; }));
  files_.RemoveFile(At("in\\sub\\b"));
  files_.RemoveFolder(At("in\\sub"));
  EXPECT_EQ(KindOf([&] { files_.RemoveFile(At("in\\a.txt")); }), Error::Kind::kMissing);
  EXPECT_EQ(KindOf([&] { files_.RemoveFolder(At("in\\sub")); }), Error::Kind::kMissing);
  EXPECT_EQ(Recorded(), (std::vector<std::string>{
                            "File " + At("IN\\a.TXT"), "Folder " + At("in\\link"),
                            "File " + At("in\\sub\\deep\\c"), "Folder " + At("in\\sub\\deep"),
                            "File " + At("in\\sub\\b"), "Folder " + At("in\\sub")}));
  EXPECT_EQ(preview_.changes()[0].bytes, 3u);
  EXPECT_EQ(test_->Tree(scratch_), before);
}

// The same call on the machine and on its preview: the same error, or none on both.
TEST_F(PreviewContract, MistakesFailAsTheyDoWithoutAPreview) {
  test_->MakeFile(At("file"), "x");
  test_->MakeFile(At("folder\\inner"), "x");
  test_->MakeFolderLink(At("junction"), At("folder"));
  const struct {
    const char* row;
    std::function<void(FileSystem&)> call;
  } kRows[] = {
      {"remove a missing file", [&](FileSystem& f) { f.RemoveFile(At("no")); }},
      {"remove a folder as a file", [&](FileSystem& f) { f.RemoveFile(At("folder")); }},
      {"remove a full folder", [&](FileSystem& f) { f.RemoveFolder(At("folder")); }},
      {"remove a missing folder", [&](FileSystem& f) { f.RemoveFolder(At("no\\x")); }},
      {"attributes of a missing file", [&](FileSystem& f) { f.SetAttributes(At("no"), kHidden); }},
      {"write without a folder", [&](FileSystem& f) { f.WriteWholeFile(At("no\\x"), ""); }},
      {"overwrite a folder", [&](FileSystem& f) { f.WriteWholeFile(At("folder"), ""); }},
      {"open a missing file", [&](FileSystem& f) { f.Open(At("no"), OpenMode::kWrite); }},
      {"open a folder", [&](FileSystem& f) { f.Open(At("folder"), OpenMode::kWrite); }},
      {"rename a missing file", [&](FileSystem& f) { f.Rename(At("no"), At("new")); }},
      {"rename over a file", [&](FileSystem& f) { f.Rename(At("file"), At("folder")); }},
      {"rename into no folder", [&](FileSystem& f) { f.Rename(At("file"), At("no\\x")); }},
      {"make a folder in none", [&](FileSystem& f) { f.CreateFolder(At("no\\x")); }},
  };
  FileSystem& real = test_->machine().files;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    const auto expected = KindOf([&] { row.call(real); });
    ASSERT_TRUE(expected);
    EXPECT_EQ(KindOf([&] { row.call(files_); }), expected);
  }
  EXPECT_TRUE(KindOf([&] { files_.RemoveFolder(At("file")); }));
  EXPECT_TRUE(KindOf([&] { files_.RemoveFile(At("junction")); }));
  EXPECT_TRUE(preview_.changes().empty());
}

TEST_F(PreviewContract, WhatWasWrittenMadeOrRenamedIsSeen) {
  test_->MakeFile(At("old.txt"), "old");
  test_->MakeFile(At("moving.txt"), "moved");
  files_.WriteWholeFile(At("old.txt"), "new");
  files_.CreateFolder(At("made"));
  files_.WriteWholeFile(At("made\\Inner.txt"), "inner");
  files_.Rename(At("moving.txt"), At("there.txt"));
  EXPECT_EQ(files_.ReadWholeFile(At("OLD.txt")), "new");
  EXPECT_EQ(files_.ReadWholeFile(At("there.txt")), "moved");
  EXPECT_EQ(Names(files_, At("made")), (std::vector<std::string>{"Inner.txt"}));
  EXPECT_EQ(Names(files_, scratch_), (std::vector<std::string>{"made", "old.txt", "there.txt"}));
  const auto file = files_.Open(At("made\\log"), OpenMode::kReadAndCreate);
  file->Write(2, "ab");
  EXPECT_EQ(files_.ReadWholeFile(At("made\\log")), std::string("\0\0ab", 4));
  EXPECT_EQ(files_.Open(At("old.txt"), OpenMode::kWrite)->Size(), 0u);
  files_.RemoveFile(At("there.txt"));
  EXPECT_EQ(Recorded().back(), "File " + At("moving.txt")) << "known by its name on the disk";
  for (const char* name : {"made\\Inner.txt", "made\\log"}) files_.RemoveFile(At(name));
  const size_t count = preview_.changes().size();
  files_.RemoveFolder(At("made"));
  EXPECT_EQ(preview_.changes().size(), count) << "what was never there does not go";
  EXPECT_EQ(test_->Tree(scratch_), (std::vector<std::string>{"moving.txt", "old.txt"}));
  EXPECT_EQ(test_->machine().files.ReadWholeFile(At("old.txt")), "old");
}

TEST_F(PreviewContract, TheRegistryIsReadAsChangedAndStaysAsItIs) {
  for (const char* name : {"", "a", "b"}) test_->SetText(kUser, key_, name, "x");
  for (const char* sub : {"\\One\\Deep", "\\Two", "\\Three"}) {
    test_->SetText(kUser, key_ + sub, "v", "x");
  }
  Registry& registry = preview_.machine().registry;
  const auto key = registry.Open(kUser, key_, kWrite);
  EXPECT_TRUE(key->DeleteValue("A"));
  EXPECT_FALSE(key->DeleteValue("a") || key->QueryValue("a"));
  key->SetValue("new", {kRegNone, "12"});
  EXPECT_EQ(key->QueryValue("NEW")->bytes, "12");
  std::vector<std::string> names;
  for (uint32_t i = 0; const auto value = key->ValueAt(i); ++i) names.push_back(value->name);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"", "b", "new"}));
  EXPECT_EQ(KindOf([&] { key->DeleteSubKey("One"); }), Error::Kind::kNotEmpty);
  EXPECT_TRUE(key->DeleteSubKey("one\\DEEP\\"));
  EXPECT_FALSE(registry.Open(kUser, key_ + "\\One\\Deep", RegistryAccess::kRead));
  EXPECT_FALSE(registry.Open(kUser, key_ + "\\One", RegistryAccess::kRead)->SubKeyAt(0));
  while (const auto name = key->SubKeyAt(0)) EXPECT_TRUE(key->DeleteSubKey(*name)) << *name;
  EXPECT_FALSE(key->SubKeyAt(1) || key->DeleteSubKey("Two"));
  const auto readable = registry.Open(kUser, key_, RegistryAccess::kRead);
  EXPECT_EQ(KindOf([&] { readable->DeleteValue("b"); }), Error::Kind::kDenied);
  {
    const auto denied = test_->DenyRegistryWrites(kUser, key_);
    EXPECT_EQ(KindOf([&] { registry.Open(kUser, key_, kWrite); }), Error::Kind::kDenied);
  }
  const auto system = registry.Open(RegistryRoot::kLocalMachine, "SYSTEM", RegistryAccess::kRead);
  if (system->IsLink("CurrentControlSet")) {
    const auto writable = registry.Open(RegistryRoot::kLocalMachine, "SYSTEM", kWrite);
    EXPECT_EQ(KindOf([&] { writable->DeleteSubKey("CurrentControlSet"); }), Error::Kind::kDenied);
  }
  const auto made = registry.Create(kUser, key_ + "\\New\\Deep");
  made->SetValue("v", {kRegNone, "1"});
  EXPECT_EQ(key->SubKeyAt(0), "New");
  EXPECT_EQ(key->Open("new", kWrite)->SubKeyAt(0), "Deep");
  EXPECT_EQ(registry.Create(kUser, key_ + "\\NEW\\deep")->ValueAt(0)->name, "v");
  EXPECT_TRUE(key->DeleteSubKey("New\\Deep") && key->DeleteSubKey("New"));
  EXPECT_FALSE(key->SubKeyAt(0) || key->Open("New", kWrite));
  EXPECT_EQ(Recorded()[0], "Registry value HKEY_CURRENT_USER\\" + key_ + ", A");
  EXPECT_EQ(Recorded()[2], "Registry key HKEY_CURRENT_USER\\" + key_ + "\\one\\DEEP");
  EXPECT_EQ(preview_.changes().size(), 8u) << "six, a key made and a value set in it";
  EXPECT_EQ(test_->ValueNames(kUser, key_), (std::vector<std::string>{"", "a", "b"}));
  EXPECT_TRUE(test_->KeyExists(kUser, key_ + "\\One\\Deep"));
}

TEST_F(PreviewContract, IniFilesAndTheShellAreChangedOnPaperOnly) {
  const std::string text = "[A]\r\nk=1\r\n[B]\r\nk=2\r\n";
  test_->MakeFile(At("a.ini"), text);
  test_->MakeFile(At("gone.txt"), "12345");
  test_->MakeFile(At("bin.txt"), "123");
  Machine machine = preview_.machine();
  test_->machine().shell.EmptyRecycleBin();
  test_->machine().files.Recycle(At("bin.txt"));
  machine.profile.DeleteKey(At("a.ini"), "a", "K");
  machine.profile.DeleteSection(At("a.ini"), "B");
  machine.profile.DeleteSection(At("a.ini"), "B");
  EXPECT_EQ(files_.ReadWholeFile(At("a.ini")), "[A]\r\n");
  machine.files.Recycle(At("gone.txt"));
  EXPECT_FALSE(files_.Look(At("gone.txt")));
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 2u);
  EXPECT_EQ(machine.shell.QueryRecycleBin().bytes, 8u);
  machine.shell.EmptyRecycleBin();
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 0u);
  EXPECT_TRUE(KindOf([&] { machine.files.Recycle(At("gone.txt")); }));
  EXPECT_EQ(Recorded(),
            (std::vector<std::string>{"INI key " + At("a.ini") + ", [a] K",
                                      "INI section " + At("a.ini") + ", [B]",
                                      "File " + At("gone.txt"), "Recycle bin 2 items"}));
  EXPECT_EQ(test_->machine().files.ReadWholeFile(At("a.ini")), text);
  EXPECT_TRUE(test_->Exists(At("gone.txt")));
  EXPECT_EQ(test_->machine().shell.QueryRecycleBin().items, 1u);
  test_->machine().shell.EmptyRecycleBin();
  // What this machine cannot do at all is told, not listed.
  struct Row {
    ShellFeature feature;
    void (Shell::*action)();
  };
  for (const Row& row : {Row{ShellFeature::kAddressHistory, &Shell::ClearAddressHistory},
                         Row{ShellFeature::kClipboard, &Shell::EmptyClipboard}}) {
    const size_t count = preview_.changes().size();
    const auto never = KindOf([&] { test_->machine().shell.Require(row.feature); });
    EXPECT_EQ(KindOf([&] { (machine.shell.*row.action)(); }), never);
    EXPECT_EQ(preview_.changes().size(), never ? count : count + 1);
  }
}

}  // namespace
}  // namespace quellix
