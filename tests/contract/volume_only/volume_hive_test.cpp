// Changes to hives: what they leave in the file, and what stands beside it meanwhile.
#include <fcntl.h>

#include <random>

#include "contract/error_kind.h"
#include "platform/text.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_editor.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/hive_store.h"
#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_random_file.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr auto kUser = RegistryRoot::kCurrentUser;
constexpr auto kWrite = RegistryAccess::kWrite;

// Keys and values by path, as one reader sees them.
using Model = std::map<std::string, std::map<std::string, std::string>>;

struct HiveChanges : testing::Test {
  std::unique_ptr<RegistryKey> Key(const std::string& path) {
    return registry_.Open(kUser, path, kWrite);
  }
  void Set(const std::string& key, const std::string& name, const std::string& bytes) {
    registry_.Create(kUser, key)->SetValue(name, {kRegBinary, bytes});
  }
  // As stored: what is in memory is closed first.
  void Read(const std::string& path, Model& model) {
    const auto key = registry_.Open(kUser, path, RegistryAccess::kRead);
    auto& values = model[path];
    std::string name;
    RegistryValue value;
    for (uint32_t i = 0; key->ReadValueAt(i, name, value); ++i) values[name] = value.bytes;
    for (uint32_t i = 0; const auto sub_key = key->SubKeyAt(i); ++i) {
      Read(path + "\\" + *sub_key, model);
    }
  }
  Model Stored(const std::string& path) {
    test_->CloseHives();
    Model model;
    Read(path, model);
    return model;
  }
  // Which of some files beside the hive hold a text.
  std::string Holders(const std::string& text) {
    std::string holders;
    for (const auto& entry : fs::directory_iterator(fs::path(hive_).parent_path())) {
      if (!entry.is_regular_file()) continue;
      const std::string bytes = ReadNative(entry.path().string());
      for (const std::string& form : {text, ToUtf16Bytes(text)}) {
        if (bytes.find(form) == bytes.npos) continue;
        holders += entry.path().filename().string() + " ";
        break;
      }
    }
    return holders;
  }
  bool Exists(const std::string& ending) { return fs::exists(hive_ + ending); }
  void SetVersion(int minor) {
    test_->CloseHives();
    std::string bytes = ReadNative(hive_);
    bytes[24] = static_cast<char>(minor);
    WriteNative(hive_, bytes);
    SetHiveDirty(hive_, false);
  }

  std::unique_ptr<VolumeTestMachine> test_ = VolumeTestMachine::CreateVolume();
  Registry& registry_ = test_->machine().registry;
  const std::string hive_ =
      test_->Native(std::string("C:\\Users\\") + kTesterName + "\\NTUSER.DAT");
};

TEST_F(HiveChanges, DataOfAnySizeComesBackAndGoesWithoutATrace) {
  for (const int version : {3, 5}) {
    SetVersion(version);
    for (const size_t size : {0, 1, 4, 5, 16344, 16345, 40000, 2000000}) {
      SCOPED_TRACE(std::to_string(version) + " " + std::to_string(size));
      const std::string bytes(size, 'q');
      Set("A", "neighbor", "stays");
      Set("A", "large", bytes);
      EXPECT_TRUE(Stored("A")["A"]["large"] == bytes);
      Set("A", "large", "now small");
      EXPECT_EQ(Stored("A")["A"]["large"], "now small");
      Set("A", "large", bytes);
      test_->CloseHives();
      EXPECT_TRUE(Key("A")->DeleteValue("LARGE"));
      EXPECT_EQ(Stored("A"), (Model{{"A", {{"neighbor", "stays"}}}}));
      EXPECT_EQ(Holders("qqqqq"), "");
    }
  }
  EXPECT_LT(fs::file_size(hive_), 3u << 20) << "room that was freed is used again";
}

