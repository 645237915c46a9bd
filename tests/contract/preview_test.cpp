#include "contract/contract_fixture.h"
#include "platform/preview/known_listings.h"
#include "platform/preview/preview_machine.h"
#include "support/unstored_registry.h"

namespace quellix {
namespace {

struct PreviewContract : ContractFixture {
  PreviewContract() { test_->RemoveRegistryTree(kUser, key_); }
  ~PreviewContract() override { test_->RemoveRegistryTree(kUser, key_); }

  Names NamesOf(const std::string& folder) { return NamesIn(*seen_.OpenFolder(folder)); }
  const std::string key_ = "Software\\Quellix Contract";
  PreviewMachine preview_{machine_};
  FileSystem& seen_ = preview_.machine().files;
};

TEST_F(PreviewContract, WhatWasRemovedIsNoLongerSeenAndStillThere) {
  for (const char* name : {"in\\A.txt", "in\\sub\\b", "in\\sub\\deep\\c"}) Make(name, "123");
  test_->MakeFolderLink(At("in\\link"), At("in\\sub"));
  const auto before = Tree();
  EXPECT_EQ(KindOf([&] { seen_.RemoveFolder(At("in\\sub")); }), Error::Kind::kNotEmpty);
  seen_.RemoveFile(At("IN\\a.TXT"));
  seen_.RemoveFolder(At("in\\link"));
  seen_.RemoveFile(At("in\\sub\\deep\\c"));
  seen_.RemoveFolder(At("in\\sub\\deep\\"));
  EXPECT_FALSE(seen_.Look(At("in\\a.txt")) || seen_.Look(At("in\\sub\\deep\\c")));
  EXPECT_FALSE(seen_.ReadWholeFile(At("in\\A.txt")));
  EXPECT_EQ(NamesOf(At("in")), Names{"sub"});
  EXPECT_EQ(NamesOf(At("in\\sub\\")), Names{"b"});
  EXPECT_FALSE(seen_.Enumerate(At("in\\sub\\deep"), Detail::kKind, [](auto&) { return true; }));
  seen_.RemoveFile(At("in\\sub\\b"));
  seen_.RemoveFolder(At("in\\sub"));
  EXPECT_EQ(KindOf([&] { seen_.RemoveFile(At("in\\a.txt")); }), Error::Kind::kMissing);
  EXPECT_EQ(KindOf([&] { seen_.RemoveFolder(At("in\\sub")); }), Error::Kind::kMissing);
  EXPECT_TRUE(NamesOf(At("in")).empty());
  EXPECT_FALSE(seen_.OpenFolder(scratch_)->OpenFolder("in\\sub\\deep"));
  EXPECT_EQ(Tree(), before);
}

// What many entries name is read once.
TEST_F(PreviewContract, AFolderIsAsFirstReadButForWhatWasChangedSince) {
  for (const char* name : {"in\\a", "in\\b", "in\\c", "in\\d", "in\\sub\\e"}) Make(name, "123");
  const auto held = seen_.OpenFolder(At("in"));
  EXPECT_EQ(NamesIn(*held), (Names{"a", "b", "c", "d", "sub"}));
  Make("in\\later", "1");
  const struct {
    const char* row;
    std::function<void()> change;
    Names left;
  } kRows[] = {
      {"nothing", [] {}, {"a", "b", "c", "d", "sub"}},
      {"as listed", [&] { held->RemoveFile("b"); }, {"a", "c", "d", "sub"}},
      {"by another folder", [&] { seen_.RemoveFile(At("in\\c")); }, {"a", "d", "sub"}},
      {"in another case", [&] { seen_.RemoveFile(At("IN\\A")); }, {"d", "sub"}},
      {"renamed", [&] { held->Rename("d", "a", IfThere::kFail); }, {"a", "sub"}},
      {"made", [&] { seen_.WriteWholeFile(At("in\\b"), "1"); }, {"a", "b", "sub"}},
      {"what lay in it", [&] { seen_.RemoveFile(At("in\\sub\\e")); }, {"a", "b", "sub"}},
      {"a folder", [&] { held->RemoveFolder("sub"); }, {"a", "b"}},
      {"what came later", [&] { held->RemoveFile("later"); }, {"a", "b"}},
  };
  for (const auto& [row, change, left] : kRows) {
    change();
    EXPECT_EQ(NamesIn(*held), left) << row;
    EXPECT_EQ(NamesOf(At("In\\")), left) << row;
  }
  EXPECT_EQ(Tree().size(), 8u) << "as it was";
}

// As where the first rows of a large folder are wanted before its last name is read.
TEST_F(PreviewContract, WhatIsChangedWhileAFolderIsReadIsChangedTheNextTime) {
  for (const bool by_itself : {true, false}) {
    for (const char* name : {"in\\a", "in\\b", "in\\c"}) Make(name, "123");
    PreviewMachine preview(machine_);
    FileSystem& files = preview.machine().files;
    const auto held = files.OpenFolder(At("in")), other = files.OpenFolder(At("in"));
    Names seen;
    held->Enumerate(Detail::kKind, [&](const Entry& entry) {
      seen.emplace_back(entry.name);
      if (seen.size() == 2) (by_itself ? held : other)->RemoveFile(seen[0]);
      return true;
    });
    EXPECT_EQ(seen.size(), 3u);
    seen.erase(seen.begin());
    std::ranges::sort(seen);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(NamesIn(*held), seen) << by_itself;
    EXPECT_EQ(NamesIn(*files.OpenFolder(At("in"))), seen);
    EXPECT_EQ(Tree().size(), 4u);
  }
}

// Some of them were asked for long ago, and are held as long as those that are new.
struct KnownListingsTest : testing::Test {
  static FileId Id(uint64_t number) { return {1, {number, 0}}; }
  bool Holds(uint64_t number, Detail detail = Detail::kKind) {
    return known.Find(Id(number), detail).listing != nullptr;
  }
  static std::shared_ptr<const Listing> ListingOf(int names) {
    const auto listing = std::make_shared<Listing>();
    for (int i = 0; i < names; ++i) listing->Add({"a name of some length", {}});
    return listing;
  }
  void Keep(uint64_t number) { known.Keep(Id(number), {Detail::kSize, listing}); }

