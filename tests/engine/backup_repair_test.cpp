#include "contract/error_kind.h"
#include "support/backup_fixture.h"

namespace quellix {
namespace {

struct BackupRepairTest : BackupFixture {
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
    for (size_t at = 0; (at = whole.find(kLocalSignature, at + 1)) != std::string::npos;)
      ends.push_back(at);
    ends.push_back(whole.find("PK\1\2"));
    return ends;
  }
};

TEST_F(BackupRepairTest, CutOffAnywhereEveryCompleteEntryIsReadAndKept) {
  const std::string archive = MakeArchive();
  const std::string whole = Read(archive);
  const std::map<std::string, std::string> all = Content(archive);
  const std::vector<uint64_t> ends = Ends(archive);
  const size_t step = machine->Can(Ability::kManyRounds) ? 1 : 11;
  for (size_t size = 0; size < whole.size(); size += step) {
    SCOPED_TRACE(size);
    ports.files.WriteWholeFile(archive, whole.substr(0, size));
    const auto complete = static_cast<size_t>(
        std::count_if(ends.begin(), ends.end(), [&](uint64_t end) { return end <= size; }));
    const std::optional<Repair> found = FoundIn(NamePart(archive));
    ASSERT_TRUE(found);
    ASSERT_EQ(found->kept, complete);
    ASSERT_EQ(Describe(NamePart(archive)).entries, complete);
    for (const auto& [name, bytes] : Content(archive)) ASSERT_EQ(bytes, all.at(name));
    ASSERT_EQ(Read(archive), whole.substr(0, size)) << "reading writes nothing";
    const std::optional<Repair> repair = RepairArchive(ports.files, archive);
    ASSERT_TRUE(repair);
    ASSERT_EQ(repair->kept, complete);
    ASSERT_FALSE(FoundIn(NamePart(archive)));
    ASSERT_EQ(Content(archive).size(), complete);
    ASSERT_EQ(Archives().size(), 1u);
    ASSERT_FALSE(RepairArchive(ports.files, archive)) << "it is whole now";
    if (complete == ends.size()) {
      ASSERT_EQ(Read(archive).substr(0, ends.back()), whole.substr(0, ends.back()));
    }
  }
}

struct Damage {
  const char* what;
  std::string bytes;
  uint64_t entries, damaged, unverified;
  bool incomplete;
  const char* problem = "";
};

// Of an archive, by where its entries end.
std::vector<Damage> Damages(const std::string& whole, const std::vector<uint64_t>& ends) {
  const std::string entries = whole.substr(0, ends.back());
  const auto with = [&](const std::string& bytes, uint64_t at, const std::string& change) {
    return std::string(bytes).replace(static_cast<size_t>(at), change.size(), change);
  };
  const std::string unknown("\x0E\0", 2), locked("\x01\x08", 2), comment(0xFFFF, 'c');
  std::string unfinished = with(entries, ends[1] + 14, std::string(12, '\0'));
  unfinished = with(unfinished, ends[1] + 8, std::string("\x08\0", 2));
  return {{"garbage behind the end", whole + "garbage", 3, 0, 0, false},
          {"a comment of the greatest length",
           whole.substr(0, whole.size() - 2) + "\xFF\xFF" + comment, 3, 0, 0, false},
          {"garbage behind the entries", entries + std::string(5000, '\xEE'), 3, 0, 0, true},
          {"a bad byte in the data", with(entries, ends[1] - 3, "?"), 2, 1, 0, true},
          {"another checksum", with(entries, ends[0] + 14, "?"), 2, 1, 0, true},
          {"a bad header in the middle", with(entries, ends[0], "?"), 2, 1, 0, true},
          {"a bad header at the start", with(entries, 0, "?"), 2, 1, 0, true},
          {"a length beyond the end", with(entries, ends[0] + 20, "\1"), 2, 1, 0, true},
          {"a length that skips the next", with(entries, ends[0] + 18, "\x7F"), 2, 1, 0, true},
          {"a long name", with(entries, ends[0] + 26, "\xFF"), 2, 1, 0, true},
          {"an entry that was being written", unfinished, 2, 0, 0, true},
          {"another archive's directory", entries + whole.substr(ends.back() + 7), 3, 0, 0, true},
          {"an encrypted entry", with(entries, ends[0] + 6, locked), 3, 0, 1, true},
          {"an entry packed otherwise", with(entries, ends[0] + 8, unknown), 2, 0, 1, true},
          {"no archive", "MZ this is a program", 0, 0, 0, false, "is not a zip archive."}};
}

TEST_F(BackupRepairTest, DamageOfEveryKindIsReadAsItIsAndRepairedOnRequest) {
  const std::string archive = MakeArchive(), whole = Read(archive);
  for (const Damage& row : Damages(whole, Ends(archive))) {
    SCOPED_TRACE(row.what);
    ports.files.WriteWholeFile(archive, row.bytes);
    const BackupInfo info = Describe(NamePart(archive));
    EXPECT_EQ(info.entries, row.entries);
    EXPECT_EQ(!info.incomplete.empty(), row.incomplete) << info.incomplete;
    EXPECT_EQ(info.incomplete.find(", 1 damaged") != std::string::npos, row.damaged == 1);
    EXPECT_TRUE(info.problem.ends_with(row.problem)) << info.problem;
    EXPECT_EQ(Read(archive), row.bytes) << "reading writes nothing";

    std::string repaired;
    const std::string said = SaidBy([&] { repaired = backups.Repair(NamePart(archive)); });
    EXPECT_EQ(said.empty(), row.unverified == 0 && *row.problem == 0) << said;
    EXPECT_TRUE(Holds(said, row.unverified == 0 ? "" : "1 encrypted or packed"));
    if (said.empty()) {
      EXPECT_EQ(repaired.empty(), !row.incomplete) << repaired;
      EXPECT_EQ(Describe(NamePart(archive)).incomplete, "");
      EXPECT_EQ(Content(archive).size(), row.entries);
    }
    EXPECT_EQ(Read(archive) == row.bytes, repaired.empty());
    EXPECT_EQ(Archives().size(), 1u);
  }
}

// Nor is anything but an archive of ours touched, or one in use.
TEST_F(BackupRepairTest, OnlyOurOwnArchivesAreRepaired) {
  const std::string archive = MakeArchive();
  const std::string cut = Read(archive).substr(0, Ends(archive)[1] + 3);
  for (const char* name : {"foreign.zip", "C_foreign.zip", "C_1.zip", "1_141120269057.zip",
                           "C_141120269057x.zip", "C_141120269057.ZIP.zip"}) {
    SCOPED_TRACE(name);
    machine->MakeFile(safe + name, cut);
    EXPECT_NE(Describe(name).incomplete, "");
    EXPECT_THROW(backups.Repair(name), Error);
    EXPECT_EQ(Read(safe + name), cut);
  }
  EXPECT_THROW(backups.Repair("C_1411202690571.zip"), Error);
  EXPECT_FALSE(machine->Exists(safe + "C_1411202690571.zip"));
  ports.files.WriteWholeFile(archive, cut);
  {
    const auto held = ports.files.Open(archive, OpenMode::kReadAndCreate);
    EXPECT_THROW(backups.Repair(NamePart(archive)), Error);
  }
  EXPECT_EQ(Read(archive), cut);
}

TEST_F(BackupRepairTest, HostileEntriesFailCleanly) {
  const std::string archive = MakeArchive();
  const std::string whole = Read(archive);
  const std::tuple<const char*, size_t, size_t, std::string, const char*> rows[] = {
      {"encrypted", 6, 8, std::string("\x01\x08", 2), "is encrypted, which is not supported."},
      {"packed strangely", 8, 10, std::string("\x0E\0", 2),
       "is packed in a way that is not supported."},
      {"a bomb", 22, 24, std::string("\0\0\0\x7F", 4), "is damaged."},
      {"smaller than its data", 22, 24, std::string("\1\0\0\0", 4), "is damaged."}};
  const std::string target = Stored(tree + "2");
  for (const auto& [what, in_header, in_record, change, problem] : rows) {
    SCOPED_TRACE(what);
    std::string bytes = whole;
    const size_t header = bytes.find(target) - kLocalHeaderSize, record = bytes.rfind(target) - 46;
    bytes.replace(header + in_header, change.size(), change);
    bytes.replace(record + in_record, change.size(), change);
    ports.files.WriteWholeFile(archive, bytes);
    NoPrompts prompts;
    const RestoreResult result =
        backups.Restore(NamePart(archive), {{}, "", OverwriteMode::kAlways}, prompts);
    EXPECT_EQ(result.restored, 2u);
    ASSERT_EQ(result.problems.size(), 1u);
    EXPECT_TRUE(result.problems[0].ends_with(problem)) << result.problems[0];
    EXPECT_EQ(machine->Tree(tree), (Names{"1", "3"}));
  }
}

TEST_F(BackupRepairTest, AReadOnlyArchiveThatIsIncompleteIsRestored) {
  const std::string archive = MakeArchive();
  ports.files.WriteWholeFile(archive, Read(archive).substr(0, Ends(archive)[1] + 3));
  ports.files.SetAttributes(archive, kReadOnly);
  EXPECT_EQ(Describe(NamePart(archive)).entries, 2u);
  ScriptedPrompts prompts;
  EXPECT_EQ(backups.Restore(NamePart(archive), {}, prompts).restored, 2u);
  EXPECT_EQ(Read(tree + "2"), "deflated deflated deflated deflated");
  backups.Delete(NamePart(archive));
  EXPECT_TRUE(backups.List().empty());
}

// Reading and repairing tell how far they are; stopped, they leave the archive for the next time.
TEST_F(BackupRepairTest, AStoppedRepairChangesNothing) {
  const std::string archive = MakeArchive(), name(NamePart(archive));
  const std::string cut = Read(archive).substr(0, Ends(archive)[2] + 3);
  ports.files.WriteWholeFile(archive, cut);
  for (const size_t stop_at : {1, 3, 5, 99}) {
    SCOPED_TRACE(stop_at);
    std::vector<uint64_t> steps;
    const auto pause = [&](const Progress& progress) {
      EXPECT_EQ(progress.path, name);
      EXPECT_EQ(progress.total, cut.size());
      steps.push_back(progress.done);
      return steps.size() == stop_at;
    };
    const BackupInfo info = backups.List(pause).at(0);
    EXPECT_EQ(!info.problem.empty(), steps.size() == stop_at) << info.problem;
    steps.clear();
    if (stop_at == 99) {
      EXPECT_NE(backups.Repair(name, pause), "");
    } else {
      EXPECT_THROW(backups.Repair(name, pause), Error);
    }
    EXPECT_EQ(Read(archive) == cut, stop_at != 99);
    EXPECT_EQ(Archives().size(), 1u);
    EXPECT_GE(steps.size(), std::min<size_t>(stop_at, 6));
    EXPECT_TRUE(std::ranges::is_sorted(steps));
    EXPECT_LE(steps.back(), cut.size());
  }
  EXPECT_EQ(backups.List().at(0).entries, 3u);
}

}  // namespace
}  // namespace quellix
