#include <fstream>

#include "contract/error_kind.h"
#include "platform/volume/hive_log.h"
#include "platform/volume/marvin32.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr auto kUser = RegistryRoot::kCurrentUser;

// Values as published with the hash by its maker; and the head of an entry that a Windows wrote,
// with the hash that stands behind it, as published with the format.
TEST(Marvin32, HashesAsPublished) {
  constexpr char kHead[] =
      "HvLE\x00\x4E\0\0\0\0\0\0\x03\0\0\0\x00\x40\x02\0\x04\0\0\0\x56\xD5\x29\xCE\xC6\x32\x4B\x36";
  EXPECT_EQ(Marvin32("abc", 0xD53CD9CECD0893B7), 0x22C74339492769BFu);
  EXPECT_EQ(Marvin32("abcdefghijklmnopqrstuvwxyz", 0xDDDDEEEEFFFF000), 0xA128EB7E7260ACA2u);
  EXPECT_EQ(Marvin32({kHead, sizeof kHead - 1}, 0x82EF4D887A4E55C5), 0xD71FF4150787EF0Cu);
}

// A user's hive of three states, each a change after the one before, and logs that lead from one to
// the next.
struct DirtyHive : testing::Test {
  void SetUp() override {
    for (std::string& state : states_) {
      const std::string number = std::to_string(&state - states_);
      test_->SetText(kUser, "Software\\Step", "value " + number, std::string(9000, 'x') + number);
      test_->CloseHives();
      state = ReadNative(hive_);
    }
    sequence_ = HiveSequence(hive_) - 2;  // of the first state
  }
  // As a power cut left it: the first state, said to be changed.
  void CutPower() {
    WriteNative(hive_, states_[0]);
    SetHiveDirty(hive_, true);
  }
  std::string Entry(unsigned step, unsigned sequence) const {
    return HiveLogEntry(sequence, states_[step], states_[step + 1]);
  }
  std::string Entry(unsigned step) const { return Entry(step, sequence_ + step + 1); }
  std::string Log(const std::string& entries, unsigned behind = 0) const {
    return HiveLog(states_[0], entries, behind);
  }
  // A log that was begun with an entry, without it.
  std::string Begun(const std::string& entry) const { return Log(entry).substr(0, 512); }
  void PutLogs(const std::vector<std::string>& logs) {
    static constexpr const char* kNames[] = {".LOG1", ".LOG2"};
    for (size_t i = 0; i < 2; ++i) {
      fs::remove(hive_ + kNames[i]);
      if (i < logs.size()) WriteNative(hive_ + kNames[i], logs[i]);
    }
  }
  // How many of the three values there are.
  size_t Values() { return test_->ValueNames(kUser, "Software\\Step").size(); }
  std::optional<Error::Kind> Change() {
    return KindOf([this] {
      const auto key =
          test_->machine().registry.Open(kUser, "Software\\Step", RegistryAccess::kWrite);
      key->DeleteValue("value 0");
      key->Flush();
    });
  }

  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  const std::string hive_ =
      test_->Native(std::string("C:\\Users\\") + kTesterName + "\\NTUSER.DAT");
  std::string states_[3];
  unsigned sequence_ = 0;
};

std::string Broken(std::string bytes, size_t at) {
  bytes[at] = static_cast<char>(bytes[at] ^ 1);
  return bytes;
}

struct DirtyHiveLogs : DirtyHive {
  struct Row {
    const char* row;
    std::vector<std::string> logs;
    size_t values;  // 1 alone: they do not fit
  };
  // By reading, which writes nothing, and by a change.
  void ExpectReplayed(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.row);
      test_->CloseHives();
      CutPower();
      PutLogs(row.logs);
      const std::string before = ReadNative(hive_);
      EXPECT_EQ(Values(), row.values);
      EXPECT_TRUE(ReadNative(hive_) == before) << "reading never writes";
      EXPECT_EQ(Change(), row.values == 1 ? std::optional(Error::Kind::kDenied) : std::nullopt);
      test_->CloseHives();
      EXPECT_EQ(Values(), row.values == 1 ? 1 : row.values - 1);
      EXPECT_EQ(ReadNative(hive_) == before, row.values == 1);
    }
  }
};

