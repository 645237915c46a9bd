#include "run/removal.h"

#include "platform/wiping_note.h"
#include "run/working_folder.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

class RemovalTest : public RunFixture {
 protected:
  RemovalTest() : state(engine.state()) {}

  bool Remove(const std::string& path, int16_t mode) {
    state.RemovalMode = mode;
    return RemoveFile(context, path, Claim::kOwnList);
  }

  RunState& state;
};

TEST_F(RemovalTest, EveryModeRemovesReadOnlyFilesAndFailsOnLockedAndMissingOnes) {
  uint64_t stayed = 0;
  state.BackupFolder = own + "Backup\\";
  for (const int16_t mode : {kDelete, kRecycle, kWipe, kBackUp}) {
    SCOPED_TRACE(mode);
    ports.shell.EmptyRecycleBin();
    state.SomeFilesLocked = false;
    const std::string file = scratch + "read only \xE2\x82\xAC.txt";
    machine->MakeFile(file, "data");
    ports.files.SetAttributes(file, kReadOnly | kHidden | kSystem);
    EXPECT_TRUE(Remove(file, mode));
    EXPECT_FALSE(machine->Exists(file) || state.SomeFilesLocked);
    EXPECT_EQ(ports.shell.QueryRecycleBin().bytes, mode == kRecycle ? 4u : 0u);

    EXPECT_FALSE(Remove(file, mode));  // it is gone
    EXPECT_TRUE(state.SomeFilesLocked);

    const std::string locked = scratch + "locked.txt";
    machine->MakeFile(locked, "kept");
    state.SomeFilesLocked = false;
    {
      const auto lock = machine->LockFile(locked);
      EXPECT_FALSE(Remove(locked, mode));
    }
    EXPECT_TRUE(state.SomeFilesLocked);
    EXPECT_EQ(state.StayedCount, stayed += 2);
    EXPECT_EQ(Read(locked), "kept");
    EXPECT_TRUE(Remove(locked, kDelete));
  }
  machine->MakeFile(scratch + "odd.txt", "");
  EXPECT_FALSE(Remove(scratch + "odd.txt", 7));
  EXPECT_EQ(state.RunFilesDeleted, 8);
  EXPECT_TRUE(machine->Exists(scratch + "odd.txt"));
}

TEST_F(RemovalTest, WipingOverwritesOnceByteByByteOrByStep) {
  const std::tuple<const char*, uint64_t, uint8_t> kRows[] = {{"zeros, bytes", 1, 0},
                                                              {"random, bytes", 1, 2},
                                                              {"zeros, steps", 4, 0},
                                                              {"random, steps", 4, 1}};
  for (const auto& [name, step, extra] : kRows) {
    SCOPED_TRACE(name);
    const std::string file = scratch + "secret.bin";
    const std::string secret(10, '\xEE');
    machine->MakeFile(file, secret);
    state.WipeStep = step;
    state.ExtraSecurity = extra;
    state.AbortRequested = false;
    PlacesOf(context);  // pauses as well
    // Stop at a pause in the middle: what was overwritten stays so, the rest and the file too.
    int pauses = 0;
    view.on_pause = [&] { state.AbortRequested = ++pauses > 5; };
    EXPECT_FALSE(Remove(file, kWipe) && step == 1);
    view.on_pause = nullptr;
    if (step == 1) {
      const std::string left = Read(file);
      EXPECT_EQ(left.substr(5), secret.substr(5));
      for (const char c : left.substr(0, 5)) EXPECT_TRUE(extra != 0 ? c >= 0 && c <= 100 : c == 0);
      state.AbortRequested = false;
      EXPECT_TRUE(Remove(file, kWipe));
    }
    EXPECT_FALSE(machine->Exists(file));
  }
}

