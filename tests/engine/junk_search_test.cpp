#include "search/junk_search.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "search/search_options.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"
#include "support/shortcut_bytes.h"

namespace quellix {
namespace {

// 2020-01-15 12:00 UTC: that very day in most time zones.
constexpr int64_t kNoon = 132235632000000000;
constexpr int64_t kDay = 864000000000;
constexpr uint32_t kNothing = kNormal;

class Names : public ResultSink {
 public:
  void Add(ResultRow row) override { rows.push_back(std::move(row)); }
  std::vector<ResultRow> rows;
};

// A folder that may not be listed.
class Closed : public ForwardingFolder {
 public:
  using ForwardingFolder::ForwardingFolder;
  void Enumerate(Detail, const EntryVisitor&) override {
    throw Error(Error::Kind::kDenied, "Access is denied.");
  }
};

class JunkSearchTest : public RunFixture {
 protected:
  void WriteList(const std::string& name, const std::string& text) {
    ports.files.WriteWholeFile(ports.program_folder + "\\" + name, text);
  }
  // The drive of Windows behind the first line.
  void WriteSearch(const std::string& rest) {
    WriteList("srch.txt", " " + scratch.substr(0, 2) + " Hard drive\r\n" + rest);
  }
  // Sorted names of the finds below the scratch folder, with their place in it.
  std::vector<std::string> Search(JunkKind kind) {
    Names names;
    SearchJunk(context, kind, names);
    rows.clear();
    std::vector<std::string> found;
    for (const ResultRow& row : names.rows) {
      if (!row.path.starts_with(scratch)) continue;
      found.push_back(row.path.substr(scratch.size()) + row.name);
      rows.push_back(row);
    }
    std::ranges::sort(found);
    return found;
  }
  void Make(const std::string& name, const std::string& bytes, uint32_t attributes = kNothing,
            int64_t time = kNoon) {
    machine->MakeFile(scratch + name, bytes);
    machine->SetLastWrite(scratch + name, time);
    if (attributes != kNothing) ports.files.SetAttributes(scratch + name, attributes);
  }