TEST_F(DirtyHiveLogs, ADirtyHiveIsWhatItsLogsMakeOfIt) {
  const std::string first = Entry(0), second = Entry(1), older = Entry(0, sequence_ - 1);
  const std::string vector = HiveVectorLog(states_[0], states_[1]);
  const std::string other_time = HiveVectorLog(Broken(states_[0], 12), states_[1]);
  ExpectReplayed(
      {{"one entry", {Log(first)}, 2},
       {"two entries", {Log(first + second)}, 3},
       {"in two logs", {Log(first), Log(second)}, 3},
       {"in two logs, the later one first", {Log(second), Log(first)}, 3},
       {"begun with the number that the hive was stored with",
        {Log(Entry(0, sequence_) + Entry(1, sequence_ + 1))},
        3},
       {"behind an older entry", {Log(older + first)}, 1},
       {"with a log of before", {Log(first), Log(older)}, 2},
       {"before what was left of older ones", {Log(first + older + "HvLE")}, 2},
       {"the second one's hash is broken", {Log(first + Broken(second, 24))}, 2},
       {"the second one's data is broken", {Log(first + Broken(second, 600))}, 2},
       {"the second one's head is broken", {Log(first + Broken(second, 8))}, 2},
       {"the second one is cut", {Log(first + second.substr(0, second.size() - 512))}, 2},
       {"the second one is missing", {Log(first + Entry(1, sequence_ + 3))}, 2},
       {"in two logs, with one missing between", {Log(first), Log(Entry(1, sequence_ + 3))}, 2},
       {"the first one is broken", {Log(Broken(first, 600) + second)}, 1},
       {"the first one is missing", {Begun(first) + second}, 1},
       {"a log that was not ended", {Log(first, 1)}, 1},
       {"old entries only", {Log(older)}, 1},
       {"another hive's header", {Broken(Log(first), 100)}, 1},
       {"a log that is cut in its header", {Log(first).substr(0, 300)}, 1},
       {"empty logs", {"", ""}, 1},
       {"no log", {}, 1},
       {"a vector", {vector}, 2},
       {"a vector of another writing", {other_time}, 1},
       {"a vector without its mark", {Broken(vector, 512)}, 1},
       {"a vector that is cut", {vector.substr(0, vector.size() - 512)}, 1},
       {"a vector in the second log", {"", vector}, 2}});
}

TEST_F(DirtyHive, AHeaderThatWasTornComesFromTheLog) {
  const std::pair<const char*, std::vector<std::string>> kRows[] = {
      {"entries", {HiveLog(states_[1], Entry(1))}},
      {"a vector", {HiveVectorLog(states_[1], states_[2])}}};
  for (const auto& [row, logs] : kRows) {
    SCOPED_TRACE(row);
    std::string hive = states_[1];
    hive.replace(4, 30, 30, 'x');
    WriteNative(hive_, hive);
    SetHiveDirty(hive_, false);
    WriteNative(hive_, Broken(ReadNative(hive_), 508));
    PutLogs(logs);
    test_->CloseHives();
    EXPECT_EQ(Values(), 3u);
  }
  std::string hive = Broken(states_[0], 508);
  const std::string later = HiveLogEntry(sequence_ + 2, "", states_[1]);
  EXPECT_EQ(ReplayLogs(hive, {Begun(Entry(0)) + later}), HiveLogs::kUnfit)
      << "what was between the log's header and its entry is lost";
  EXPECT_EQ(ReplayLogs(hive, {Log(Entry(0))}), HiveLogs::kReplayed);
}

TEST_F(DirtyHive, WhatIsTooLargeConcernsNoOther) {
  constexpr uintmax_t kHuge = uintmax_t{3} << 30;
  WriteNative(hive_ + ".LOG1", "none");
  fs::resize_file(hive_ + ".LOG1", kHuge);
  EXPECT_FALSE(Change()) << "what is no log is not read";
  test_->CloseHives();
  EXPECT_EQ(fs::file_size(hive_ + ".LOG1"), kHuge);
  char left[4];
  std::ifstream(hive_ + ".LOG1").read(left, sizeof left);
  EXPECT_EQ(std::string(left, sizeof left), "regf") << "it is one now";
  fs::resize_file(hive_, kHuge);
  EXPECT_TRUE(KindOf([this] { Values(); }));
  EXPECT_TRUE(test_->machine().registry.Open(RegistryRoot::kLocalMachine, "Software",
                                             RegistryAccess::kWrite));
}

TEST_F(DirtyHive, AHiveThatWasClosedIsWrittenUnlessALogHasMore) {
  const std::tuple<const char*, std::vector<std::string>, bool> kRows[] = {
      {"no logs", {}, true},
      {"what it has already", {Log(Entry(0, sequence_))}, true},
      {"of its own number, with more", {Log(Entry(0, sequence_))}, false},
      {"a broken entry", {Log(Broken(Entry(0), 600))}, true},
      {"a later entry", {Log(Entry(0))}, false},
      {"a later entry in the second log", {"", Log(Entry(0))}, false}};
  for (const auto& [row, logs, writable] : kRows) {
    SCOPED_TRACE(row);
    test_->CloseHives();
    WriteNative(hive_, states_[std::string_view(row) == "what it has already" ? 1 : 0]);
    PutLogs(logs);
    EXPECT_EQ(Change(), writable ? std::nullopt : std::optional(Error::Kind::kDenied));
  }
}

// A log can be made by whoever may write to the folder.
TEST_F(DirtyHive, ALogThatClaimsTooMuchIsRefused) {
  std::string huge = states_[1];
  huge.resize(256u << 20);
  const std::string entry = HiveLogEntry(sequence_ + 1, huge, huge);
  CutPower();
  std::string hive = ReadNative(hive_);
  EXPECT_EQ(ReplayLogs(hive, {Log(entry)}), HiveLogs::kUnfit);
  EXPECT_EQ(hive, ReadNative(hive_));
}

}  // namespace
}  // namespace quellix
