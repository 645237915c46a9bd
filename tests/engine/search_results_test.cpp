#include "search/search_results.h"

#include "platform/filetime.h"
#include "search/search_options.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

using enum ResultColumn;

constexpr const char* kKey = "CleanUnnecessaryFiles";

struct SearchResultsTest : RunFixture {
  SearchResultsTest() : results(context) {
    WriteOwn("UNFI.txt", "1\x01*.qxj\r\n");
    machine->MakeFolder(scratch);
  }

  // Files of these names, found one after another.
  void Find(const Names& names, JunkKind kind = JunkKind::kUnnecessaryFiles) {
    for (const std::string& name : names) {
      machine->MakeFile(scratch + name, kind == JunkKind::kEmptyFiles ? "" : "12345");
      results.Add(Row(name, kind));
    }
    results.TakeNew();
  }
  ResultRow Row(const std::string& name, JunkKind kind = JunkKind::kUnnecessaryFiles) {
    ResultRow row;
    row.name = name;
    row.path = scratch;
    row.kind = kind;
    return row;
  }
  Names Column(ResultColumn column = kName) {
    Names texts;
    for (size_t row = 0; row < results.RowCount(); ++row)
      texts.push_back(results.Text(row, column));
    return texts;
  }
  void Tick(const Names& names, SearchResults& in) {
    for (size_t row = 0; row < in.RowCount(); ++row) {
      if (std::ranges::count(names, in.Text(row, kName)) > 0) in.SetTicked(row, true);
    }
  }
  Names Ticked(const SearchResults& in) {
    Names names;
    for (size_t row = 0; row < in.RowCount(); ++row) {
      if (in.IsTicked(row)) names.push_back(in.Text(row, kName));
    }
    return names;
  }

  SearchResults results;
};

const std::pair<ResultColumn, Names> kSorted[] = {
    {kName, {"A.bak", "b.TXT", "c", "\xC3\x84.txt"}},
    {kBytes, {"0", "9", "10", "5000000000"}},
    {kAttribute, {"", "A", "H", "R"}},
    {kPath, {"C:\\a\\", "C:\\A\\", "C:\\b\\", "C:\\c\\"}},
    {kFileType, {"", "BAK", "TXT", "TXT"}},
    {kCategory, {"Dead Shortcuts", "Empty Files", "Empty Files", "Unnecessary Files"}}};

TEST_F(SearchResultsTest, RowsAreSortedByWhatAColumnMeans) {
  const auto add = [this](const char* name, uint64_t bytes, int64_t time, uint32_t attributes,
                          const char* folder, JunkKind kind) {
    ResultRow row = Row(name, kind);
    row.bytes = bytes;
    row.last_write = time;
    row.attribute_bits = attributes;
    row.path = folder;
    results.Add(row);
  };
  add("b.TXT", 9, 150000 * kFiletimesADay, kHidden, "C:\\b\\", JunkKind::kUnnecessaryFiles);
  add("A.bak", 10, 140000 * kFiletimesADay, kReadOnly, "C:\\A\\", JunkKind::kEmptyFiles);
  add("\xC3\x84.txt", 5'000'000'000, 145000 * kFiletimesADay, kArchive, "C:\\c\\",
      JunkKind::kDeadShortcuts);
  add("c", 0, 1, 0, "C:\\a\\", JunkKind::kEmptyFiles);
  EXPECT_TRUE(results.TakeNew());
  EXPECT_EQ(Column(), (Names{"b.TXT", "A.bak", "\xC3\x84.txt", "c"})) << "as they came";
  for (const auto& [column, up] : kSorted) {
    results.Sort(kBytes);
    results.Sort(column == kBytes ? kName : column);
    if (column == kBytes) results.Sort(kBytes);
    EXPECT_EQ(Column(column), up);
    results.Sort(column);
    Names down = Column(column);
    EXPECT_NE(down, up) << "descending";
    if (column == kPath) continue;  // the order of two that are alike stays
    std::ranges::reverse(down);
    EXPECT_EQ(down, up);
  }
  results.Sort(kDateTime);
  EXPECT_EQ(Column(), (Names{"c", "A.bak", "\xC3\x84.txt", "b.TXT"})) << "by time";
  EXPECT_EQ(results.Text(3, kDateTime), FormatFileTime(ports.system, 150000 * kFiletimesADay));
  add("new", 1, 147000 * kFiletimesADay, 0, "C:\\n\\", JunkKind::kEmptyFiles);
  EXPECT_EQ(results.RowCount(), 4u);
  EXPECT_TRUE(results.TakeNew() && !results.TakeNew());
  EXPECT_EQ(Column(), (Names{"c", "A.bak", "\xC3\x84.txt", "new", "b.TXT"})) << "in its place";
}

