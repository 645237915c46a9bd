#include "settings/window_memory.h"

#include <gtest/gtest.h>

#include "run/list_totals.h"

namespace quellix {
namespace {

using Place = WindowMemory::Place;
using Order = WindowMemory::Order;
using List = WindowMemory::List;

TEST(WindowMemoryTest, WhatIsRememberedIsReadAsItWasAndNonsenseIsLeftOut) {
  const std::tuple<const char*, WindowMemory, bool> kRows[] = {
      {"120,-80,700,500,0|130,190;1,1|60",
       {Place{120, -80, 700, 500, false},
        {{{130, 190}, Order{1, true}, {}}, {{60}, std::nullopt, {}}}},
       true},
      {"1,2,300,400,0|60,70;0,0;1,0|60,70;;1,0",
       {Place{1, 2, 300, 400, false},
        {{{60, 70}, Order{0, false}, {1, 0}}, {{60, 70}, std::nullopt, {1, 0}}}},
       true},
      {"0,0,300,200,1", {Place{0, 0, 300, 200, true}, {}}, true},
      {"", {}, true},
      {"1,2,3", {}, false},
      {"1,2,30,400,0|10", {std::nullopt, {{{10}, std::nullopt, {}}}}, false},
      {"1,2,x,400,0", {}, false},
      {"99999,2,300,400,0", {}, false},
      {"|10,-1;0,0|5000;0|7;-1,0",
       {std::nullopt, {{{}, Order{0, false}, {}}, {{}, std::nullopt, {}}, {{7}, std::nullopt, {}}}},
       false},
  };
  for (const auto& [text, memory, is_as_written] : kRows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(WindowMemory::Parse(text), memory);
    if (is_as_written) {
      EXPECT_EQ(memory.Format(), text);
    }
    EXPECT_EQ(WindowMemory::Parse(memory.Format()), memory);
  }
}

TEST(ListTotalsTest, RowsAndTickedOnesAreCountedInTheUsersForm) {
  using Rows = std::vector<std::pair<bool, std::optional<double>>>;
  Locale german;
  german.decimal = ",";
  german.thousand = ".";
  const std::tuple<const char*, bool, Rows, const char*, const char*> kRows[] = {
      {"empty", true, {}, "No rows", "&Delete"},
      {"one", false, {{false, std::nullopt}}, "1 row", "&Delete"},
      {"unticked", true, {{false, 10.0}, {false, 2.0}}, "2 rows, 12 Bytes; none ticked", "&Delete"},
      {"ticked",
       true,
       {{true, 1536.0}, {false, 1e6}},
       "2 rows, 978,1 KB; 1 ticked, 1,5 KB",
       "&Delete ticked (1, 1,5 KB)"},
      {"without sizes", true, {{true, {}}, {true, {}}}, "2 rows; 2 ticked", "&Delete ticked (2)"},
      {"many", true, Rows(1204, {true, 1e6}), "1.204 rows, 1,1 GB; 1.204 ticked, 1,1 GB",
       "&Delete ticked (1.204, 1,1 GB)"},
  };
  for (const auto& [name, has_ticks, rows, text, caption] : kRows) {
    SCOPED_TRACE(name);
    ListTotals totals;
    totals.has_ticks = has_ticks;
    for (const auto& [ticked, size] : rows) totals.Add(ticked, size);
    EXPECT_EQ(TotalsText(totals, german), text);
    EXPECT_EQ(TickedCaption("&Delete", totals, german), caption);
  }
}

TEST(WindowMemoryTest, APlaceBeyondTheScreenIsBroughtOntoIt) {
  constexpr ScreenArea kScreen{0, 0, 1024, 740};
  const std::tuple<const char*, ScreenPoint, int, int, ScreenPoint> kRows[] = {
      {"on it", {100, 50}, 400, 300, {100, 50}},
      {"right and below", {5000, 3000}, 400, 300, {624, 440}},
      {"left and above", {-5000, -3000}, 400, 300, {0, 0}},
      {"half beyond", {900, -10}, 400, 300, {624, 0}},
      {"larger than the screen", {20, 20}, 2000, 1000, {0, 0}}};
  for (const auto& [name, place, width, height, is_mended] : kRows) {
    SCOPED_TRACE(name);
    const ScreenPoint mended = MendedPlace(place, width, height, kScreen);
    EXPECT_EQ(mended.left, is_mended.left);
    EXPECT_EQ(mended.top, is_mended.top);
  }
}

}  // namespace
}  // namespace quellix
