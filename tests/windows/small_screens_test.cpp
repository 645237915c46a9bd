// Every window on the smallest screens: 800x600 at 100 %, and 1366x768 at 150 %.
#include <gtest/gtest.h>

#include <algorithm>

#include "all_windows.h"
#include "list_windows.h"

namespace quellix::test {
namespace {

constexpr SIZE kSmall{800, 600}, kLarge{1366 * 2 / 3, 768 * 2 / 3};  // in pixels at 96 DPI

SIZE SizeOf(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  return {place.right - place.left, place.bottom - place.top};
}

struct SmallScreenTest : testing::TestWithParam<WindowCase> {
  const SeededLists seeded_;
};

TEST_P(SmallScreenTest, FitsAndKeepsRoomForAllThatIsInIt) {
  WriteSettings("Ask=1\r\nDelMethod=B\r\n");
  const QuellixWindow program;
  const HWND window = GetParam().open(program);
  ASSERT_TRUE(window && IsWindowVisible(window));
  ExpectRoom(window);
  // As small as it goes.
  const bool is_sizable = (GetWindowLongW(window, GWL_STYLE) & WS_THICKFRAME) != 0;
  if (is_sizable) SetWindowPos(window, nullptr, 0, 0, 1, 1, SWP_NOMOVE | SWP_NOZORDER);
  const SIZE least = SizeOf(window);
  EXPECT_LE(least.cx, std::min(kSmall.cx, kLarge.cx));
  EXPECT_LE(least.cy, std::min(kSmall.cy, kLarge.cy));
  ExpectRoom(window);
  ForEachPage(window, [window] { ExpectRoom(window); });
}

INSTANTIATE_TEST_SUITE_P(Windows, SmallScreenTest,
                         testing::ValuesIn(WindowCases().begin(), WindowCases().end()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace quellix::test