TEST_F(SearchResultsTest, AFilterHidesRowsFromAllCommands) {
  Find({"Alpha.qxj", "beta.qxj", "sub.qxj"});
  results.TickAll(true);
  results.SetFilter("ALPH");
  EXPECT_EQ(Column(), Names{"Alpha.qxj"});
  EXPECT_EQ(results.WhyEmpty(), "Searching...");
  EXPECT_EQ(results.CountLine(), "Total Files: 3") << "hidden ones included";
  Find({"gamma.qxj", "alphabet.qxj"});
  EXPECT_EQ(Column(), (Names{"Alpha.qxj", "alphabet.qxj"}));
  results.EndSearch();
  results.DeleteAll();
  EXPECT_EQ(machine->Tree(scratch), (Names{"beta.qxj", "gamma.qxj", "sub.qxj"}));
  results.SetFilter("");
  EXPECT_EQ(Column(), (Names{"beta.qxj", "sub.qxj", "gamma.qxj"})) << "in the order of the finds";
  EXPECT_EQ(Ticked(results), (Names{"beta.qxj", "sub.qxj"}));
  results.SetFilter(scratch + "b");
  EXPECT_EQ(Column(), Names{"beta.qxj"}) << "folder and name together";
}

TEST_F(SearchResultsTest, FailedRowsStayUntickedAndAreTriedAgainWhenTicked) {
  Find({"a.qxj", "kept.qxj", "locked.qxj", "gone.qxj"});
  Find({"empty.x", "filled.x"}, JunkKind::kEmptyFiles);
  EXPECT_EQ(results.CountLine(), "Total Files: 6");
  results.DeleteAll();
  EXPECT_EQ(results.RowCount(), 6u) << "not while the search runs";
  results.EndSearch();
  results.DeleteTicked();
  EXPECT_EQ(results.CountLine(), "Files Found: 6") << "nothing was ticked";
  ports.files.RemoveFile(scratch + "gone.qxj");
  machine->MakeFile(scratch + "filled.x", "work");
  Tick({"a.qxj", "locked.qxj", "gone.qxj", "empty.x", "filled.x"}, results);
  {
    const auto lock = machine->LockFile(scratch + "locked.qxj");
    results.DeleteTicked();
  }
  EXPECT_EQ(machine->Tree(scratch), (Names{"filled.x", "kept.qxj", "locked.qxj"}));
  EXPECT_EQ(Column(), (Names{"kept.qxj", "locked.qxj", "filled.x"}));
  EXPECT_EQ(Ticked(results), Names());
  EXPECT_EQ(results.CountLine(), "Files Found: 3");
  EXPECT_TRUE(results.SomeFailed() && engine.state().SomeFilesLocked);
  EXPECT_FALSE(results.HasFailed(0));
  ASSERT_TRUE(results.HasFailed(1) && results.HasFailed(2));
  EXPECT_NE(results.FailureReason(1), "");
  EXPECT_EQ(results.FailureReason(2), "It is no longer empty.");
  const std::string lines =
      "Unnecessary files....Files Deleted: 1 Space Gained: 5 Bytes\r\n"
      "Empty (zero-byte) files....Files Deleted: 1 Space Gained: 0 Bytes\r\n"
      "Dead (shortcut) links....Files Deleted: 0 Space Gained: 0 Bytes\r\n";
  EXPECT_EQ(results.LogLines(), lines);
  results.DeleteTicked();
  EXPECT_EQ(results.LogLines(), lines) << "nothing is ticked";
  EXPECT_FALSE(results.SomeFailed());
  Tick({"locked.qxj"}, results);
  results.DeleteTicked();
  EXPECT_EQ(Column(), (Names{"kept.qxj", "filled.x"}));
  EXPECT_EQ(machine->Tree(scratch), (Names{"filled.x", "kept.qxj"}));
  EXPECT_EQ(engine.state().RunFilesDeleted, 3);
}

