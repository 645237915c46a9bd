// Long operations let their surface breathe, and end where it says so.
#include "platform/pause.h"

#include "app/recipe_sections.h"
#include "registry_tools/registry_eraser.h"
#include "run/protected_places.h"
#include "run/time_left.h"
#include "support/backup_fixture.h"

namespace quellix {
namespace {

constexpr size_t kMany = 40;
constexpr const char* kKey = "Qx1";

struct PauseTest : BackupFixture {
  ~PauseTest() override { machine->RemoveRegistryTree(kUser, kKey); }

  void MakeMany() {
    for (size_t i = 0; i < kMany; ++i) machine->MakeFile(tree + std::to_string(i), "text");
  }
  // Half of it values, half sub-keys.
  void MakeKey() {
    for (size_t i = 0; i < kMany; ++i) {
      const std::string name = std::to_string(i);
      machine->SetRegistryValue(kUser, kKey, name, {kRegBinary, name});
      machine->SetRegistryValue(kUser, std::string(kKey) + "\\" + name, "", {kRegBinary, name});
    }
  }
  size_t LeftOfKey() {
    const auto key = ports.registry.Open(kUser, kKey, RegistryAccess::kRead);
    return key ? machine->ValueNames(kUser, kKey).size() + SubKeyNames(*key).size() : 0;
  }
  Erasure EraseTree(const Pause& pause) {
    RegistryEraser eraser(ports.registry, RegistryEraser::OnError::kTold);
    RegistryUndo undo;
    eraser.KeepIn(undo, ports, safe);
    eraser.OnPause(pause);
    return eraser.Erase({RegistryTarget::Kind::kTree, kUser, kKey, ""});
  }

  ScriptedPrompts prompts;
  size_t pauses_ = 0;
  const Pause count_ = [this](const Progress&) { return ++pauses_ == 0; };
};

TEST_F(PauseTest, EveryEntryOfALongOperationHasItsPause) {
  // least: pauses.
  const std::tuple<const char*, std::function<void()>, size_t> kRows[] = {
      {"removing a batch", [&] { Clean(tree), pauses_ = view.pauses; }, 3 * kMany},
      {"listing archives", [&] { backups.List(count_); }, kMany},
      {"listing an archive", [&] { backups.ListEntries(OnlyArchive(), count_); }, 2 * kMany},
      {"restoring, with its batches", [&] { backups.Restore(OnlyArchive(), {}, prompts, count_); },
       6 * kMany},
      {"deleting a registry tree", [&] { EraseTree(count_); }, 6 * kMany},
      {"listing a registry backup", [&] { backups.ListEntries(Archives().back(), count_); },
       3 * kMany},
      {"restoring a registry backup",
       [&] { backups.Restore(Archives().back(), {}, prompts, count_); }, 6 * kMany},
      {"noting what is precious", [&] { ProtectedPlaces(ports, safe, {}, count_); }, 50},
      {"looking for recipes", [&] { FindRecipeSections(ports, count_); }, 3 * kMany}};
  MakeMany();
  std::string recipes;
  for (size_t i = 0; i < kMany; ++i) recipes += "[" + std::to_string(i) + "]\r\n";
  WriteOwn("Winapp2.ini", recipes);
  MakeKey();
  for (const auto& [what, work, least] : kRows) {
    SCOPED_TRACE(what);
    pauses_ = 0;
    work();
    EXPECT_GE(pauses_, least);
  }
  EXPECT_EQ(machine->Tree(tree).size(), kMany);
  EXPECT_EQ(LeftOfKey(), 2 * kMany);
}

TEST_F(PauseTest, AStoppedDeletionOfATreeIsKeptAndCanGoOn) {
  bool some_went = false;
  for (size_t stop_at = 1;; stop_at += kMany / 2) {
    SCOPED_TRACE(stop_at);
    MakeKey();
    pauses_ = 0;
    const Erasure erased = EraseTree([&](const Progress&) { return ++pauses_ >= stop_at; });
    const size_t left = LeftOfKey();
    EXPECT_EQ(erased.stopped, left != 0);
    EXPECT_EQ(erased.gone, left == 0 ? 1u : 0u);
    some_went = some_went || (left != 0 && left < 2 * kMany);
    if (left == 0) break;
    for (const std::string& kept : Archives()) {
      backups.Restore(kept, {{}, "", OverwriteMode::kNever}, prompts);
      backups.Delete(kept);
    }
    EXPECT_EQ(LeftOfKey(), 2 * kMany) << "what went is not in the backup";
  }
  EXPECT_TRUE(some_went) << "no stop came within the deletion";
  EXPECT_EQ(EraseTree({}).gone, 0u);
}

TEST(TimeLeftTest, IsToldInRoundTimes) {
  const std::tuple<uint64_t, uint64_t, uint64_t, const char*> kRows[] = {
      {50, 0, 10'000, ""},
      {50, 100, 2'999, ""},
      {0, 100, 10'000, ""},
      {50, 100, 3'000, "a few seconds left"},
      {50, 100, 12'000, "about 10 seconds left"},
      {50, 100, 61'000, "about 1 minute left"},
      {10, 100, 60'000, "about 9 minutes left"},
      {1, 100, 60'000, "about 2 hours left"}};
  for (const auto& [done, total, milliseconds, text] : kRows)
    EXPECT_EQ(TimeLeftText({done, total}, milliseconds), text) << milliseconds;
}

TEST(ProgressTextTest, CountsFilesAndTellsTheTimeByWhatTakesIt) {
  const std::tuple<const char*, FileProgress, uint64_t, const char*> kRows[] = {
      {"no list", {}, 9000, ""},
      {"at first", {0, 20000, 0, 0}, 100, "0 of 20,000, 0 Bytes"},
      {"by files", {5000, 20000, 10066330, 0}, 4000, "5,000 of 20,000, 9.6 MB, 12 s left"},
      {"too early", {5000, 20000, 1, 0}, 900, "5,000 of 20,000, 1 Bytes"},
      {"by bytes", {0, 1, 1048576, 4194304}, 60000, "0 of 1, 1.0 MB, 3 min left"},
      {"long", {1, 100, 1048576, 104857600}, 600000, "1 of 100, 1.0 MB, 17 h left"},
      {"grown meanwhile", {1, 2, 300, 200}, 5000, "1 of 2, 300 Bytes, 1 s left"},
      {"done", {2, 2, 200, 200}, 5000, "2 of 2, 200 Bytes"},
  };
  for (const auto& [name, files, milliseconds, text] : kRows)
    EXPECT_EQ(ProgressText(files, {}, milliseconds), text) << name;
}

}  // namespace
}  // namespace quellix