TEST_F(HiveChanges, WhatIsDeletedIsInNoByteBesideTheHive) {
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"a value's data", [&] { Key("Deep\\Secret")->DeleteValue("name 7"); }},
      {"all values",
       [&] {
         for (const auto& name : test_->ValueNames(kUser, "Deep\\Secret")) {
           Key("Deep\\Secret")->DeleteValue(name);
         }
       }},
      {"a key",
       [&] {
         Key("Deep\\Secret")->DeleteSubKey("secret7 key");
         Key("Deep")->DeleteSubKey("Secret");
       }},
      {"data that was replaced", [&] { Set("Deep\\Secret", "name 7", "other"); }},
      {"data that became shorter", [&] { Set("Deep\\Secret", "name 7", "secret"); }}};
  for (const auto& [row, change] : kRows) {
    SCOPED_TRACE(row);
    for (int i = 0; i < 9; ++i) {
      const std::string number = std::to_string(i);
      Set("Deep\\Secret", "name " + number, "secret" + number + std::string(50, 's'));
    }
    Set("Deep\\Secret\\secret7 key", "", "x");
    test_->CloseHives();
    const std::string before = ReadNative(hive_);
    WriteNative(hive_ + ".LOG1", HiveLog(before, HiveLogEntry(HiveSequence(hive_), "", before)));
    WriteNative(hive_ + ".LOG2", std::string(700, 'x') + "secret7");
    if (std::string_view(row) != "a key") Key("Deep\\Secret")->DeleteSubKey("secret7 key");
    change();
    test_->CloseHives();
    EXPECT_EQ(Holders("secret7"), "");
    EXPECT_TRUE(IsSoundHive(ReadNative(hive_)));
    EXPECT_EQ(fs::file_size(hive_ + ".LOG2"), 707u);
    const std::string after = ReadNative(hive_);
    test_->CloseHives();
    EXPECT_TRUE(ReadNative(hive_) == after) << "a second time changes nothing";
  }
}

TEST_F(HiveChanges, TheOriginalStaysUntilTheEndAndOnRequestBeyond) {
  auto& registry = static_cast<VolumeRegistry&>(registry_);
  Set("A", "v", "secret");
  test_->CloseHives();
  const std::string original = ReadNative(hive_), log = HiveLog(original, "");
  for (const bool kept : {true, false}) {
    SCOPED_TRACE(kept);
    test_->CloseHives();
    WriteNative(hive_, original);
    WriteNative(hive_ + ".LOG1", log);
    registry.KeepHives(kept);
    for (const char* step : {"first", "second"}) {
      Key("A")->SetValue("v", {kRegBinary, step});
      Key("A")->Flush();
      EXPECT_TRUE(ReadNative(hive_ + ".quellix-old") == original);
      EXPECT_TRUE(ReadNative(hive_ + ".LOG1") == log);
    }
    test_->CloseHives();
    EXPECT_EQ(Exists(".quellix-old"), kept);
    EXPECT_EQ(Exists(".LOG1.quellix-old"), kept);
    if (kept) {
      EXPECT_TRUE(ReadNative(hive_ + ".quellix-old") == original);
      EXPECT_TRUE(ReadNative(hive_ + ".LOG1.quellix-old") == log);
    }
    EXPECT_EQ(Stored("A")["A"]["v"], "second");
  }
}

// Random work is the same in memory, in the file and to a model, whatever was freed before.
TEST_F(HiveChanges, AnyOrderOfChangesIsStoredAsItWasMade) {
  std::mt19937 random(7);
  Model model = {{"T", {}}};
  registry_.Create(kUser, "T");
  for (int step = 0; step < 3000; ++step) {
    const std::string key = "T\\Key " + std::to_string(random() % 40);
    const std::string name = (random() % 2 ? "v" : "w\u0436") + std::to_string(random() % 12);
    if (random() % 10 == 0 && model.contains(key)) {
      EXPECT_TRUE(Key("T")->DeleteSubKey(NamePart(key)));
      model.erase(key);
    } else if (random() % 3 == 0 && model.contains(key)) {
      EXPECT_EQ(Key(key)->DeleteValue(name), model[key].erase(name) == 1);
    } else {
      const std::string bytes(random() % 20 == 0 ? random() % 40000 : random() % 60, 'b');
      Set(key, name, bytes);
      model[key][name] = bytes;
    }
    if (step % 200 == 0) Key("T")->Flush();
    ASSERT_TRUE(step % 500 != 0 || Stored("T") == model) << step;
  }
  EXPECT_TRUE(Stored("T") == model);
  EXPECT_TRUE(IsSoundHive(ReadNative(hive_)));
}

TEST_F(HiveChanges, SubKeysAreStoredInOrderWhateverTheVersion) {
  for (const int version : {3, 5}) {
    SCOPED_TRACE(version);
    const std::string top = "Many" + std::to_string(version);
    SetVersion(version);
    Names names;
    for (int i = 0; i < 300; ++i) {
      names.push_back((i % 2 ? "k" : "K\u00E9") + std::to_string(i * 7919 % 1000));
      registry_.Create(kUser, top + "\\" + names.back());
    }
    std::ranges::sort(names, [](const auto& a, const auto& b) { return CompareNoCase(a, b) < 0; });
    for (const char* state : {"in memory", "stored"}) {
      SCOPED_TRACE(state);
      const auto key = registry_.Open(kUser, top, RegistryAccess::kRead);
      for (uint32_t i = 0; i < names.size(); ++i) ASSERT_EQ(key->SubKeyAt(i), names[i]);
      test_->CloseHives();
    }
  }
}