// A folder that tells the names and bytes that files had when they went, and may keep them shut.
struct WatchedFolder : ForwardingFolder {
  struct Log {
    std::string name, bytes;
    bool is_shut = false;
  };
  WatchedFolder(std::unique_ptr<Folder> folder, Log& watched)
      : ForwardingFolder(std::move(folder)), log(watched) {}
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    if (log.is_shut) throw Error(Error::Kind::kInUse, "It is shut.");
    return ForwardingFolder::Open(name, mode);
  }
  void RemoveFile(std::string_view name) override {
    log.name = name;
    log.bytes.resize(64);
    log.bytes.resize(Open(name, OpenMode::kRead)->Read(0, log.bytes));
    ForwardingFolder::RemoveFile(name);
  }
  Log& log;
};

TEST_F(RemovalTest, WipedFilesAreOverwrittenWholeAndRenamedOnlyOnRequest) {
  WatchedFolder::Log log;
  ForwardingFiles files(ports.files, [&log](const std::string&, std::unique_ptr<Folder> folder) {
    return std::make_unique<WatchedFolder>(std::move(folder), log);
  });
  const Machine watched = WithFiles(ports, files);
  CleaningContext watching{watched, settings, state, view, mod_zip};
  const std::string secret = "the secret", zeros(secret.size(), '\0');
  const struct {
    int16_t mode;
    uint8_t rename, extra;
    uint64_t step;
    bool renamed, is_shut = false;
  } kRows[] = {{kWipe, 0, 0, 1, false},   {kWipe, 1, 0, 3, true},
               {kWipe, 2, 1, 3, false},   {kWipe, 1, 1, 65536, true},
               {kDelete, 1, 0, 1, false}, {kWipe, 1, 0, 1, false, true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    log = {.name = "", .bytes = "", .is_shut = row.is_shut};
    machine->MakeFile(scratch + "name", secret);
    ports.files.SetAttributes(scratch + "name", kReadOnly);
    state.RemovalMode = row.mode;
    state.RenameBeforeDelete = row.rename;
    state.ExtraSecurity = row.extra;
    state.WipeStep = row.step;
    EXPECT_EQ(RemoveFile(watching, scratch + "name", Claim::kOwnList), !row.is_shut);
    if (row.is_shut) {
      EXPECT_TRUE(ports.files.Look(scratch + "name")->attributes & kReadOnly);
      continue;
    }
    EXPECT_EQ(log.name.find_first_not_of("0123456789.e-+") == std::string::npos, row.renamed);
    EXPECT_EQ(log.name == "name", !row.renamed) << log.name;
    EXPECT_EQ(log.bytes == secret, row.mode == kDelete);
    EXPECT_EQ(log.bytes == zeros, row.mode == kWipe && row.extra == 0);
    EXPECT_EQ(log.bytes.find_first_of("rst") != std::string::npos, row.mode == kDelete);
    EXPECT_TRUE(machine->Tree(scratch).empty());
  }
}

TEST_F(RemovalTest, OfAFileWithFurtherNamesOnlyTheNameGoes) {
  machine->MakeFile(scratch + "one", "data");
  machine->MakeHardLink(scratch + "two", scratch + "one");
  EXPECT_TRUE(Remove(scratch + "one", kWipe));
  EXPECT_EQ(Read(scratch + "two"), "data");
  EXPECT_TRUE(Holds(state.RunLog, "one has further names"));
  EXPECT_EQ(state.Entries->all.back().way, Way::kDeleted) << "it was not wiped";
}

TEST_F(RemovalTest, PendingFilesAreShownCountedAndStopped) {
  for (const char* name : {"a", "b", "c", "d"}) machine->MakeFile(scratch + name, "12345");
  const FileList list =
      Pend({scratch + "a", scratch + "gone", scratch + "b", scratch + "c", scratch + "d"});
  StopWhenStatusBegins("Deleting file: " + scratch + "c");
  state.RemovalMode = kDelete;
  RemovePendingFiles(context, list);
  EXPECT_EQ(machine->Tree(scratch), Names{"d"});
  EXPECT_EQ(state.RunFilesDeleted, 3);
  EXPECT_EQ(state.FilesDeleted, 3);
  EXPECT_EQ(state.RunSpaceGained, 15);
  EXPECT_TRUE(state.SomeFilesLocked);
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
  EXPECT_EQ(view.bars.back(), (ProgressBar{.visible = false, .max = 5, .value = 0}));
}

TEST_F(RemovalTest, AListShowsHowFarItIsByItsBytesWhereTheyTakeTheTime) {
  for (const int16_t mode : {kDelete, kWipe, kBackUp}) {
    SCOPED_TRACE(mode);
    machine->MakeFile(scratch + "a", "0123456789");
    machine->MakeFile(scratch + "b", std::string(20000, 'b'));
    state.RemovalMode = mode;
    state.WipeStep = 4096;
    view.files.clear();
    RemovePendingFiles(context, Pend({scratch + "a", scratch + "b", scratch + "gone"}));
    ASSERT_FALSE(view.files.empty());
    const double all = mode == kDelete ? 0 : 20010;
    EXPECT_EQ(view.files.front(), (FileProgress{.total = 3, .all_bytes = all}));
    EXPECT_EQ(view.files.back(), FileProgress{});
    const FileProgress& last = view.files[view.files.size() - 2];
    EXPECT_EQ(last.done, 3u);
    const auto is_within = [](const FileProgress& shown) {
      return shown.done == 1 && shown.bytes > 10 && shown.bytes < 20010;
    };
    EXPECT_EQ(std::ranges::any_of(view.files, is_within), mode == kWipe);
  }
}

// So many that a machine may take several at a time; the odd ones stand between them.
class ManyFilesTest : public RemovalTest {
 protected:
  // Deletes what stands in a fresh folder; returns its path.
  std::string RemoveMany(FileSystem& files) {
    const std::string tree = scratch + std::to_string(++trees_) + "\\";
    FileList list;
    for (int i = 0; i < 80 * 5; ++i) {
      const std::string path = tree + std::to_string(i / 5) + "\\f" + std::to_string(i % 5);
      machine->MakeFile(path, std::string(static_cast<size_t>(i % 5), 'x'));
      list.PendingFiles.Append(path);
      if (i % 5 == 0 && i / 5 - 40 < static_cast<int>(std::size(kOdd)) && i >= 200) {
        list.PendingFiles.Append(tree + kOdd[i / 5 - 40]);
      }
    }
    MakeFiles(tree, "40\\kept.txt 41\\Case");
    machine->MakeFolder(tree + "42\\folder");
    machine->MakeFolderLink(tree + "43\\link", scratch + "outside");
    WriteOwn("keep.txt", tree + "40\\kept.txt\r\n");
    state.Keep = nullptr;
    state.Places = nullptr;
    list.folder = files.OpenFolder(tree);
    list.folder_path = tree;
    state.Entries = std::make_shared<RunEntries>();
    RemovePendingFiles(context, list);
    return tree;
  }
  // Of the run: fate, path, size and reason of each.
  Names Told(const std::string& tree) const {
    Names told;
    for (const RunEntry& entry : state.Entries->all) {
      std::string line = std::to_string(static_cast<int>(entry.fate)) + " " + entry.place + " " +
                         std::to_string(entry.bytes) + " " + entry.note;
      for (size_t at; (at = line.find(tree)) != std::string::npos;) line.erase(at, tree.size());
      told.push_back(line);
    }
    return told;
  }

  static constexpr const char* kOdd[] = {"40\\kept.txt", "41\\cASE", "42\\folder", "43\\link",
                                         "44\\gone"};
  int trees_ = 0;
};

TEST_F(ManyFilesTest, GoAndAreToldAsIfOneByOne) {
  machine->MakeFile(scratch + "outside\\dear.txt", "dear");
  ForwardingFiles one_by_one(ports.files, [](auto&, auto folder) { return folder; });
  state.RemovalMode = kDelete;
  const std::string together = RemoveMany(ports.files);
  const Names told = Told(together), left = machine->Tree(together);
  EXPECT_EQ(told.size(), 405u);
  EXPECT_EQ(std::ranges::count(left, "40\\kept.txt"), 1);
  EXPECT_EQ(std::ranges::count(left, "40\\f1") + std::ranges::count(left, "79\\f4"), 0);
  const std::string alone = RemoveMany(one_by_one);
  EXPECT_EQ(told, Told(alone));
  EXPECT_EQ(left, machine->Tree(alone));
  EXPECT_EQ(Read(scratch + "outside\\dear.txt"), "dear");
}

TEST_F(ManyFilesTest, AfterAStopNothingFurtherGoesAndWhatWentIsTold) {
  machine->MakeFolder(scratch + "outside");
  StopWhenStatusBegins("Deleting file: " + scratch + "1\\70\\f3");
  state.RemovalMode = kDelete;
  const Names left = machine->Tree(RemoveMany(ports.files));
  EXPECT_EQ(std::ranges::count(left, "70\\f4") + std::ranges::count(left, "79\\f4"), 2);
  const auto is_one = [](const std::string& path) { return path[path.size() - 2] == 'f'; };
  const auto gone = std::ranges::count_if(state.Entries->all, [&](const RunEntry& entry) {
    return entry.fate == Fate::kRemoved && is_one(entry.place);
  });
  EXPECT_GT(gone, 0);
  EXPECT_EQ(gone + std::ranges::count_if(left, is_one), 400);
}

TEST_F(RemovalTest, FoldersGoChildrenFirstWhicheverWayTheListWasFilled) {
  const Names parents_first = {"p\\", "p\\q\\", "p\\q\\r\\", "s\\"};
  for (const bool reversed : {false, true}) {
    machine->MakeFolder(scratch + "p\\q\\r");
    machine->MakeFile(scratch + "s\\kept", "");
    Names order = parents_first;
    if (reversed) std::reverse(order.begin(), order.end());
    FileList list{ports.files.OpenFolder(scratch), scratch, {}, {}};
    for (const std::string& folder : order) list.PendingFolders.Append(scratch, folder);
    RemovePendingFolders(context, list);
    EXPECT_EQ(machine->Tree(scratch), (Names{"s\\", "s\\kept"}));
  }
}

TEST_F(RemovalTest, LinksAreCollectedButNeverEntered) {
  const std::string outside = scratch + "outside\\";
  const std::string cleaned = scratch + "cleaned\\";
  machine->MakeFile(outside + "dear.txt", "dear");
  machine->MakeFile(cleaned + "deep\\junk.txt", "junk");
  machine->MakeFolderLink(cleaned + "deep\\link", outside);
  machine->MakeFolderLink(cleaned + "nowhere", scratch + "missing");
  const bool file_link = machine->MakeFileLink(cleaned + "file link", outside + "dear.txt");
  for (const int16_t mode : {kWipe, kDelete}) {
    state.RemovalMode = mode;
    const FileList list = Collect(cleaned);
    RemovePendingFiles(context, list);
    RemovePendingFolders(context, list);
    if (machine->Can(Ability::kRemoveLinks)) {
      EXPECT_EQ(machine->Tree(cleaned), Names());
    }
    EXPECT_EQ(Read(outside + "dear.txt"), "dear") << file_link;
    EXPECT_EQ(StayedNames(state, 9), "") << "a link is not gone into and so does not fail";
  }
}

// What wiping leaves readable is said wherever something was written over.
TEST_F(RemovalTest, AnOverwrittenFileThatStaysIsToldAsWipedOnesAre) {
  struct Holding : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    void RemoveFile(std::string_view) override { throw Error(Error::Kind::kInUse, "It is held."); }
  };
  ForwardingFiles files(
      ports.files, [](auto&, auto folder) { return std::make_unique<Holding>(std::move(folder)); });
  CleaningContext held{WithFiles(ports, files), settings, state, view, mod_zip};
  machine->MakeFile(scratch + "held", "secret");
  for (const int16_t mode : {kDelete, kWipe}) {
    state.RemovalMode = mode;
    EXPECT_FALSE(RemoveFile(held, scratch + "held", Claim::kOwnList));
    EXPECT_EQ(WipedLine(state).empty(), mode == kDelete || WipingNote().empty()) << mode;
  }
  EXPECT_NE(Read(scratch + "held"), "secret");
}

