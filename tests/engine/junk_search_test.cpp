#include "search/junk_search.h"

#include "platform/filetime.h"
#include "search/search_options.h"
#include "support/run_fixture.h"
#include "support/shortcut_bytes.h"

namespace quellix {
namespace {

// 2020-01-15 12:00 UTC: that very day in most time zones.
constexpr int64_t kNoon = 132235632000000000;
constexpr uint32_t kNothing = kNormal;

struct Finds : ResultSink {
  void Add(ResultRow row) override { rows.push_back(std::move(row)); }
  std::vector<ResultRow> rows;
};

struct JunkSearchTest : RunFixture {
  // The drive of Windows behind the first line.
  void WriteSearch(const std::string& rest) {
    WriteOwn("srch.txt", " " + scratch.substr(0, 2) + " Hard drive\r\n" + rest);
  }
  // Sorted names of the finds below the scratch folder, with their place in it.
  Names Search(JunkKind kind) {
    Finds names;
    SearchJunk(context, kind, names);
    rows.clear();
    Names found;
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

TEST_F(JunkSearchTest, EmptyFilesPassTheFiltersOfTheOptions) {
  for (const auto& [name, bits] :
       {std::pair("hidden.x", kHidden), {"read.x", kReadOnly}, {"system.x", kSystem}})
    Make(name, "", bits);
  for (const auto& [name, day] :
       {std::pair("before.x", -1), {"first.x", 0}, {"second.x", 1}, {"after.x", 2}})
    Make(name, "", kNothing, kNoon + day * kFiletimesADay);
  Make("full.x", "1");
  const std::string plain = "after.x before.x first.x second.x";
  const std::string many = "1 1\r\n0" + std::string(100'000, ' ') + "x\r\n" +
                           std::string(1'000'000, '9') + "\r\n" + std::string(30'000, '\n');
  const std::tuple<const char*, std::string, std::string> kRows[] = {
      {"attributes off", "1 1\r\n0 1/1/2020 1/1/2020\r\n0 False True False 1\r\n0 0 0\r\n",
       "after.x before.x first.x hidden.x read.x second.x system.x"},
      {"read-only kept out", "1 1\r\n0\r\n0\r\n1 0 0",
       "after.x before.x first.x hidden.x second.x system.x"},
      {"check value 2 is set", "1 1\r\n0\r\n0\r\n2 2 2", plain},
      {"the first day is left out, the second kept", "1 1\r\n1 1/15/2020 1/16/2020\r\n0\r\n1 1 1",
       "second.x"},
      {"dates with times", "1 1\r\n1 1/14/2020 5:00:00 PM 1/16/2020 11:00:00 AM\r\n",
       "first.x second.x"},
      {"dates of another locale", "1 1\r\n1 14. 1. 2020 2020-01-15\r\n", "first.x"},
      {"the size has no effect", "1 1\r\n0 x x\r\n1 True False False 99\r\n", plain},
      {"short file", "", plain},
      {"very long lines and many", many, plain},
      {"unknown fields and garbage", "x\r\n\x01\r\n? ? ?\r\nfoo\r\nz z z z z\r\nmore\r\n", plain}};
  for (const auto& [name, lines, want] : kRows) {
    SCOPED_TRACE(name);
    WriteSearch(lines);
    EXPECT_EQ(Joined(Search(JunkKind::kEmptyFiles)), want);
  }
}

TEST_F(JunkSearchTest, TheDrivesOfTheFirstLineAreSearched) {
  Make("empty.x", "");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), Names{"empty.x"}) << "without a file";
  for (const char* dates : {"1 1\r\n1\r\n", "1 1\r\n1 13/13/2020 1/1/2020\r\n"}) {
    WriteSearch(dates);
    EXPECT_THROW(Search(JunkKind::kEmptyFiles), Error) << dates;
  }
  for (const std::string drives : {"", "Q: Hard drive", " C: Hard drive nothing", "nonsense\r\n"}) {
    WriteOwn("srch.txt", drives);
    EXPECT_EQ(Search(JunkKind::kEmptyFiles), drives.starts_with(" C") ? Names{"empty.x"} : Names())
        << drives;
  }
}

TEST_F(JunkSearchTest, OnlyTheLowHalfOfASizeMakesAFileEmpty) {
  const std::tuple<const char*, uint64_t, bool> sizes[] = {{"4 GiB", 4ull << 30, true},
                                                           {"8 GiB", 8ull << 30, true},
                                                           {"4 GiB and 1", (4ull << 30) + 1, false},
                                                           {"2 GiB", 2ull << 30, false}};
  for (const auto& [name, size, is_found] : sizes) {
    SCOPED_TRACE(name);
    ports.files.Open(scratch + "large", OpenMode::kReadAndCreate)->Resize(size);
    EXPECT_EQ(Search(JunkKind::kEmptyFiles), is_found ? Names{"large"} : Names());
    if (is_found) {
      EXPECT_EQ(rows.at(0).bytes, size);
    }
    ports.files.RemoveFile(scratch + "large");
  }
}

TEST_F(JunkSearchTest, IgnoredFilesExtensionsAndFoldersAreLeftOut) {
  for (const char* name : {"keep.me", "a.sys", "a", "MyTemplates\\x", "sub\\KEEP.ME", "sub\\x"})
    Make(name, "");
  machine->MakeFolderLink(scratch + "link", scratch + "sub");
  WriteOwn("DefIFI.txt", "keep.ME\r\n");
  WriteOwn("IE.txt", "SYS\r\n");
  WriteOwn("UDIFO.txt", "template\r\n\r\n");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), (Names{"a", "sub\\x"}));
  WriteOwn("IFI.txt", "a\r\n");
  EXPECT_EQ(Search(JunkKind::kEmptyFiles), (Names{"keep.me", "sub\\KEEP.ME", "sub\\x"}));
}

TEST_F(JunkSearchTest, UnnecessaryFilesFitATickedPatternAndMakeWholeRows) {
  Make("Error.Log", "12345", kReadOnly);
  Make("sub\\old.BAK", "1");
  Make("data7", "1");
  Make("hidden.log", "1", kHidden);
  Make("keep.txt", "1");
  WriteOwn("UNFI.txt",
           "1\x01*.log\x01Logs\r\n\r\n0\x01*.txt\x01Texts\r\n1\x01*.b[a-c]k\r\n1\r\n"
           "1\001[\r\n1\001\r\n1\001data#\r\n");
  WriteSearch("1 1\r\n0\r\n0\r\n0 1 1\r\n");
  EXPECT_EQ(Search(JunkKind::kUnnecessaryFiles), (Names{"Error.Log", "data7", "sub\\old.BAK"}));
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
    WriteOwn("UNFI.txt", nothing_ticked);
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
  EXPECT_EQ(Search(JunkKind::kDeadShortcuts), (Names{"dead.lnk", "same and gone.lnk"}));
  EXPECT_EQ(rows.at(0).category, "Dead Shortcuts");
  WriteSearch("1 2\r\n");
  EXPECT_EQ(Search(JunkKind::kDeadShortcuts),
            (Names{"dead.lnk", "no folder.lnk", "same and gone.lnk"}));
}

}  // namespace
}  // namespace quellix