  std::vector<ResultRow> rows;
};

using List = std::vector<std::string>;

TEST_F(JunkSearchTest, EmptyFilesPassTheFiltersOfTheOptions) {
  Make("hidden.x", "", kHidden);
  Make("read.x", "", kReadOnly);
  Make("system.x", "", kSystem);
  Make("before.x", "", kNothing, kNoon - kDay);
  Make("first.x", "");
  Make("second.x", "", kNothing, kNoon + kDay);
  Make("after.x", "", kNothing, kNoon + 2 * kDay);
  Make("full.x", "1");
  const List plain = {"after.x", "before.x", "first.x", "second.x"};
  const List all = {"after.x", "before.x", "first.x", "hidden.x", "read.x", "second.x", "system.x"};
  struct Row {
    const char *name, *lines;
    List want;
  };
  const std::string size_ignored = "1 1\r\n0 x x\r\n1 True False False 99\r\n";
  const std::string many = "1 1\r\n0" + std::string(100'000, ' ') + "x\r\n" +
                           std::string(1'000'000, '9') + "\r\n" + std::string(30'000, '\n');
  const Row rows_of_options[] = {
      {"attributes off", "1 1\r\n0 1/1/2020 1/1/2020\r\n0 False True False 1\r\n0 0 0\r\n", all},
      {"read-only kept out",
       "1 1\r\n0\r\n0\r\n1 0 0",
       {"after.x", "before.x", "first.x", "hidden.x", "second.x", "system.x"}},
      {"check value 2 is set", "1 1\r\n0\r\n0\r\n2 2 2", plain},
      {"the first day is left out, the second kept",
       "1 1\r\n1 1/15/2020 1/16/2020\r\n0\r\n1 1 1",
       {"second.x"}},
      {"dates with times",
       "1 1\r\n1 1/14/2020 5:00:00 PM 1/16/2020 11:00:00 AM\r\n",
       {"first.x", "second.x"}},
      {"dates of another locale", "1 1\r\n1 14. 1. 2020 2020-01-15\r\n", {"first.x"}},
      {"the size has no effect", size_ignored.c_str(), plain},
      {"short file", "", plain},
      {"very long lines and many", many.c_str(), plain},
      {"unknown fields and garbage", "x\r\n\x01\r\n? ? ?\r\nfoo\r\nz z z z z\r\nmore\r\n", plain},
  };
  for (const Row& row : rows_of_options) {
    SCOPED_TRACE(row.name);
    WriteSearch(row.lines);
    EXPECT_EQ(Search(JunkKind::kEmptyFiles), row.want);
  }
  ports.files.RemoveFile(ports.program_folder + "\\srch.txt");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), plain);
  for (const char* dates : {"1 1\r\n1\r\n", "1 1\r\n1 13/13/2020 1/1/2020\r\n"}) {
    WriteSearch(dates);
    EXPECT_THROW(Search(JunkKind::kEmptyFiles), Error) << dates;
  }
  for (const char* drives : {"", "Q: Hard drive", " C: Hard drive nothing", "nonsense\r\n"}) {
    WriteList("srch.txt", drives);
    EXPECT_EQ(Search(JunkKind::kEmptyFiles), std::string(drives).starts_with(" C") ? plain : List())
        << drives;
  }
}

TEST_F(JunkSearchTest, OnlyTheLowHalfOfASizeMakesAFileEmpty) {
  const struct {
    const char* name;
    uint64_t size;
    bool is_found;
  } sizes[] = {{"4 GiB", 4ull << 30, true},
               {"8 GiB", 8ull << 30, true},
               {"4 GiB and 1", (4ull << 30) + 1, false},
               {"2 GiB", 2ull << 30, false}};
  for (const auto& row : sizes) {
    SCOPED_TRACE(row.name);
    ports.files.Open(scratch + "large", OpenMode::kReadAndCreate)->Resize(row.size);
    EXPECT_EQ(Search(JunkKind::kEmptyFiles), row.is_found ? List{"large"} : List());
    if (row.is_found) {
      EXPECT_EQ(rows.at(0).bytes, row.size);
    }
    ports.files.RemoveFile(scratch + "large");
  }
}

TEST_F(JunkSearchTest, AFolderThatCannotBeEnteredIsPassedOver) {
  for (const char* name : {"a\\x", "closed\\x", "z\\x"}) Make(name, "");
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> folder) {
    if (path != scratch + "closed\\") return folder;
    return std::unique_ptr<Folder>(new Closed(std::move(folder)));
  });
  CleaningContext denied{WithFiles(ports, files), settings, engine.state(), view, mod_zip};
  Names names;
  SearchJunk(denied, JunkKind::kEmptyFiles, names);
  List found;
  for (const ResultRow& row : names.rows) {
    if (row.path.starts_with(scratch)) found.push_back(row.path.substr(scratch.size()));
  }
  std::ranges::sort(found);
  EXPECT_EQ(found, (List{"a\\", "z\\"}));
}

TEST_F(JunkSearchTest, IgnoredFilesExtensionsAndFoldersAreLeftOut) {
  for (const char* name : {"keep.me", "a.sys", "a", "MyTemplates\\x", "sub\\KEEP.ME", "sub\\x"}) {
    Make(name, "");
  }
  machine->MakeFolderLink(scratch + "link", scratch + "sub");
  WriteList("DefIFI.txt", "keep.ME\r\n");
  WriteList("IE.txt", "SYS\r\n");
  WriteList("UDIFO.txt", "template\r\n\r\n");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), (List{"a", "sub\\x"}));
  WriteList("IFI.txt", "a\r\n");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), (List{"keep.me", "sub\\KEEP.ME", "sub\\x"}));
}

TEST_F(JunkSearchTest, UnnecessaryFilesFitATickedPatternAndMakeWholeRows) {
  Make("Error.Log", "12345", kReadOnly);
  Make("sub\\old.BAK", "1");
  Make("data7", "1");
  Make("hidden.log", "1", kHidden);
  Make("keep.txt", "1");
  WriteList("UNFI.txt",
            "1\x01*.log\x01Logs\r\n\r\n0\x01*.txt\x01Texts\r\n1\x01*.b[a-c]k\r\n1\r\n"
            "1\x01[\r\n1\x01\r\n1\x01"
            "data#\r\n");
  WriteSearch("1 1\r\n0\r\n0\r\n0 1 1\r\n");
  EXPECT_EQ(Search(JunkKind::kUnnecessaryFiles), (List{"Error.Log", "data7", "sub\\old.BAK"}));
  const auto row = std::ranges::find(rows, "Error.Log", &ResultRow::name);
  ASSERT_NE(row, rows.end());
  EXPECT_EQ(row->bytes, 5u);
  EXPECT_EQ(row->date_time, FormatFileTime(ports.system, kNoon));
  EXPECT_TRUE(row->date_time.starts_with("01/15/2020 ")) << row->date_time;
  EXPECT_TRUE(row->attributes.starts_with("R")) << row->attributes;
  EXPECT_EQ(row->path, scratch);
  EXPECT_EQ(row->file_type, "LOG");
  EXPECT_EQ(row->category, "Unnecessary Files");
  EXPECT_EQ(std::ranges::find(rows, "data7", &ResultRow::name)->file_type, "");
  for (const char* nothing_ticked : {"", "0\x01*.log\r\n"}) {
    WriteList("UNFI.txt", nothing_ticked);
    EXPECT_THROW(Search(JunkKind::kUnnecessaryFiles), NotAvailable);
  }
}