  const std::shared_ptr<const Listing> listing = ListingOf(100);
  // Five in each half.
  KnownListings known{10 * (listing->bytes() + 120)};
};

TEST_F(KnownListingsTest, WhatGoesIsNotedHoweverLongAgoAListingWasKept) {
  const std::string gone[] = {"x", "y"};
  for (const bool is_old : {false, true}) {
    Keep(0);
    for (uint64_t i = 1; is_old && i < 6; ++i) Keep(i);
    for (const std::string& name : gone) known.NoteGone(Id(0), name);
    known.NoteGone(Id(77), "z");
    EXPECT_EQ(known.Find(Id(0), Detail::kKind).gone.size(), 2u) << is_old;
    Keep(0);
    EXPECT_TRUE(known.Find(Id(0), Detail::kKind).gone.empty()) << "a new listing lacks it anyway";
  }
}

TEST_F(KnownListingsTest, OneThatIsKeptAnewTakesNoMoreRoom) {
  for (uint64_t i = 0; i < 3; ++i) Keep(i);
  for (int i = 0; i < 100; ++i) Keep(3);
  for (uint64_t i = 0; i < 4; ++i) EXPECT_TRUE(Holds(i)) << i;
  // What is old must know as much as is asked for, and goes when what replaces it is too large.
  for (uint64_t i = 4; i < 8; ++i) Keep(i);
  EXPECT_FALSE(Holds(0, Detail::kFull));
  EXPECT_TRUE(Holds(0, Detail::kSize));
  EXPECT_TRUE(known.Takes(*listing) && !known.Takes(*ListingOf(1000)));
  known.Keep(Id(1), {Detail::kFull, ListingOf(1000)});
  EXPECT_FALSE(Holds(1));
}

TEST_F(KnownListingsTest, OnlyTheLastOnesAreHeld) {
  size_t held = 0;
  for (uint64_t i = 0; i < 100; ++i) {
    Keep(i);
    EXPECT_TRUE(Holds(0) && Holds(i)) << i << ": what is asked for is not forgotten";
  }
  for (uint64_t i = 0; i < 100; ++i) held += Holds(i);
  EXPECT_TRUE(held > 2 && held < 12) << held;
  EXPECT_TRUE(Holds(0, Detail::kSize) && !Holds(0, Detail::kFull));
  known.Keep(Id(0), {Detail::kFull, listing});
  EXPECT_TRUE(Holds(0, Detail::kFull));
  known.Keep(Id(0), {Detail::kFull, ListingOf(1000)});
  EXPECT_FALSE(Holds(0)) << "too large, and the old one is not so any more";
}

// Where names may differ in case alone.
TEST_F(PreviewContract, AnotherSpellingIsGoneOnlyWhereItIsTheSameFile) {
  Make("in\\a.txt", "1");
  Make("in\\A.TXT", "12");
  const bool are_two = Tree().size() == 3;
  seen_.RemoveFile(At("in\\a.txt"));
  EXPECT_EQ(NamesOf(At("in")), are_two ? Names{"A.TXT"} : Names{});
  EXPECT_EQ(seen_.Look(At("in\\A.TXT")).has_value(), are_two);
  EXPECT_FALSE(seen_.Look(At("in\\a.txt")));
}

// A look, what happens to that or another name, and the removal of what was looked at.
TEST_F(PreviewContract, WhatWasLookedAtGoesAsItIsByThen) {
  const struct {
    const char* row;
    std::function<void(Folder& here, Folder& again)> between;
    Names left;
    bool fails = false;
  } kRows[] = {
      {"nothing", [](auto&, auto&) {}, {"b", "c"}},
      {"it is removed elsewhere", [](auto&, auto& f) { f.RemoveFile("A"); }, {"b", "c"}, true},
      {"it is removed here", [](auto& f, auto&) { f.RemoveFile("a"); }, {"b", "c"}, true},
      {"another is removed elsewhere", [](auto&, auto& f) { f.RemoveFile("b"); }, {"c"}},
      {"another is looked at", [](auto& f, auto&) { f.Look("b", Detail::kSize); }, {"b", "c"}},
      {"another is asked for", [](auto& f, auto&) { f.IdOf("b"); }, {"b", "c"}},
      {"it is renamed",
       [](auto& f, auto&) { f.Rename("a", "d", IfThere::kFail); },
       {"b", "c", "d"},
       true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.row);
    for (const char* name : {"a", "b", "c", "x"}) Make(std::string("in\\") + name, name);
    PreviewMachine preview(machine_);
    FileSystem& files = preview.machine().files;
    const auto here = files.OpenFolder(At("in")), again = files.OpenFolder(At("IN\\"));
    here->RemoveFile("x");
    EXPECT_TRUE(here->Look("a", Detail::kSize));
    row.between(*here, *again);
    const auto failure = KindOf([&] { here->RemoveFile("a"); });
    EXPECT_EQ(failure.has_value(), row.fails);
    EXPECT_EQ(failure.value_or(Error::Kind::kMissing), Error::Kind::kMissing);
    EXPECT_EQ(NamesIn(*files.OpenFolder(At("in"))), row.left);
  }
}

// The same call on the machine and on its preview: the same error, or none on both.
TEST_F(PreviewContract, MistakesFailAsTheyDoWithoutAPreview) {
  Make("file", "x");
  Make("folder\\inner", "x");
  test_->MakeFolderLink(At("junction"), At("folder"));
  const std::pair<const char*, std::function<void(FileSystem&)>> kRows[] = {
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
      {"make a folder in none", [&](FileSystem& f) { f.CreateFolder(At("no\\x")); }}};
  FileSystem& real = files_;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.first);
    const auto expected = KindOf([&] { row.second(real); });
    ASSERT_TRUE(expected);
    EXPECT_EQ(KindOf([&] { row.second(seen_); }), expected);
  }
  EXPECT_TRUE(KindOf([&] { seen_.RemoveFolder(At("file")); }));
  EXPECT_TRUE(KindOf([&] { seen_.RemoveFile(At("junction")); }));
  EXPECT_EQ(NamesOf(scratch_), (Names{"file", "folder", "junction"}));
}