TEST_F(HiveChanges, NamesThatWindowsCannotHaveAreRefusedAndChangeNothing) {
  Set("A", "v", "1");
  test_->CloseHives();
  const std::string before = ReadNative(hive_);
  EXPECT_TRUE(KindOf([&] { Set("A", std::string("a\0b", 3), "x"); }));
  EXPECT_TRUE(KindOf([&] { Set("A", std::string(16384, 'x'), "x"); }));
  EXPECT_TRUE(KindOf([&] { registry_.Create(kUser, "A\\" + std::string(256, 'x')); }));
  test_->CloseHives();
  EXPECT_TRUE(ReadNative(hive_) == before);
  registry_.Create(kUser, "A\\" + std::string(255, 'x'));
  Set("A", std::string(16383, 'y'), "x");
  EXPECT_EQ(Stored("A").size(), 2u);
}

// The upper half of the longest name's length holds flags of the key.
TEST_F(HiveChanges, FlagsBesideALengthStayAndCountsAreThoseOfTheLists) {
  using namespace hive_format;
  test_->CloseHives();
  std::string bytes = ReadNative(hive_);
  const size_t root = kPage + NumberAt(bytes, kRootKey);
  PutNumber(bytes, root + kKeyLongestSubKey, 0x10002);
  HiveEditor editor(bytes);
  editor.CreateSubKey(root, std::string(40, 'k'), 0);
  EXPECT_EQ(NumberAt(editor.Finish(0), root + kKeyLongestSubKey), 0x10050u);
  for (const int by : {-1, 1}) {
    std::string wrong = bytes;
    PutNumber(wrong, root + kKeySubKeyCount, NumberAt(bytes, root + kKeySubKeyCount) + by);
    EXPECT_FALSE(IsSoundHive(wrong)) << by;
  }
}

// What Windows and other programs leave in hives, though few do.
struct OddHives : HiveChanges {
  OddHives() {
    using namespace hive_format;
    Set("Odd key", "odd value", std::string(40, 'd'));
    Set("Other", "v", "1");
    test_->CloseHives();
    bytes_ = ReadNative(hive_);
    key_ = bytes_.find("Odd key") - kKeyName;
    value_ = bytes_.find("odd value") - kValueName;
    list_ = kPage + NumberAt(bytes_, key_ + kKeyValues);
  }
  void Put(size_t at, uint64_t number, size_t size = 4) { PutNumber(bytes_, at, number, size); }
  // Writes the hive so; whether a change to another key of it is taken.
  bool TakesChanges() {
    test_->CloseHives();
    WriteNative(hive_, bytes_);
    const auto refused = KindOf([&] { Set("Other", "v", "2"); });
    test_->CloseHives();
    EXPECT_TRUE(refused || IsSoundHive(ReadNative(hive_)));
    return !refused;
  }

  std::string bytes_;
  size_t key_, value_, list_;
};

TEST_F(OddHives, AKeyThatLeadsElsewhereHoldsNoValues) {
  using namespace hive_format;
  Put(key_ + kKeyFlags, NumberAt(bytes_, key_ + kKeyFlags, 2) | 0x40, 2);
  Put(key_ + kKeyValueCount, 0x80000004);
  for (const bool is_stored : {false, true}) {
    ASSERT_TRUE(TakesChanges()) << is_stored;
    EXPECT_TRUE(test_->ValueNames(kUser, "Odd key").empty());
    EXPECT_EQ(KindOf([&] { Set("Odd key", "v", "1"); }), Error::Kind::kDenied);
    Set("Other", "v", "3");
    Key("Other")->Flush();
    EXPECT_TRUE(test_->ValueNames(kUser, "Odd key").empty());
  }
  registry_.Open(kUser, "", kWrite)->DeleteSubKey("Odd key");
  test_->CloseHives();
  EXPECT_TRUE(IsSoundHive(ReadNative(hive_)) && !test_->KeyExists(kUser, "Odd key"));
}

