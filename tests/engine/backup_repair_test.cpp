#include <algorithm>

#include "support/backup_fixture.h"

namespace quellix {
namespace {

class BackupRepairTest : public BackupFixture {
 protected:
  std::string MakeArchive() {
    machine->MakeFile(tree + "1", "");
    machine->MakeFile(tree + "2", "deflated deflated deflated deflated");
    machine->MakeFile(tree + "3", "not");
    CleanInOrder({"1", "2", "3"});
    return safe + OnlyArchive();
  }
  // Where each entry ends.
  std::vector<uint64_t> Ends(const std::string& archive) {
    const std::string whole = Read(archive);
    std::vector<uint64_t> ends;
    for (size_t at = 0; (at = whole.find(kLocalSignature, at + 1)) != std::string::npos;) {
      ends.push_back(at);
    }
    ends.push_back(whole.find("PK\1\2"));
    return ends;
  }
};

TEST_F(BackupRepairTest, CutOffAnywhereEveryCompleteEntryIsKept) {
  const std::string archive = MakeArchive();
  const std::string whole = Read(archive);
  const std::map<std::string, std::string> all = Content(archive);
  const std::vector<uint64_t> ends = Ends(archive);
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    ports.files.WriteWholeFile(archive, whole.substr(0, size));
    const auto complete = static_cast<size_t>(
        std::count_if(ends.begin(), ends.end(), [&](uint64_t end) { return end <= size; }));
    const std::optional<Repair> repair = RepairOf(NamePart(archive));
    ASSERT_TRUE(repair);
    ASSERT_EQ(repair->kept, complete);
    ASSERT_EQ(Describe(NamePart(archive)).entries, complete);
    for (const auto& [name, bytes] : Content(archive)) ASSERT_EQ(bytes, all.at(name));
    ASSERT_FALSE(RepairOf(NamePart(archive)));  // it is whole now
    if (complete == ends.size()) {
      ASSERT_EQ(Read(archive).substr(0, ends.back()), whole.substr(0, ends.back()));
    }
  }
}

TEST_F(BackupRepairTest, DamageOfEveryKind) {
  const std::string archive = MakeArchive();
  const std::string whole = Read(archive);
  const std::vector<uint64_t> ends = Ends(archive);
  const std::string entries = whole.substr(0, ends.back());
  std::string broken = entries, unfinished = entries, other_sum = entries;
  broken[ends[1] - 3] ^= 0x20;
  other_sum[ends[0] + 14] ^= 1;
  for (size_t i = 14; i < 26; ++i) unfinished[ends[1] + i] = 0;  // never filled in
  unfinished[ends[1] + 8] = kDeflated;
  struct Row {
    const char* what;
    std::string bytes;
    uint64_t entries, damaged;
    bool repaired;
    const char* problem;
  };
  const Row rows[] = {
      {"garbage behind the end", whole + "garbage", 3, 0, false, ""},
      {"garbage behind the entries", entries + std::string(5000, '\xEE'), 3, 0, true, ""},
      {"a bad byte in the middle", broken, 2, 1, true, ""},
      {"data of another checksum", other_sum, 2, 1, true, ""},
      {"an entry that was being written", unfinished, 2, 0, true, ""},
      {"the directory of another archive", entries + whole.substr(ends.back() + 7), 3, 0, true, ""},
      {"no archive", "MZ this is a program", 0, 0, false, "is not a zip archive."},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    ports.files.WriteWholeFile(archive, row.bytes);
    const BackupInfo info = Describe(NamePart(archive));
    EXPECT_EQ(info.entries, row.entries);
    EXPECT_EQ(!info.repaired.empty(), row.repaired);
    EXPECT_EQ(info.repaired.find(", 1 damaged") != std::string::npos, row.damaged == 1);
    EXPECT_TRUE(info.problem.ends_with(row.problem)) << info.problem;
    if (*row.problem != 0) {
      EXPECT_EQ(Read(archive), row.bytes);
    }
  }
}

TEST_F(BackupRepairTest, HostileEntriesFailCleanly) {
  const std::string archive = MakeArchive();
  const std::string whole = Read(archive);
  struct Row {
    const char* what;
    size_t in_header, in_record;
    std::string bytes;
    const char* problem;
  };
  const Row rows[] = {
      {"encrypted", 6, 8, std::string("\x01\x08", 2), "is encrypted, which is not supported."},
      {"packed strangely", 8, 10, std::string("\x0E\0", 2),
       "is packed in a way that is not supported."},
      {"a bomb", 22, 24, std::string("\0\0\0\x7F", 4), "is damaged."},
      {"smaller than its data", 22, 24, std::string("\1\0\0\0", 4), "is damaged."},
  };
  const std::string target = Stored(tree + "2");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    std::string bytes = whole;
    const size_t header = bytes.find(target) - kLocalHeaderSize, record = bytes.rfind(target) - 46;
    bytes.replace(header + row.in_header, row.bytes.size(), row.bytes);
    bytes.replace(record + row.in_record, row.bytes.size(), row.bytes);
    ports.files.WriteWholeFile(archive, bytes);
    NoPrompts prompts;
    const RestoreResult result =
        backups.Restore(NamePart(archive), {{}, "", OverwriteMode::kAlways}, prompts, nullptr);
    EXPECT_EQ(result.restored, 2u);
    ASSERT_EQ(result.problems.size(), 1u);
    EXPECT_TRUE(result.problems[0].ends_with(row.problem)) << result.problems[0];
    EXPECT_EQ(machine->Tree(tree), (std::vector<std::string>{"1", "3"}));
  }
}