TEST_F(PreviewContract, WhatWasWrittenMadeOrRenamedIsSeen) {
  Make("old.txt", "old");
  Make("moving.txt", "moved");
  seen_.WriteWholeFile(At("old.txt"), "new");
  seen_.CreateFolder(At("made"));
  seen_.WriteWholeFile(At("made\\Inner.txt"), "inner");
  seen_.Rename(At("moving.txt"), At("there.txt"));
  EXPECT_EQ(seen_.ReadWholeFile(At("OLD.txt")), "new");
  EXPECT_EQ(seen_.ReadWholeFile(At("there.txt")), "moved");
  EXPECT_EQ(NamesOf(At("made")), (Names{"Inner.txt"}));
  EXPECT_EQ(NamesOf(scratch_), (Names{"made", "old.txt", "there.txt"}));
  const auto file = seen_.Open(At("made\\log"), OpenMode::kReadAndCreate);
  file->Write(2, "ab");
  EXPECT_EQ(seen_.ReadWholeFile(At("made\\log")), std::string("\0\0ab", 4));
  EXPECT_EQ(seen_.Open(At("old.txt"), OpenMode::kWrite)->Size(), 0u);
  seen_.RemoveFile(At("there.txt"));
  for (const char* name : {"made\\Inner.txt", "made\\log"}) seen_.RemoveFile(At(name));
  seen_.RemoveFolder(At("made"));
  EXPECT_EQ(NamesOf(scratch_), Names{"old.txt"});
  EXPECT_EQ(Tree(), (Names{"moving.txt", "old.txt"}));
  EXPECT_EQ(files_.ReadWholeFile(At("old.txt")), "old");
}

