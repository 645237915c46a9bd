// How windows make room for texts that are longer than those of their templates.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "ui/room.h"

namespace quellix {
namespace {

RoomBox Box(double left, double right, double needs, double top = 10, double bottom = 30) {
  return {.left = left,
          .top = top,
          .right = right,
          .bottom = bottom,
          .least_width = needs,
          .least_height = bottom - top};
}

RoomBox AtRight(RoomBox box) {
  box.left_share = box.right_share = 1;
  return box;
}

RoomBox Wrapping(RoomBox box, double wrapped) {
  box.least_wrapped = wrapped;
  return box;
}

std::string Edges(const std::vector<RoomBox>& boxes) {
  std::string text;
  for (const RoomBox& box : boxes) {
    text += std::to_string(std::lround(box.left)) + "-" + std::to_string(std::lround(box.right)) +
            (box.wraps ? "w " : " ");
  }
  return text;
}

TEST(Room, IsTakenFromWhereThereIsSome) {
  const auto taken = [](std::vector<RoomBox> boxes, double limit = 400) {
    const double width = MakeWidth(boxes, 300, limit);
    return Edges(boxes) + "in " + std::to_string(std::lround(width));
  };
  const RoomBox stop = Box(20, 80, 90), save = Box(90, 150, 60), close = AtRight(Box(220, 280, 60));
  EXPECT_EQ(taken({Box(20, 80, 50), save, close}), "20-80 90-150 220-280 in 300");
  EXPECT_EQ(taken({stop, save, close}), "20-110 116-176 220-280 in 300") << "the gap gives it";
  EXPECT_EQ(taken({Box(20, 80, 60), save, AtRight(Box(220, 280, 100))}),
            "20-80 90-150 186-286 in 300")
      << "the gap gives it towards the left";
  EXPECT_EQ(taken({Box(20, 140, 200), AtRight(Box(150, 280, 130))}), "14-214 220-350 in 364")
      << "the window grows";
  EXPECT_EQ(taken({Box(20, 80, 90), Box(90, 280, 100), Box(20, 80, 40, 40, 60),
                   Box(90, 280, 100, 40, 60)}),
            "20-110 116-280 20-110 116-280 in 300")
      << "fields stay in line";
  EXPECT_EQ(taken({Wrapping(Box(20, 280, 500), 100)}), "20-280w in 300") << "a long text wraps";
  EXPECT_EQ(taken({Wrapping(Box(20, 280, 360), 100)}), "14-374 in 388") << "a shorter one does not";
  RoomBox frame = Box(5, 295, 50, 0, 100);
  EXPECT_EQ(taken({frame, Box(20, 280, 320)}), "5-346 20-340 in 354") << "its frame grows with it";
  RoomBox other = Box(60, 280, 220);
  other.page = 2;
  RoomBox one = Box(20, 50, 80);
  one.page = 1;
  EXPECT_EQ(taken({one, other}), "20-100 60-280 in 300") << "pages do not meet";
}

TEST(Room, IsMadeDownwardsAsWell) {
  RoomBox text = Box(20, 280, 260, 10, 30), list = Box(20, 280, 200, 40, 200),
          button = Box(20, 80, 60, 210, 230);
  text.least_height = 60;
  list.least_height = 100;
  list.bottom_share = button.top_share = button.bottom_share = 1;
  std::vector<RoomBox> boxes{text, list, button};
  EXPECT_EQ(MakeHeight(boxes, 240), 240);
  EXPECT_EQ(boxes[1].top, 76);
  EXPECT_EQ(boxes[1].bottom, 200);
  EXPECT_EQ(boxes[2].top, 210);
  boxes = {text, list, button};
  boxes[1].least_height = 160;
  EXPECT_NEAR(MakeHeight(boxes, 240), 272, 1e-6);
  EXPECT_NEAR(boxes[2].bottom - boxes[2].top, 20, 1e-6);
}

// Rows of controls side by side.
std::vector<RoomBox> SomeWindow(std::mt19937& random, double width) {
  const auto any = [&](int least, int most) {
    return static_cast<double>(std::uniform_int_distribution<int>(least, most)(random));
  };
  std::vector<RoomBox> boxes;
  for (double top = 10; top < 200; top += 30) {
    for (double left = any(8, 40); left < width - 60;) {
      const double right = std::min(left + any(30, 200), width - 10);
      boxes.push_back(Box(left, right, any(10, 260), top, top + 20));
      if (any(0, 3) == 0) boxes.back() = AtRight(boxes.back());
      left = right + any(1, 60);
    }
  }
  return boxes;
}

TEST(Room, LetsNothingLieUponAnother) {
  std::mt19937 random(7);
  for (int i = 0; i < 300; ++i) {
    SCOPED_TRACE(i);
    const std::vector<RoomBox> before = SomeWindow(random, 400);
    std::vector<RoomBox> boxes = before;
    const double width = MakeWidth(boxes, 400, 400);
    EXPECT_GE(width, 400);
    for (size_t a = 0; a < boxes.size(); ++a) {
      EXPECT_GE(boxes[a].right - boxes[a].left, before[a].least_width - 1e-3) << a;
      EXPECT_GE(boxes[a].left, 7.9) << a;
      EXPECT_LE(boxes[a].right, width - 9.9) << a;
      for (size_t b = a + 1; b < boxes.size() && boxes[b].top == boxes[a].top; ++b) {
        EXPECT_GT(boxes[b].left, boxes[a].right + 0.3) << a << " and " << b;
      }
      for (size_t b = 0; b < a; ++b) {
        const bool in_line =
            before[a].left == before[b].left && before[a].left_share == before[b].left_share;
        EXPECT_TRUE(!in_line || std::abs(boxes[a].left - boxes[b].left) < 1e-3) << a << ',' << b;
      }
    }
  }
}

}  // namespace
}  // namespace quellix
