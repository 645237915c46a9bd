// Folders in which nothing is: which are found, in what order they go, and which stay.

#include "search/empty_folders.h"

#include "search/search_results.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr JunkKind kKind = JunkKind::kEmptyFolders;

struct Finds : ResultSink {
  void Add(ResultRow row) override { rows.push_back(std::move(row)); }
  std::vector<ResultRow> rows;
};

struct EmptyFoldersTest : RunFixture {
  // Those below the scratch folder, in the order they were found.
  Names Search(CleaningContext& of) {
    Finds finds;
    SearchJunk(of, kKind, finds);
    Names found;
    for (const ResultRow& row : finds.rows) {
      const std::string path = row.path + row.name;
      if (path.starts_with(scratch)) found.push_back(path.substr(scratch.size()));
    }
    return found;
  }
  Names Search() { return Search(context); }
  Removal Remove(const std::string& path) { return RemoveFind(context, path, kKind); }
};

TEST_F(EmptyFoldersTest, WhatHoldsNothingButSuchFoldersIsFoundTheDeepestFirst) {
  for (const char* name : {"a\\b\\c", "a\\d", "full\\empty", "full\\deep\\e", "\xC3\x84 x"})
    machine->MakeFolder(scratch + name);
  machine->MakeFile(scratch + "full\\file", "");
  const Names found = Search();
  Names sorted = found;
  std::ranges::sort(sorted);
  EXPECT_EQ(sorted, (Names{"a", "a\\b", "a\\b\\c", "a\\d", "full\\deep", "full\\deep\\e",
                           "full\\empty", "\xC3\x84 x"}));
  for (const std::string& path : found) {
    EXPECT_EQ(Remove(scratch + path).outcome, Removal::kRemoved) << path;
  }
  EXPECT_EQ(machine->Tree(scratch), (Names{"full\\", "full\\file"}));
  EXPECT_EQ(Search(), Names());
  EXPECT_EQ(engine.state().Entries->all.size(), found.size());
  EXPECT_EQ(engine.state().RunFilesDeleted, 0) << "no file has gone";
}

TEST_F(EmptyFoldersTest, WhatIsIgnoredKeptLinkedOrMarkedStaysWithTheFoldersAbove) {
  for (const char* name : {"plain\\x", "up\\MyTemplates\\x", "up2\\kept", "up3\\hidden",
                           "up4\\.git\\refs\\tags", "up5\\.svn"})
    machine->MakeFolder(scratch + name);
  machine->MakeFile(scratch + "target\\dear", "1");
  machine->MakeFolderLink(scratch + "up6\\link", scratch + "target");
  if (machine->Can(Ability::kRemoveLinks))  // elsewhere a dead one is not listed
    machine->MakeFolderLink(scratch + "up7\\dead", scratch + "nowhere");
  else
    machine->MakeFile(scratch + "up7\\file", "");
  ports.files.SetAttributes(scratch + "up3\\hidden", kHidden);
  WriteOwn("UDIFO.txt", "template\r\n");
  WriteOwn("keep.txt", scratch + "up2\\kept\\\r\n");
  Names found = Search();
  EXPECT_EQ(found, (Names{"plain\\x", "plain"}));
}

TEST_F(EmptyFoldersTest, WhatCannotBeListedIsNotCalledEmpty) {
  struct Closed : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    void Enumerate(Detail, const EntryVisitor&) override {
      throw Error(Error::Kind::kDenied, "Access is denied.");
    }
  };
  struct Shut : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override {
      if (names.ends_with("shut")) throw Error(Error::Kind::kDenied, "It is shut.");
      return ForwardingFolder::OpenFolder(names, use);
    }
  };
  for (const char* name : {"a\\closed", "b\\shut", "c\\open"}) machine->MakeFolder(scratch + name);
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    if (path == scratch + "a\\closed\\")
      return std::unique_ptr<Folder>(new Closed(std::move(folder)));
    return std::unique_ptr<Folder>(new Shut(std::move(folder)));
  });
  CleaningContext denied{WithFiles(ports, files), settings, engine.state(), view, mod_zip};
  EXPECT_EQ(Search(denied), (Names{"c\\open", "c"}));
}

TEST_F(EmptyFoldersTest, WhatWindowsProgramsAndUsersExpectIsNeitherFoundNorRemoved) {
  const std::string windows = ports.system.WindowsFolder();
  const std::string profile = ports.system.Environment("USERPROFILE").value();
  const Names places = {windows + "\\Qx empty",
                        ports.system.Environment("ProgramFiles").value() + "\\Qx empty",
                        profile + "\\Saved Games",
                        own + "Qx empty",
                        scratch + "x\\.git\\objects",
                        scratch + "bob\\AppData\\Local\\Temp",
                        "C:\\PerfLogs",
                        scratch + "bob\\AppData\\Roaming\\Microsoft\\Windows\\Templates"};
  for (const std::string& place : places) machine->MakeFolder(place);
  Finds finds;
  SearchJunk(context, kKind, finds);
  for (const std::string& place : places) {
    SCOPED_TRACE(place);
    for (const ResultRow& row : finds.rows) EXPECT_FALSE(EqualsNoCase(row.path + row.name, place));
    for (const std::string& spelled : {place, UpCase(std::string_view(place)), place + "\\"}) {
      const Removal removal = Remove(spelled);
      EXPECT_EQ(removal.outcome, Removal::kStays) << spelled;
      EXPECT_FALSE(removal.reason.empty());
    }
    EXPECT_TRUE(machine->Exists(place));
    if (!place.starts_with(profile)) ports.files.RemoveFolder(place);
  }
}