TEST_F(SearchResultsTest, ChosenRowsGoWithoutTheTickedOnesAndTheQuestionCountsThem) {
  Find({"a.qxj", "b.qxj", "c.qxj", "d.qxj"});
  results.DeleteRows({0});
  EXPECT_EQ(results.RowCount(), 4u) << "not while the search runs";
  results.EndSearch();
  Tick({"a.qxj"}, results);
  EXPECT_EQ(results.QuestionForTicked(), "") << "without the setting";
  WriteOwn("Settings.ini", "[General]\r\nAsk=1\r\n");
  EXPECT_EQ(results.QuestionForRows({}), "");
  const std::pair<int16_t, std::string_view> kModes[] = {{kDelete, "Delete # for good?"},
                                                         {kRecycle, "Recycle #?"},
                                                         {kWipe, "Wipe # for good?"},
                                                         {kBackUp, "Remove # after a backup?"}};
  for (const auto& [mode, question] : kModes) {
    engine.state().RemovalMode = mode;
    std::string told(question);
    told.replace(told.find('#'), 1, "1 file (0 Bytes)");
    EXPECT_EQ(results.QuestionForTicked(), told);
  }
  engine.state().RemovalMode = kDelete;
  EXPECT_TRUE(results.QuestionForRows({1, 3}).starts_with("Delete 2 files ("));
  EXPECT_TRUE(results.QuestionForAll().starts_with("Delete 4 files ("));
  results.DeleteRows({1, 3});
  EXPECT_EQ(machine->Tree(scratch), (Names{"a.qxj", "c.qxj"}));
  EXPECT_EQ(Column(), (Names{"a.qxj", "c.qxj"}));
  EXPECT_EQ(Ticked(results), Names{"a.qxj"});
}

TEST_F(SearchResultsTest, ADeletionMayBeStoppedAndTheRowsSortedMeanwhile) {
  Find({"a.qxj", "b.qxj", "c.qxj", "d.qxj"});
  results.EndSearch();
  results.TickAll(true);
  view.on_pause = [this] {  // what is unticked before its turn stays
    for (size_t row = 0; row < results.RowCount(); ++row) {
      if (results.Text(row, kName) == "b.qxj") results.SetTicked(row, false);
    }
  };
  view.on_status = [this](const std::string& status) {
    if (!status.starts_with("Deleting file: ")) return;
    EXPECT_TRUE(results.deleting());
    results.Sort(kName);
    results.Sort(kName);
    results.DeleteAll();  // does nothing inside another
    if (status.ends_with("c.qxj")) results.Abort();
  };
  results.DeleteTicked();
  EXPECT_EQ(machine->Tree(scratch), (Names{"b.qxj", "d.qxj"})) << "c was in work already";
  EXPECT_EQ(Column(), (Names{"d.qxj", "b.qxj"}));
  EXPECT_EQ(Ticked(results), Names{"d.qxj"}) << "what was not reached keeps its tick";
  EXPECT_FALSE(results.SomeFailed() || engine.state().AbortRequested);
}