TEST_F(RemovalTest, AFolderThatCannotBeOpenedIsTold) {
  struct Closing : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    std::unique_ptr<Folder> OpenFolder(std::string_view names, OpenFor use) override {
      if (names.ends_with("closed")) throw Error(Error::Kind::kDenied, "It is closed.");
      return ForwardingFolder::OpenFolder(names, use);
    }
  };
  for (const char* name : {"closed\\a", "open\\b"}) machine->MakeFile(scratch + name, "1");
  const auto list = CollectFiles(
      context, std::make_shared<Closing>(ports.files.OpenFolder(scratch)), scratch, "*.*");
  EXPECT_EQ(list.PendingFiles.size(), 1u);
  EXPECT_NE(StayedNames(state, 9).find(scratch + "closed\\: It is closed."), std::string::npos);
}

TEST_F(RemovalTest, AFolderSwappedForALinkAfterTheScanChangesNothingOutside) {
  const std::string outside = scratch + "outside\\";
  machine->MakeFile(outside + "dear.txt", "dear");
  machine->MakeFile(scratch + "cleaned\\sub\\dear.txt", "junk");
  const FileList list = Collect(scratch + "cleaned\\");
  ports.files.Rename(scratch + "cleaned\\sub", scratch + "cleaned\\moved");
  machine->MakeFolderLink(scratch + "cleaned\\sub", outside);
  for (const int16_t mode : {kDelete, kWipe, kRecycle}) {
    state.RemovalMode = mode;
    RemovePendingFiles(context, list);
    EXPECT_EQ(Read(outside + "dear.txt"), "dear") << mode;
  }
  EXPECT_TRUE(state.SomeFilesLocked);
  EXPECT_EQ(state.RunFilesDeleted, 0);
}

