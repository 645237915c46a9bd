// Windows' own cleaners in runs, previews and the main window's list.
#include "app/system_cleaning.h"

#include "app/item_list.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

// Cleaners that find and free what a test says.
struct ScriptedCleaners : SystemCleaners {
  struct Scripted {
    const char* key;
    uint64_t bytes;
    std::optional<uint64_t> freed;
    const char* fails;  // with what; "" for not at all
  };
  std::vector<Scripted> scripted;
  Names calls;

  std::vector<SystemCleaner> List() override {
    std::vector<SystemCleaner> list;
    for (const Scripted& each : scripted)
      list.push_back({.key = each.key, .name = "The " + std::string(each.key), .description = "x"});
    return list;
  }
  CleanerFind Use(std::string_view key, CleanerUse use, bool is_attended,
                  const Pause& pause) override {
    calls.push_back(std::string(use == CleanerUse::kLook ? "look " : "clean ") + std::string(key) +
                    (is_attended ? "" : ", nobody there"));
    const auto found = std::ranges::find(scripted, key, &Scripted::key);
    CleanerFind find{.cleaner = {.key = std::string(key)}, .bytes = found->bytes};
    find.is_stopped = pause({.path = "The one that works"});
    if (*found->fails != '\0') throw Error(Error::Kind::kOther, found->fails);
    if (use == CleanerUse::kClean && !find.is_stopped) find.freed = found->freed;
    return find;
  }
};

struct SystemCleaningTest : RunFixture {
  SystemCleaningTest() {
    cleaners.scripted = {{"Update Cleanup", 3000, 2000, ""},
                         {"Quiet", 1000, {}, ""},
                         {"Broken", 500, {}, "It is broken."},
                         {"Empty", 0, 0, ""},
                         {"Unticked", 7000, 7000, ""}};
    for (const char* key : {"Update Cleanup", "Quiet", "Broken", "Empty", "Gone"})
      run.selection().cleaners().SetTicked(key, true);
  }
  static std::string Entries(const RunEntries& entries) {
    std::string text;
    for (const RunEntry& entry : entries.all)
      text += std::string(KindText(entry.kind)) + " " + entry.place + " " +
              std::to_string(entry.bytes) + (entry.fate == Fate::kStayed ? " stays" : "") + "; ";
    return text;
  }

  ScriptedCleaners cleaners;
  Machine user{ports.files,  ports.registry, ports.shell, ports.url_cache,     ports.profile,
               ports.system, ports.session,  cleaners,    ports.program_folder};
  Engine run{user, view};
  ItemList list{user, run.selection()};
};

TEST_F(SystemCleaningTest, TickedOnesWorkInARunAndOnlyLookInAPreview) {
  PreviewRun preview(user, view);
  list.SetSections(FindSections(user));
  const size_t heading = list.RowCount() - 6;
  list.BeginLook(preview.state());
  preview.Run(run.selection());
  list.EndLook();
  EXPECT_EQ(Joined(cleaners.calls), "look Update Cleanup look Quiet look Broken look Empty");
  EXPECT_EQ(Entries(*preview.entries()),
            "Windows cleaner The Update Cleanup 3000; Windows cleaner The Quiet 1000; "
            "Windows cleaner The Broken 0 stays; ");
  const struct {
    const char *name, *size, *note;
  } kRows[] = {{"Windows' own cleaners", "3.91 KB", "4 of 5 ticked"},
               {"The Update Cleanup", "2.93 KB", "older updates cannot be gone back to"},
               {"The Quiet", "1,000 Bytes", ""},
               {"The Broken", "0 Bytes", "failed"},
               {"The Empty", "0 Bytes", "nothing found"},
               {"The Unticked", "", ""}};
  for (size_t i = 0; i < std::size(kRows); ++i) {
    EXPECT_EQ(list.Text(heading + i, ItemColumn::kName), kRows[i].name);
    EXPECT_EQ(list.Text(heading + i, ItemColumn::kBytes), kRows[i].size) << kRows[i].name;
    EXPECT_EQ(list.Text(heading + i, ItemColumn::kNote), kRows[i].note) << kRows[i].name;
  }
  EXPECT_TRUE(list.Details(heading + 1).starts_with("x\r\n\r\nWindows' own code removes it"));

  cleaners.calls.clear();
  run.RunCleaning();
  EXPECT_EQ(Joined(cleaners.calls), "clean Update Cleanup clean Quiet clean Broken clean Empty");
  const std::string& log = run.state().RunLog;
  for (const char* line :
       {"The Update Cleanup (Windows)... Freed: 1.95 KB by its own count, ",
        "The Quiet (Windows)... Freed: it does not say how much, ",
        "The Broken (Windows)... It failed. It is broken.\r\n",
        "The Empty (Windows)... Nothing to remove, ", " more free on the drives\r\n"})
    EXPECT_NE(log.find(line), log.npos) << line << log;
  EXPECT_TRUE(run.state().SomeErrors);
  EXPECT_EQ(run.state().RunSpaceGained, 3000) << "where it does not say, what it found";
}

TEST_F(SystemCleaningTest, WhatWasLeftOutOfAPreviewDoesNotWorkAndAStopEndsTheRun) {
  PreviewRun preview(user, view);
  preview.Run(run.selection());
  const auto is_quiet = [&](size_t i) { return preview.entries()->all[i].place == "The Quiet"; };
  cleaners.calls.clear();
  run.RunCleaning(std::make_shared<RunChoice>(*preview.entries(), is_quiet));
  EXPECT_EQ(Joined(cleaners.calls), "clean Quiet");

  view.on_status = [&](const std::string& status) { view.stops = status == "The one that works"; };
  run.state().BySelf = true;
  cleaners.calls.clear();
  run.RunCleaning();
  EXPECT_EQ(Joined(cleaners.calls), "clean Update Cleanup, nobody there");
  EXPECT_NE(run.state().RunLog.find("(Windows)... Stopped. "), std::string::npos);
  EXPECT_TRUE(run.state().AbortRequested);
}

TEST_F(SystemCleaningTest, TheirTicksAreKeptAndSelectAllOnlyClearsThem) {
  list.SetSections(FindSections(user));
  run.Save();
  EXPECT_EQ(ReadOwn("Cleaners.txt"), "Broken\r\nEmpty\r\nGone\r\nQuiet\r\nUpdate Cleanup\r\n");
  Engine other(user, view);
  EXPECT_EQ(other.Load(), "");
  EXPECT_TRUE(other.selection().cleaners().IsTicked("Quiet"));

  NameTicks& ticks = run.selection().cleaners();
  list.TickAll(false);
  EXPECT_FALSE(ticks.IsTicked("Quiet"));
  list.TickAll(true);
  EXPECT_FALSE(ticks.IsTicked("Quiet"));
  Preferences preferences;
  preferences.select_risky = false;
  run.selection().ApplyProtection(preferences);
  list.Toggle(list.RowCount() - 6);
  EXPECT_TRUE(ticks.IsTicked("Quiet") && !ticks.IsTicked("Update Cleanup"));
}

}  // namespace
}  // namespace quellix