TEST_F(JunkSearchTest, DeadShortcutsByTargetAndWorkingFolder) {
  machine->MakeFile(scratch + "there.exe", "1");
  const std::string gone = scratch + "gone.exe", there = scratch + "there.exe";
  const std::string folder = std::string(WithoutBackslash(scratch));
  Make("dead.lnk", ShortcutBytes(gone, folder), kHidden);
  Make("no folder.lnk", ShortcutBytes(gone, ""));
  Make("alive.lnk", ShortcutBytes(there, folder));
  Make("to folder.lnk", ShortcutBytes(folder, folder));
  Make("same and gone.lnk", ShortcutBytes(gone, gone));
  Make("itself.lnk", ShortcutBytes(scratch + "itself.lnk", folder));
  Make("floppy.lnk", ShortcutBytes("a:\\", folder));
  Make("empty.lnk", "");
  Make("random.lnk", std::string(5000, '\x4C'));
  Make("cut.lnk", ShortcutBytes(gone, folder).substr(0, 90));
  Make("large.lnk", "");
  ports.files.Open(scratch + "large.lnk", OpenMode::kReadAndCreate)->Resize(100 << 20);
  Make("items only.lnk", ShortcutBytes("", folder, "\x1F\x50"));
  Make("dead.txt", ShortcutBytes(gone, folder));
  WriteSearch("1 1\r\n1\r\n0\r\n1 1 1\r\n");
  EXPECT_EQ(Search(JunkKind::kDeadShortcuts), (List{"dead.lnk", "same and gone.lnk"}));
  EXPECT_EQ(rows.at(0).category, "Dead Shortcuts");
  WriteSearch("1 2\r\n");
  EXPECT_EQ(Search(JunkKind::kDeadShortcuts),
            (List{"dead.lnk", "no folder.lnk", "same and gone.lnk"}));
}

TEST_F(JunkSearchTest, AStopKeepsWhatWasFoundAndSaysSo) {
  for (int i = 0; i < 50; ++i) Make("f" + std::to_string(i), "");
  class Stopper : public ResultSink {
   public:
    explicit Stopper(Engine& engine) : engine_(engine) {}
    void Add(ResultRow) override {
      ++count;
      engine_.StopCleaning();
    }
    int count = 0;

   private:
    Engine& engine_;
  } stopper(engine);
  engine.FindJunk(JunkKind::kEmptyFiles, stopper);
  EXPECT_EQ(stopper.count, 1);
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
}

TEST_F(JunkSearchTest, FindsAreRemovedAndVanishedOnesAreNoFailure) {
  for (const char* name : {"a.x", "b.x", "locked.x"}) Make(name, "");
  const auto lock = machine->LockFile(scratch + "locked.x");
  Search(JunkKind::kEmptyFiles);
  ASSERT_EQ(rows.size(), 3u);
  ports.files.RemoveFile(scratch + "b.x");
  for (const ResultRow& row : rows) {
    const Removal::Outcome want = row.name == "locked.x" ? Removal::kStays
                                  : row.name == "b.x"    ? Removal::kVanished
                                                         : Removal::kRemoved;
    const Removal removal = engine.RemoveFound(row);
    EXPECT_EQ(removal.outcome, want) << row.name;
    EXPECT_EQ(removal.reason.empty(), want != Removal::kStays) << removal.reason;
  }
  EXPECT_EQ(machine->Tree(scratch), List{"locked.x"});
}

}  // namespace
}  // namespace quellix