TEST_F(OddHives, WhatIsEmptyNamesNothing) {
  using namespace hive_format;
  const size_t data = kPage + NumberAt(bytes_, value_ + kValueData);
  const std::string original = bytes_;
  const auto is_free = [&](size_t cell) {
    const std::string stored = ReadNative(hive_);
    return static_cast<int32_t>(NumberAt(stored, cell)) >= 0;
  };
  for (const uint32_t place : {kNone, 0u, 0x12345678u, NumberAt(original, value_ + kValueData)}) {
    SCOPED_TRACE(place);
    bytes_ = original;
    Put(value_ + kValueDataSize, 0);
    Put(value_ + kValueData, place);
    ASSERT_TRUE(TakesChanges());
    EXPECT_EQ(is_free(data), data == kPage + size_t{place});
    EXPECT_EQ(Stored("Odd key")["Odd key"]["odd value"], "");
    EXPECT_TRUE(Key("Odd key")->DeleteValue("odd value"));
    EXPECT_TRUE(Stored("Odd key")["Odd key"].empty());
  }
  bytes_ = original;
  Put(key_ + kKeyValueCount, 0);
  ASSERT_TRUE(TakesChanges());
  EXPECT_TRUE(is_free(list_));
  Set("Odd key", "new", "1");
  EXPECT_EQ(Stored("Odd key"), (Model{{"Odd key", {{"new", "1"}}}}));
  bytes_ = original;
  Put(key_ + kKeySubKeys, list_ - kPage);
  Put(key_ + kKeyClass, list_ - kPage);
  ASSERT_TRUE(TakesChanges());
  EXPECT_EQ(Stored("Odd key")["Odd key"]["odd value"], std::string(40, 'd')) << "it is another's";
}

TEST_F(OddHives, AKeyIsKnownByItsWholeNameAndItsParent) {
  using namespace hive_format;
  const std::string name("Odd\0key", 7), original = bytes_;
  bytes_.replace(key_ + kKeyName, name.size(), name);
  ASSERT_TRUE(TakesChanges());
  EXPECT_FALSE(test_->KeyExists(kUser, "Odd"));
  EXPECT_EQ(registry_.Open(kUser, "", kWrite)->SubKeyAt(1), name);
  bytes_ = original;
  Put(key_ + kKeyParent, NumberAt(original, key_ + kKeyParent) + 8);
  EXPECT_FALSE(TakesChanges());
}

TEST_F(OddHives, WhatAKilledRunLeftIsOverwrittenBeforeItGoes) {
  const std::string left = fs::path(hive_).parent_path().string() + "/" + TemporaryName();
  const std::string secret(5000, 's');
  WriteNative(left, secret);
  const UniqueFd held(open(left.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(TakesChanges());
  EXPECT_FALSE(fs::exists(left));
  EXPECT_EQ(ReadAll(held.get(), 10000, left), std::string(5000, '\0'));
}

TEST_F(HiveChanges, AHiveThatOthersChangedMeanwhileIsNotReplaced) {
  Set("A", "v", "1");
  test_->CloseHives();
  const std::string original = ReadNative(hive_);
  const std::pair<const char*, std::function<void()>> kRows[] = {
      {"written", [&] { WriteNative(hive_, original); }},
      {"grown", [&] { WriteNative(hive_, original + std::string(4096, '\0')); }},
      {"replaced",
       [&] {
         fs::copy_file(hive_, hive_ + ".new");
         fs::last_write_time(hive_ + ".new", fs::last_write_time(hive_));
         fs::rename(hive_ + ".new", hive_);
       }},
      {"a log", [&] { WriteNative(hive_ + ".LOG1", HiveLog(original, "")); }}};
  for (const auto& [row, change] : kRows) {
    SCOPED_TRACE(row);
    WriteNative(hive_, original);
    for (const bool is_stored_before : {false, true}) {
      Key("A")->SetValue("v", {kRegBinary, "2"});
      if (is_stored_before) Key("A")->Flush();
      const std::string stored = ReadNative(hive_);
      Key("A")->SetValue("v", {kRegBinary, "3"});
      change();
      const std::string changed = ReadNative(hive_);
      EXPECT_EQ(KindOf([&] { test_->CloseHives(); }), Error::Kind::kInUse);
      EXPECT_TRUE(ReadNative(hive_) == changed);
      fs::remove(hive_ + ".LOG1");
    }
  }
}

TEST_F(HiveChanges, OneHiveThatCannotBeFinishedStopsNoOther) {
  Set("A", "v", "1");
  registry_.Create(RegistryRoot::kLocalMachine, "Software\\Qx")->SetValue("v", {kRegBinary, "1"});
  fs::create_directory(hive_ + ".LOG1");
  EXPECT_TRUE(KindOf([&] { test_->CloseHives(); }));
  std::string left;
  for (const auto& entry : fs::recursive_directory_iterator(test_->options().volume)) {
    if (entry.path().extension() == ".quellix-old") left += entry.path().filename().string() + " ";
  }
  EXPECT_EQ(left, "NTUSER.DAT.quellix-old ");
}

}  // namespace
}  // namespace quellix