TEST_F(SearchResultsTest, ARunWaitsForItsUserAndThenLogsWhatWasDeleted) {
  for (const char* name : {"a.qxj", "b.qxj"}) machine->MakeFile(scratch + name, "12345");
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  RunFixture::Tick({kKey, "CleanRunMRU"});
  view.on_results = [this](SearchResults& found) {
    EXPECT_FALSE(found.searching());
    EXPECT_EQ(found.CountLine(), "Total Files: 2");
    Tick({"a.qxj"}, found);
    found.DeleteTicked();
  };
  engine.RunCleaning();
  ASSERT_TRUE(view.report.has_value());
  EXPECT_EQ(view.report->log,
            "Windows run history... Files Deleted: 0\r\n"
            "Windows run history: nothing of this kind was found.\r\n"
            "Unnecessary files....Files Deleted: 1 Space Gained: 5 Bytes\r\n"
            "Empty (zero-byte) files....Files Deleted: 0 Space Gained: 0 Bytes\r\n"
            "Dead (shortcut) links....Files Deleted: 0 Space Gained: 0 Bytes\r\n\r\n" +
                std::string(67, '-') + "\r\nFiles Deleted:  1   Space Gained:  5 Bytes");
  EXPECT_EQ(machine->Tree(scratch), Names{"b.qxj"});
  RunFixture::Tick({kKey, "CleanShortcuts"});
  view.on_results = [](SearchResults& found) { EXPECT_EQ(found.CountLine(), "Total Files: 1"); };
  engine.RunCleaning();
  EXPECT_EQ(view.results_opened, 2) << "one window for both items";
  EXPECT_EQ(machine->Tree(scratch), Names{"b.qxj"}) << "nothing goes by itself";
}

TEST_F(SearchResultsTest, WhereNobodyCanChooseNothingIsSearchedAndTheLogSaysSo) {
  machine->MakeFile(scratch + "a.qxj", "12345");
  RunFixture::Tick({kKey, "CleanEmptyFiles", "CleanShortcuts"});
  engine.RunCleaning();
  ASSERT_TRUE(view.report.has_value());
  EXPECT_TRUE(Holds(view.report->log, "Unnecessary files... Not searched: the finds cannot"));
  EXPECT_EQ(view.criticals, Names());
  engine.state().Hidden = true;
  view.on_results = [](SearchResults&) { ADD_FAILURE() << "shown in a hidden run"; };
  view.results_opened = 0;
  engine.RunCleaning();
  EXPECT_EQ(view.results_opened, 0);
  for (const char* caption :
       {"Unnecessary files...", "Empty (zero-byte) files...", "Dead (shortcut) links..."}) {
    EXPECT_TRUE(
        Holds(engine.state().RunLog, std::string(caption) + " Not searched: nobody is there"));
  }
  EXPECT_EQ(machine->Tree(scratch), Names{"a.qxj"});
}

TEST_F(SearchResultsTest, AnAbortedSearchLeavesItsFindsToReview) {
  WriteSettings("[General]\r\nDelMethod=B\r\n");
  for (const char* name : {"a.qxj", "b.qxj"}) machine->MakeFile(scratch + name, "12345");
  RunFixture::Tick({kKey, "CleanRunMRU"});
  machine->SetText(kUser, kRunMruKey, "a", "calc\\1");
  view.on_pause = [this] {
    if (view.results != nullptr && view.results->searching() && view.results->TakeNew()) {
      view.results->Abort();
    }
  };
  view.on_results = [](SearchResults& found) {
    EXPECT_EQ(found.RowCount(), 1u);
    found.DeleteAll();
    EXPECT_EQ(found.RowCount(), 0u);
  };
  engine.RunCleaning();
  EXPECT_TRUE(engine.state().AbortRequested && !view.report.has_value());
  EXPECT_EQ(view.statuses.back(), "Aborted by user");
  EXPECT_EQ(machine->Tree(scratch).size(), 1u);
  EXPECT_NE(machine->ValueNames(kUser, kRunMruKey), Names()) << "the run went on";
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  EXPECT_TRUE(engine.state().RunLog.starts_with("Unnecessary files....Files Deleted: 1 "));
  EXPECT_EQ(machine->Tree(own + "Backup").size(), 1u) << "it has a backup";
}

}  // namespace
}  // namespace quellix