// Where the archive cannot be written it is read all the same, as far as it goes.
TEST_F(BackupRepairTest, AReadOnlyArchiveThatIsIncompleteIsRead) {
  const std::string archive = MakeArchive();
  const std::string cut = Read(archive).substr(0, Ends(archive)[1] + 3);
  ports.files.WriteWholeFile(archive, cut);
  ports.files.SetAttributes(archive, kReadOnly);
  const BackupInfo info = Describe(NamePart(archive));
  EXPECT_EQ(info.problem, "");
  EXPECT_EQ(info.entries, 2u);
  // Whoever may write whatever the attribute says repairs it.
  const bool stored = Read(archive) != cut;
  EXPECT_EQ(info.repaired.find("cannot be repaired where it is") == std::string::npos, stored);
  ScriptedPrompts prompts;
  EXPECT_EQ(backups.Restore(NamePart(archive), {}, prompts, nullptr).restored, 2u);
  EXPECT_EQ(Read(tree + "2"), "deflated deflated deflated deflated");
  backups.Delete(NamePart(archive));
  EXPECT_TRUE(backups.List().empty());
}

// A repair tells how far it is; stopped, it leaves the archive for the next one.
TEST_F(BackupRepairTest, AStoppedRepairChangesNothing) {
  const std::string archive = MakeArchive();
  const std::string cut = Read(archive).substr(0, Ends(archive)[2] + 3);
  ports.files.WriteWholeFile(archive, cut);
  std::vector<uint64_t> steps;
  for (const size_t stop_at : {1, 3, 99}) {
    SCOPED_TRACE(stop_at);
    steps.clear();
    backups.OnPause([&](const RestoreProgress& progress) {
      EXPECT_EQ(progress.path, NamePart(archive));
      EXPECT_EQ(progress.total, cut.size());
      steps.push_back(progress.done);
      return steps.size() == stop_at;
    });
    const BackupInfo info = backups.List().at(0);
    const bool stopped = steps.size() == stop_at;
    EXPECT_EQ(info.problem, stopped ? "The repair was stopped; the archive is as it was." : "");
    EXPECT_EQ(Read(archive) == cut, stopped);
  }
  EXPECT_GE(steps.size(), 3u);
  EXPECT_TRUE(std::ranges::is_sorted(steps));
  EXPECT_LT(steps.front(), Ends(archive)[0]);
  EXPECT_LE(steps.back(), cut.size());
  EXPECT_EQ(backups.List().at(0).entries, 3u);
}

}  // namespace
}  // namespace quellix
