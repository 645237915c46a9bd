// Cleaning when little is free on the drive of Windows.

#include "app/low_disk.h"

#include "platform/filetime.h"
#include "platform/forwarding_system.h"
#include "platform/path.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

constexpr int64_t kMinute = 600'000'000, kHour = 60 * kMinute;

struct Clock : ForwardingSystem {
  using ForwardingSystem::ForwardingSystem;
  int64_t UtcNow() override { return now; }
  int64_t now = 134'000'000'000'000'000;
};

// A drive of Windows with that much room.
struct LowDiskTest : RunFixture {
  struct Told : ForwardingFolder {
    Told(std::unique_ptr<Folder> folder, const LowDiskTest& test)
        : ForwardingFolder(std::move(folder)), test_(test) {}
    DiskRoom Room() override {
      if (!test_.tells) throw Error(Error::Kind::kOther, "It does not tell.");
      return test_.room;
    }

   private:
    const LowDiskTest& test_;
  };

  // Whether a tick begins a run.
  bool Cleans(LowDiskClean& low, bool can = true) {
    const int before = runs;
    low.Tick([can] { return can; }, [this] { ++runs; });
    return runs != before;
  }
  // The same after a restart of the program.
  bool CleansAnew(int16_t percent = 10) {
    LowDiskClean low(of);
    low.Start(percent);
    return Cleans(low);
  }

  DiskRoom room{.free = 5, .size = 100};
  bool tells = true;
  int runs = 0;
  Clock clock{ports.system};
  ForwardingFiles files{ports.files, [this](const std::string&, std::unique_ptr<Folder> folder) {
                          return std::unique_ptr<Folder>(new Told(std::move(folder), *this));
                        }};
  const Machine of{files, ports.registry, ports.shell,    ports.url_cache,     ports.profile,
                   clock, ports.session,  ports.cleaners, ports.program_folder};
};

TEST_F(LowDiskTest, ItBeginsBelowTheBoundAlone) {
  const std::tuple<const char*, uint64_t, uint64_t, int16_t, bool> kRows[] = {
      {"never", 0, 100, 0, false},
      {"less", 9, 100, 10, true},
      {"just as much", 10, 100, 10, false},
      {"more", 11, 100, 10, false},
      {"nothing is free", 0, 1000, 1, true},
      {"a large disk", 499'999'999'999, 1'000'000'000'000, 50, true},
      {"larger than any", UINT64_MAX / 2, UINT64_MAX, 49, false},
      {"it has no size", 0, 0, 50, false}};
  for (const auto& [row, free, size, percent, cleans] : kRows) {
    room = {.free = free, .size = size};
    clock.now += 2 * kFiletimesADay;
    EXPECT_EQ(CleansAnew(percent), cleans) << row;
  }
  tells = false;
  EXPECT_FALSE(CleansAnew(50));
}

TEST_F(LowDiskTest, OnceADayAtMostAlsoOverStartsOfTheProgram) {
  LowDiskClean low(of);
  low.Start(10);
  EXPECT_FALSE(Cleans(low, false)) << "a run goes on";
  EXPECT_TRUE(Cleans(low));
  for (int hour = 0; hour < 23; ++hour) {
    clock.now += kHour;
    EXPECT_FALSE(Cleans(low) || CleansAnew()) << hour;
  }
  clock.now += kHour;
  EXPECT_TRUE(CleansAnew());
  clock.now += kMinute;
  EXPECT_FALSE(Cleans(low)) << "the other one did it";
  clock.now -= 30 * kFiletimesADay;
  EXPECT_FALSE(CleansAnew()) << "a clock that was moved back begins the day";
  clock.now += kHour;
  EXPECT_FALSE(CleansAnew());
  clock.now += kFiletimesADay;
  EXPECT_TRUE(CleansAnew());
}

TEST_F(LowDiskTest, WhatFillsTheDriveWhileItIsWipedIsNoReason) {
  const std::string filler = scratch + TemporaryName(), elsewhere = "X:\\" + TemporaryName();
  const struct {
    const char* name;
    std::string noted;
    bool is_there, cleans, is_held = true;
  } kRows[] = {
      {"a filler", filler, true, false},
      {"a filler that a kill has left", filler, true, true, false},
      {"it is gone", filler, false, true},
      {"of another drive", elsewhere, false, true},
      {"a folder that files are restored to", scratch + "mine", true, true},
      {"nothing", "", false, true},
  };
  const std::string note = TemporaryName();
  const auto hold = [&] { return ports.files.Open(own + note, OpenMode::kReadAndCreate); };
  for (const auto& row : kRows) {
    WriteOwn(note, "Quellix restores into\n" + row.noted + "\n");
    const auto held = row.is_held ? hold() : nullptr;
    if (row.is_there) machine->MakeFolder(row.noted);
    clock.now += 2 * kFiletimesADay;
    EXPECT_EQ(CleansAnew(), row.cleans) << row.name;
    if (row.is_there) ports.files.RemoveFolder(row.noted);
  }
  WriteOwn(note, "other words\n" + filler + "\n");
  const auto held = hold();
  machine->MakeFolder(filler);
  clock.now += 2 * kFiletimesADay;
  EXPECT_TRUE(CleansAnew()) << "no notes";
}

TEST_F(LowDiskTest, TheDriveIsAskedOnceAMinute) {
  room.free = 50;
  LowDiskClean low(of);
  low.Start(10);
  EXPECT_FALSE(Cleans(low));
  room.free = 5;
  clock.now += kMinute / 2;
  EXPECT_FALSE(Cleans(low));
  clock.now += kMinute;
  EXPECT_TRUE(Cleans(low));
}

TEST_F(LowDiskTest, WhereTheDayCannotBeStoredNothingBegins) {
  MakeUnreadable(own + "Settings.ini");
  EXPECT_FALSE(CleansAnew());
  ports.files.RemoveFolder(own + "Settings.ini");
  WriteSettings("[CleanUp]\r\nLowDiskTime=yesterday\r\n[General]\r\nLowDisk=99\r\n");
  EXPECT_TRUE(CleansAnew());
  EXPECT_FALSE(CleansAnew());
}

TEST_F(LowDiskTest, TheSettingCountsWithTheIconAndWithinItsBounds) {
  const std::tuple<const char*, const char*, int16_t> kRows[] = {
      {"absent", "TrayIcon=1", 0},
      {"set", "TrayIcon=1\r\nLowDisk=7", 7},
      {"without the icon", "LowDisk=7", 0},
      {"too much", "TrayIcon=1\r\nLowDisk=51", kMostLowDisk},
      {"negative", "TrayIcon=1\r\nLowDisk=-3", 0},
      {"no number", "TrayIcon=1\r\nLowDisk=some", 0},
      {"beyond 16 bits", "TrayIcon=1\r\nLowDisk=70000", 0}};
  for (const auto& [row, lines, percent] : kRows) {
    WriteSettings("[General]\r\n" + std::string(lines) + "\r\n");
    EXPECT_EQ(settings.Load().LowDiskPercent(), percent) << row;
    engine.ApplyGeneralSettings();
    EXPECT_EQ(engine.low_disk().IsOn(), percent > 0) << row;
  }
}

}  // namespace
}  // namespace quellix