Names SortedValueNames(RegistryKey& key) {
  Names names;
  for (uint32_t i = 0; const auto value = key.ValueAt(i); ++i) names.push_back(value->name);
  std::ranges::sort(names);
  return names;
}

TEST_F(PreviewContract, TheRegistryIsReadAsChangedAndStaysAsItIs) {
  for (const char* name : {"", "a", "b"}) test_->SetText(kUser, key_, name, "x");
  for (const char* sub : {"\\One\\Deep", "\\Two", "\\Three"})
    test_->SetText(kUser, key_ + sub, "v", "x");
  Registry& registry = preview_.machine().registry;
  const auto key = registry.Open(kUser, key_, kWrite);
  EXPECT_TRUE(key->DeleteValue("A"));
  EXPECT_FALSE(key->DeleteValue("a") || key->QueryValue("a"));
  key->SetValue("new", {kRegNone, "12"});
  EXPECT_EQ(key->QueryValue("NEW")->bytes, "12");
  EXPECT_EQ(SortedValueNames(*key), (Names{"", "b", "new"}));
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
  const auto made = registry.Create(kUser, key_ + "\\New\\Deep");
  made->SetValue("v", {kRegNone, "1"});
  EXPECT_EQ(key->SubKeyAt(0), "New");
  EXPECT_EQ(key->Open("new", kWrite)->SubKeyAt(0), "Deep");
  EXPECT_EQ(registry.Create(kUser, key_ + "\\NEW\\deep")->ValueAt(0)->name, "v");
  EXPECT_TRUE(key->DeleteSubKey("New\\Deep") && key->DeleteSubKey("New"));
  EXPECT_FALSE(key->SubKeyAt(0) || key->Open("New", kWrite));
  EXPECT_EQ(test_->ValueNames(kUser, key_), (Names{"", "a", "b"}));
  EXPECT_TRUE(test_->KeyExists(kUser, key_ + "\\One\\Deep"));
}

TEST_F(PreviewContract, ALinkOfTheRegistryIsNotDeleted) {
  test_->SetText(kUser, key_ + "\\link", "v", "1");
  UnstoredRegistry linked(machine_.registry, Fault::kLinked);
  const PreviewMachine preview(WithRegistry(machine_, linked));
  const auto key = preview.machine().registry.Open(kUser, key_, kWrite);
  EXPECT_EQ(KindOf([&] { key->DeleteSubKey("link"); }), Error::Kind::kDenied);
}

TEST_F(PreviewContract, IniFilesAndTheShellAreChangedOnPaperOnly) {
  const std::string text = "[A]\r\nk=1\r\n[B]\r\nk=2\r\n";
  Make("a.ini", text);
  Make("gone.txt", "12345");
  Make("bin.txt", "123");
  Machine machine = preview_.machine();
  machine_.shell.EmptyRecycleBin();
  files_.Recycle(At("bin.txt"));
  machine.profile.DeleteKey(At("a.ini"), "a", "K");
  machine.profile.DeleteSection(At("a.ini"), "B");
  machine.profile.DeleteSection(At("a.ini"), "B");
  EXPECT_EQ(seen_.ReadWholeFile(At("a.ini")), "[A]\r\n");
  machine.files.Recycle(At("gone.txt"));
  EXPECT_FALSE(seen_.Look(At("gone.txt")));
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 2u);
  EXPECT_EQ(machine.shell.QueryRecycleBin().bytes, 8u);
  machine.shell.EmptyRecycleBin();
  EXPECT_EQ(machine.shell.QueryRecycleBin().items, 0u);
  EXPECT_TRUE(KindOf([&] { machine.files.Recycle(At("gone.txt")); }));
  EXPECT_EQ(files_.ReadWholeFile(At("a.ini")), text);
  EXPECT_TRUE(test_->Exists(At("gone.txt")));
  EXPECT_EQ(machine_.shell.QueryRecycleBin().items, 1u);
  machine_.shell.EmptyRecycleBin();
  // What this machine cannot do at all is told, not listed.
  for (const auto& row : {std::pair(ShellFeature::kAddressHistory, &Shell::ClearAddressHistory),
                          std::pair(ShellFeature::kClipboard, &Shell::EmptyClipboard)}) {
    const auto never = KindOf([&] { machine_.shell.Require(row.first); });
    EXPECT_EQ(KindOf([&] { (machine.shell.*row.second)(); }), never);
  }
}

}  // namespace
}  // namespace quellix
