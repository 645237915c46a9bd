#include <chrono>
#include <list>
#include <thread>

#include "contract/contract_fixture.h"
#include "platform/text.h"

namespace quellix {
namespace {

using Kind = Error::Kind;

// A folder that is held open and worked in.
struct FolderContract : ContractFixture {
  uint32_t Attributes(std::string_view name) {
    const auto info = files_.Look(At(name));
    return info ? info->attributes & (kReadOnly | kHidden | kSystem) : ~0u;
  }
  std::unique_ptr<Folder> folder_ = files_.OpenFolder(scratch_);
};

TEST_F(FolderContract, WhatIsNoNameIsMissing) {
  Make("a\\b", "kept");
  for (const char* name :
       {"", ".", "..", "a\\b", "a/b", "a:b", "a::$DATA", "\\", "a\\", "*", "?"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(folder_->Look(name) || folder_->IdOf(name));
    const std::function<void()> kChanges[] = {
        [&] { folder_->Open(name, OpenMode::kRead); },
        [&] { folder_->Open(name, OpenMode::kReadAndCreate); },
        [&] { folder_->Open(name, OpenMode::kCreateNew); },
        [&] { folder_->CreateFolder(name); },
        [&] { folder_->Rename(name, "new", IfThere::kReplace); },
        [&] { folder_->Rename("a", name, IfThere::kReplace); },
        [&] { folder_->RemoveFile(name); },
        [&] { folder_->RemoveFolder(name); },
        [&] { folder_->Recycle(name); },
        [&] { folder_->SetAttributes(name, kHidden); }};
    for (const auto& change : kChanges)
      EXPECT_EQ(KindOf(change), Kind::kMissing) << &change - kChanges;
  }
  for (const char* names : {"", ".", "..", "a\\..", "a\\\\b", "a\\.", "\\a", "a/b", "a:b"})
    EXPECT_FALSE(folder_->OpenFolder(names)) << names;
  EXPECT_EQ(Tree(), (Names{"a\\", "a\\b"}));
}

// Names that the calls with paths would take for devices, or for the name without the end.
TEST_F(FolderContract, EveryOtherNameIsTakenLiterally) {
  Make("a", "another");
  for (const std::string name : {"NUL", "nul.txt", "CON", "COM1", "LPT1.log", "AUX", "CONIN$", "a.",
                                 "a ", "a. .", "...", " a", "a~1"}) {
    SCOPED_TRACE(name);
    folder_->Open(name, OpenMode::kCreateNew)->Write(0, "literal");
    EXPECT_EQ(NamesIn(*folder_).size(), 2u);
    EXPECT_EQ(folder_->Look(name)->size, 7u);
    folder_->SetAttributes(name, kHidden);
    EXPECT_EQ(folder_->Open(name, OpenMode::kRead)->Size(), 7u);
    folder_->Rename(name, name + "x", IfThere::kFail);
    folder_->Rename(name + "x", name, IfThere::kReplace);
    folder_->RemoveFile(name);
    folder_->CreateFolder(name);
    EXPECT_TRUE(folder_->OpenFolder(name));
    folder_->RemoveFolder(name);
    EXPECT_EQ(Tree(), Names{"a"});
  }
  EXPECT_EQ(Content("a"), "another");
}

TEST_F(FolderContract, AnIdentityIsTheSameByEveryWayToIt) {
  Make("A long folder name\\Inner\\File.txt", "x");
  Make("A long folder name\\other.txt", "x");
  test_->MakeHardLink(At("second.txt"), At("A long folder name\\Inner\\File.txt"));
  const auto folder = folder_->OpenFolder("a LONG folder name");
  const auto inner = folder->OpenFolder("INNER");
  const FileId kWays[] = {
      inner->Id(), *folder->IdOf("inner"), folder_->OpenFolder("A long folder name\\Inner")->Id(),
      files_.OpenFolder(At("a long folder NAME\\inner\\"))->Id(),
      files_.OpenFolder(test_->ShortName(At("A long folder name\\Inner")))->Id()};
  test_->MakeFolderLink(At("link"), At("A long folder name\\Inner"));
  for (const char* name : {"LINK", "link\\", "A long folder name\\inner"}) {
    const auto linked = files_.OpenLinked(At(name));
    EXPECT_EQ(linked->Id(), kWays[0]) << name;
    EXPECT_EQ(linked->Above()[0], folder->Id()) << name;
  }
  EXPECT_FALSE(files_.OpenLinked(At("missing")));
  EXPECT_TRUE(KindOf([&] { files_.OpenLinked(At("second.txt")); }));
  for (const FileId& id : kWays) {
    EXPECT_TRUE(id.is_known());
    EXPECT_EQ(id, kWays[0]) << &id - kWays;
  }
  const FileId file = *inner->IdOf("FILE.TXT");
  EXPECT_EQ(inner->Open("file.txt", OpenMode::kRead)->Id(), file);
  EXPECT_EQ(folder_->IdOf("second.txt"), file) << "one file by two names";
  const FileId kOthers[] = {*folder->IdOf("other.txt"), folder->Id(), folder_->Id(), inner->Id()};
  for (const FileId& id : kOthers) EXPECT_NE(id, file) << &id - kOthers;
  EXPECT_FALSE(folder->IdOf("missing"));

  const DiskRoom room = inner->Room();
  EXPECT_FALSE(room.is_read_only);
  EXPECT_GT(room.free, 1u << 20);

  const std::vector<FileId> above = inner->Above();
  ASSERT_EQ(above.size(), 3u);
  EXPECT_EQ(above[0], folder->Id());
  EXPECT_EQ(above[1], folder_->Id());
  const auto root = files_.OpenFolder(scratch_.substr(0, 3));
  EXPECT_EQ(above[2], root->Id());
  EXPECT_TRUE(root->Above().empty());
}

TEST_F(FolderContract, OnlyFoldersAreOpenedAndNoneThroughALink) {
  Make("folder\\deep\\file", "x");
  test_->MakeFolderLink(At("link"), At("folder"));
  test_->MakeFolderLink(At("folder\\inner link"), At("folder\\deep"));
  const std::tuple<const char*, std::optional<Kind>, bool> kRows[] = {
      {"folder", {}, true},
      {"FOLDER\\Deep", {}, true},
      {"missing", {}, false},
      {"missing\\deep", {}, false},
      {"folder\\missing", {}, false},
      {"link", Kind::kDenied, false},
      {"link\\deep", Kind::kDenied, false},
      {"folder\\inner link", Kind::kDenied, false},
      {"folder\\deep\\file", Kind::kOther, false}};
  // Nothing is thrown when it opens or is missing.
  for (const auto& [row, kind, is_open] : kRows) {
    const std::string names = row;
    SCOPED_TRACE(names);
    bool opens = false;
    EXPECT_EQ(KindOf([&] { opens = folder_->OpenFolder(names) != nullptr; }), kind);
    EXPECT_EQ(opens, is_open);
    if (names == "link\\deep") continue;  // above the last a path follows
    opens = false;
    EXPECT_EQ(KindOf([&] { opens = files_.OpenFolder(At(names)) != nullptr; }), kind);
    EXPECT_EQ(opens, is_open);
  }
  for (const char* path : {"", "nonsense", "9:\\", "C:\\a\\..\\b", "\\\\?\\C:\\", "\\\\.\\C:\\"})
    EXPECT_FALSE(files_.OpenFolder(path)) << path;
}

// While a folder is held, its path comes to mean a link, or another folder, with the same in it.
struct HeldFolderContract : FolderContract, testing::WithParamInterface<bool> {
  void MakeTree(const std::string& folder, const std::string& bytes) {
    for (const char* name : {"\\a.txt", "\\b.txt", "\\c.txt", "\\deep\\a.txt"})
      Make(folder + name, bytes);
    test_->MakeFolder(At(folder + "\\empty"));
  }
};

TEST_P(HeldFolderContract, WhatTakesItsPlaceIsNeverTouched) {
  const bool by_link = GetParam();
  MakeTree("temp\\sub", "sub");
  MakeTree("outside", "outside");
  const auto temp = folder_->OpenFolder("temp"), held = temp->OpenFolder("sub");
  temp->Rename("sub", "moved", IfThere::kFail);
  if (by_link) {
    test_->MakeFolderLink(At("temp\\sub"), At("outside"));
  } else {
    MakeTree("temp\\sub", "outside");
  }
  EXPECT_EQ(NamesIn(*held), (Names{"a.txt", "b.txt", "c.txt", "deep", "empty"}));
  EXPECT_EQ(held->OpenFolder("deep")->Id(), held->IdOf("deep"));
  held->Open("b.txt", OpenMode::kWrite)->Write(0, "changed");
  held->SetAttributes("b.txt", kReadOnly);
  EXPECT_EQ(Content("temp\\moved\\b.txt"), "changed");
  EXPECT_EQ(Attributes("temp\\moved\\b.txt"), kReadOnly);
  const std::function<void()> kChanges[] = {
      [&] { held->RemoveFile("a.txt"); }, [&] { held->OpenFolder("deep")->RemoveFile("a.txt"); },
      [&] { held->RemoveFolder("empty"); },
      [&] { held->Rename("c.txt", "d.txt", IfThere::kReplace); }};
  for (const auto& change : kChanges) {
    const bool can = test_->Can(Ability::kChangeMovedFolders);
    EXPECT_EQ(KindOf(change), can ? std::nullopt : std::optional(Kind::kDenied))
        << &change - kChanges;
  }
  KindOf([&] { held->Recycle("b.txt"); });
  EXPECT_EQ(KindOf([&] { temp->OpenFolder("sub"); }) == Kind::kDenied, by_link);
  const std::string place = by_link ? "outside" : "temp\\sub";
  EXPECT_EQ(test_->Tree(At(place)),
            (Names{"a.txt", "b.txt", "c.txt", "deep\\", "deep\\a.txt", "empty\\"}));
  for (const char* name : {"\\a.txt", "\\b.txt", "\\c.txt", "\\deep\\a.txt"}) {
    EXPECT_EQ(Content(place + name), "outside") << name;
    EXPECT_EQ(Attributes(place + name), 0u) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(SwappedFor, HeldFolderContract, testing::Bool(), [](const auto& by_link) {
  return by_link.param ? "ALink" : "AnotherFolder";
});

TEST_F(FolderContract, AttributesDoNotHinderRemovalOrReplacing) {
  const std::pair<const char*, uint32_t> kRows[] = {{"none", 0},
                                                    {"read-only", kReadOnly},
                                                    {"hidden", kHidden},
                                                    {"all", kReadOnly | kHidden | kSystem}};
  for (const auto& [what, attributes] : kRows) {
    SCOPED_TRACE(what);
    Make("file", "x");
    Make("old", "old");
    Make("other", "x");
    test_->MakeHardLink(At("second"), At("other"));
    test_->MakeFolder(At("folder"));
    for (const std::string name : {"file", "old", "other", "folder"}) {
      folder_->SetAttributes(name, attributes);
      const bool keeps_all = test_->Can(Ability::kKeepReadOnlyFolders) || name != "folder";
      const uint32_t kept = (keeps_all ? kReadOnly : 0u) | kHidden | kSystem;
      EXPECT_EQ(Attributes(name) & kept, attributes & kept) << name;
    }
    folder_->SetAttributes("folder", kNormal);
    EXPECT_EQ(Attributes("folder"), 0u);
    folder_->Rename("file", "OLD", IfThere::kReplace);
    EXPECT_EQ(Content("old"), "x");
    EXPECT_EQ(Attributes("old"), attributes) << "a file brings its own along";
    EXPECT_EQ(folder_->Open("second", OpenMode::kRead)->LinkCount(), 2u);
    folder_->RemoveFile("other");
    EXPECT_EQ(folder_->Open("second", OpenMode::kRead)->LinkCount(), 1u);
    EXPECT_EQ(Attributes("second"), attributes) << "they are the other name's as well";
    for (const char* name : {"old", "second"}) folder_->RemoveFile(name);
    folder_->RemoveFolder("folder");
    EXPECT_EQ(Tree(), Names{});
  }
}

TEST_F(FolderContract, WhatIsTakenStays) {
  Make("a.txt", "a");
  Make("b.txt", "b");
  Make("full\\inner", "i");
  test_->MakeFolder(At("empty"));
  test_->MakeFolderLink(At("link"), At("full"));
  const std::string full = "full", link = "link";
  for (const std::string name : {"b.txt", "B.TXT", "full", "empty", "link"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(KindOf([&] { folder_->Open(name, OpenMode::kCreateNew); }), Kind::kExists);
    EXPECT_EQ(KindOf([&] { folder_->Rename("a.txt", name, IfThere::kFail); }), Kind::kExists);
    const bool is_itself = name == full || (name == link && !test_->Can(Ability::kRemoveLinks));
    for (const IfThere if_there : {IfThere::kFail, IfThere::kReplace})
      EXPECT_TRUE(is_itself || KindOf([&] { folder_->Rename("full", name, if_there); }));
    const bool is_file = EqualsNoCase(name, "b.txt");
    EXPECT_TRUE(is_file || KindOf([&] { folder_->Rename("a.txt", name, IfThere::kReplace); }));
    EXPECT_TRUE(!is_file || KindOf([&] { folder_->CreateFolder(name); }));
  }
  EXPECT_EQ(KindOf([&] { folder_->CreateFolder("EMPTY"); }), std::nullopt);
  EXPECT_EQ(KindOf([&] { folder_->RemoveFolder("full"); }), Kind::kNotEmpty);
  EXPECT_EQ(Content("a.txt") + Content("b.txt") + Content("full\\inner"), "abi");
  EXPECT_EQ(Tree(), (Names{"a.txt", "b.txt", "empty\\", "full\\", "full\\inner", "link\\"}));
  folder_->Rename("b.txt", "B.txt", IfThere::kFail);  // the case alone
  folder_->Rename("full", "moved", IfThere::kReplace);
  folder_->Rename("A.TXT", "b.TXT", IfThere::kReplace);
  folder_->Flush();
  EXPECT_EQ(Content("b.txt") + Content("moved\\inner"), "ai");
  EXPECT_FALSE(folder_->Look("a.txt") || folder_->Look("full"));
}

TEST_F(FolderContract, WhatIsInUseStaysAsItWas) {
  const auto refused = [](std::optional<Kind> kind) {
    return kind == Kind::kDenied || kind == Kind::kInUse;
  };
  Make("locked\\file.txt", "kept");
  Make("locked\\other.txt", "other");
  const auto folder = folder_->OpenFolder("locked");
  folder->SetAttributes("file.txt", kReadOnly | kHidden);
  const uint32_t before = Attributes("locked\\file.txt");
  {
    const auto lock = test_->LockFile(At("locked\\file.txt"));
    EXPECT_TRUE(folder->Look("file.txt") && folder->IdOf("file.txt"));
    const std::function<void()> kChanges[] = {
        [&] { folder->RemoveFile("file.txt"); },
        [&] { folder->Recycle("file.txt"); },
        [&] { folder->Open("file.txt", OpenMode::kWrite); },
        [&] { folder->Rename("file.txt", "b", IfThere::kFail); },
        [&] { folder->Rename("other.txt", "file.txt", IfThere::kReplace); },
        [&] { files_.WriteWholeFile(At("locked\\file.txt"), "new"); }};
    for (const auto& change : kChanges) EXPECT_TRUE(refused(KindOf(change))) << &change - kChanges;
  }
  EXPECT_EQ(Content("locked\\file.txt"), "kept");
  EXPECT_EQ(Attributes("locked\\file.txt"), before);
  EXPECT_EQ(test_->Tree(At("locked")), (Names{"file.txt", "other.txt"}));
  folder->RemoveFile("file.txt");
}

TEST_F(FolderContract, AListingIsFreshEachTimeAndMayBeNested) {
  for (const char* name : {"a", "b", "c"}) Make(name, name);
  EXPECT_EQ(NamesIn(*folder_), (Names{"a", "b", "c"}));
  Make("d", "");
  int inner = 0;
  folder_->Enumerate(Detail::kFull, [&](const Entry& entry) {
    inner += static_cast<int>(NamesIn(*folder_).size());
    EXPECT_EQ(folder_->Look(entry.name)->size, entry.info.size);
    return true;
  });
  EXPECT_EQ(inner, 16);
  folder_->Enumerate(Detail::kKind, [&](const Entry& entry) {
    folder_->RemoveFile(entry.name);
    return true;
  });
  EXPECT_EQ(NamesIn(*folder_), Names{});
}

// What was announced may have been seen before, but never in another folder.
TEST_F(FolderContract, WhatIsExpectedIsSeenAsItIs) {
  std::vector<std::string> names = {"a\\FILE 1", "a\\missing", "a\\a:b", "missing\\file 0"}, paths;
  for (const std::string folder : {"", "a\\", "b\\inner\\"}) {
    for (size_t i = 0; i < 100; ++i) {
      names.push_back(folder + "file " + std::to_string(i));
      Make(names.back(), std::string(i, 'x'));
    }
  }
  for (const std::string& name : names) paths.push_back(At(name));
  const std::vector<std::string_view> expected(paths.begin(), paths.end());
  const auto again = files_.OpenFolder(At(""));
  const FilesBelow coming[] = {{folder_.get(), std::span(expected).first(30), At("").size()},
                               {again.get(), std::span(expected).subspan(30), At("").size()}};
  const auto ahead = files_.ExpectLooks(coming);
  EXPECT_FALSE(files_.ExpectLooks(coming)) << "expected already, or never";
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // it may be ahead now
  files_.Rename(At("b"), At("was b"));
  for (size_t i = 0; i < 100; i += 3) Make("b\\inner\\file " + std::to_string(i), "new");
  std::unique_ptr<Folder> below;
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    if (name.ends_with("9")) continue;  // not everything that is expected is asked for
    const std::string_view above = WithoutBackslash(FolderPart(name));
    if (!above.empty()) below = folder_->OpenFolder(above);
    Folder* const asked = above.empty() ? folder_.get() : below.get();
    const auto seen = asked ? asked->Look(NamePart(name), Detail::kSize) : std::nullopt;
    const auto afresh = files_.Look(At(name), Detail::kSize);
    EXPECT_EQ(seen.value_or(FileInfo{}).size, afresh.value_or(FileInfo{}).size);
    EXPECT_EQ(seen.has_value(), afresh.has_value());
  }
}

// Lists and folders go as soon as nothing is expected of them, in whatever order.
TEST_F(FolderContract, WhatIsExpectedNoMoreMayGo) {
  Names names;
  for (const std::string above : {"", "a\\"}) {
    for (char i = 'a'; i <= 'z'; ++i) Make(names.emplace_back(above + "file " + i), "xy");
  }
  struct Round {
    Names paths;
    std::vector<std::string_view> expected;
    std::unique_ptr<Folder> folder;
    std::shared_ptr<void> ahead;
  };
  std::list<Round> rounds;
  for (size_t i = 0; i < 300; ++i) {
    Round& round = rounds.emplace_back();
    for (const std::string& name : names) round.paths.push_back(At(name));
    round.expected.assign(round.paths.begin(), round.paths.end());
    round.folder = files_.OpenFolder(At(""));
    const FilesBelow coming{round.folder.get(), round.expected, At("").size()};
    round.ahead = files_.ExpectLooks({&coming, 1});
    for (size_t name = i % 7; name < i % 20; ++name) {
      EXPECT_EQ(round.folder->Look(names[name], Detail::kSize)->size, 2) << i << names[name];
    }
    if (i % 5 == 4) rounds.erase(std::next(rounds.begin(), static_cast<int>(i % rounds.size())));
    if (i % 3 == 2) rounds.pop_front();
  }
}

TEST_F(FolderContract, RewritingKeepsAttributesAndTheTimeOfCreation) {
  constexpr int64_t kTime = 132'000'000'000'000'000;
  Make("file", "old");
  folder_->SetAttributes("file", kHidden | kSystem);
  folder_->Open("file", OpenMode::kWrite)->SetTimes({.created = kTime});
  const int64_t created = folder_->Open("file", OpenMode::kRead)->Times().created;
  files_.WriteWholeFile(At("FILE"), "new");
  EXPECT_EQ(Content("file"), "new");
  EXPECT_EQ(Attributes("file"), kHidden | kSystem);
  if (created == kTime) {
    EXPECT_EQ(folder_->Open("file", OpenMode::kRead)->Times().created, kTime);
  }
  EXPECT_EQ(Tree(), Names{"file"}) << "nothing temporary is left";
}

}  // namespace
}  // namespace quellix