// As through a drive that stands for a folder: nothing in such a path tells what it is.
TEST_F(EmptyFoldersTest, FoldersOfListedUsersAreKnownWhateverTheirPath) {
  struct Substituted : ForwardingFileSystem {
    Substituted(FileSystem& files, std::string to)
        : ForwardingFileSystem(files), to_(std::move(to)) {}
    std::unique_ptr<Folder> OpenFolder(std::string_view path) override {
      return inner_.OpenFolder(path.starts_with("X:\\") ? to_ + std::string(path.substr(3))
                                                        : std::string(path));
    }
    std::string to_;
  };
  const std::string user =
      "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-5-21-7-7-7-1009";
  machine->SetText(kMachine, user, "ProfileImagePath", scratch + "bob");
  const std::tuple<const char*, const char*, bool> kRows[] = {
      {"AppData\\Local\\", "Temp", true},
      {"AppData\\Local\\", "Temp\\x", false},
      {"AppData\\Roaming\\Microsoft\\", "Windows", true},  // empty still
      {"AppData\\Roaming\\Microsoft\\", "Windows\\Templates", true},
      {"AppData\\Local\\Microsoft\\", "Windows\\Burn\\Burn", true},
      {"AppData\\Local\\Qx\\", "Windows\\Burn", false},
  };
  for (const auto& [at, name, is_expected] : kRows) {
    machine->MakeFolder(scratch + "bob\\" + at + name);
    Substituted files(ports.files, scratch + "bob\\" + at);
    CleaningContext seen{WithFiles(ports, files), settings, engine.state(), view, mod_zip};
    const Sentence why = EmptyFolderGuard(seen).WhyNot(std::string("X:\\") + name);
    EXPECT_EQ(Holds(why.english, "expect this folder") == true, is_expected) << at << name;
  }
  machine->RemoveRegistryTree(kMachine, user);
}

TEST_F(EmptyFoldersTest, WhatIsNotEmptyAtTheMomentOfRemovalStaysAndIsTold) {
  for (const char* name : {"filled", "gone", "linked", "parent\\child"})
    machine->MakeFolder(scratch + name);
  machine->MakeFile(scratch + "outside\\dear", "dear");
  EXPECT_EQ(Search().size(), 5u);
  machine->MakeFile(scratch + "filled\\new", "1");
  ports.files.RemoveFolder(scratch + "gone");
  ports.files.RemoveFolder(scratch + "linked");
  machine->MakeFolderLink(scratch + "linked", scratch + "outside");
  EXPECT_EQ(Remove(scratch + "gone").outcome, Removal::kVanished);
  for (const char* name : {"filled", "parent"}) {
    const Removal removal = Remove(scratch + name);
    EXPECT_EQ(removal.outcome, Removal::kStays) << name;
    EXPECT_EQ(removal.reason.english, "It is no longer empty.") << name;
  }
  EXPECT_EQ(Remove(scratch + "linked").outcome, Removal::kStays);
  EXPECT_EQ(Read(scratch + "outside\\dear"), "dear");
  EXPECT_TRUE(machine->Exists(scratch + "linked") && machine->Exists(scratch + "filled\\new"));
  EXPECT_TRUE(Holds(StayedNames(engine.state(), 9), scratch + "filled: It is no longer empty."));
}

TEST_F(EmptyFoldersTest, TheResultsDeleteTheDeepestFirstWhateverTheirOrder) {
  machine->MakeFolder(scratch + "a\\b\\c");
  SearchResults results(context);
  Finds finds;
  SearchJunk(context, kKind, finds);
  for (ResultRow& row : finds.rows) {
    if (row.path.starts_with(scratch) || row.path + row.name + "\\" == scratch)
      results.Add(std::move(row));
  }
  results.EndSearch();
  results.SetFilter(scratch + "a");
  results.Sort(ResultColumn::kPath);
  EXPECT_EQ(results.Text(0, ResultColumn::kName), "a") << "the folder above stands first";
  WriteSettings("[General]\r\nAsk=1\r\n");
  EXPECT_EQ(results.QuestionForAll(), "Delete 3 empty folders?");
  results.DeleteAll();
  EXPECT_FALSE(results.SomeFailed());
  EXPECT_FALSE(machine->Exists(scratch + "a"));
  EXPECT_TRUE(Holds(results.LogLines(), "Empty folders....Folders Deleted: 3\r\n"));
}

TEST_F(EmptyFoldersTest, AStopEndsTheSearchAndAPreviewChangesNothing) {
  for (int i = 0; i < 30; ++i) machine->MakeFolder(scratch + "f" + std::to_string(i));
  int left = 20;
  view.on_status = [&](const std::string& status) {
    if (status.starts_with("Scanning system... " + scratch) && --left == 0) engine.StopCleaning();
  };
  EXPECT_LT(Search().size(), 30u);
  view.on_status = nullptr;
  engine.state().AbortRequested = false;
  PreviewRun preview(ports, view);
  preview.RunByHand([&](CleaningContext& quiet) {
    EXPECT_EQ(RemoveFind(quiet, scratch + "f1", kKind).outcome, Removal::kRemoved);
    EXPECT_EQ(Search(quiet).size(), 29u) << "as if it were gone";
  });
  EXPECT_EQ(Search().size(), 30u);
}

}  // namespace
}  // namespace quellix