TEST_F(RemovalTest, NamesOfEveryKindAreScannedAndRemoved) {
  const std::string names = "hard\xC2\xA0name \xF0\x9F\x98\x80 %TEMP% a;b,c=d";
  MakeFiles(scratch + "x\\", names);
  std::string deep = scratch + "x\\";
  while (deep.size() < 3500) deep += std::string(200, 'd') + "\\";
  machine->MakeFile(deep + "bottom.tmp", "1");
  state.RemovalMode = kDelete;
  const FileList list = Collect(scratch);
  EXPECT_EQ(list.PendingFiles.size(), 5u);
  RemovePendingFiles(context, list);
  RemovePendingFolders(context, list);
  EXPECT_EQ(machine->Tree(scratch), Names());
  EXPECT_FALSE(state.SomeFilesLocked);
}

TEST_F(RemovalTest, ScanningStopsAtOnceAndKeepsWhatItFound) {
  for (const char* name : {"1\\a", "2\\b", "3\\c"}) machine->MakeFile(scratch + name, "");
  int folders = 0;
  view.on_status = [&](const std::string& status) {
    if (status.starts_with("Scanning system... ") && ++folders == 2) engine.StopCleaning();
  };
  EXPECT_EQ(Collect(scratch).PendingFiles.size(), 1u);
  EXPECT_EQ(view.statuses.back(), "Aborted by User");
  state.AbortRequested = false;
  view.on_status = nullptr;
  const FileList list = Collect(scratch, "A*");
  EXPECT_EQ(list.PendingFiles.size(), 1u);
  EXPECT_EQ(list.PendingFolders.size(), 3u);
}

}  // namespace
}  // namespace quellix
