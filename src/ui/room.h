#pragma once

#include <vector>

namespace quellix {

// A control where its window's template has it, and the room that its text needs. All lengths are
// in units of 96 DPI.
struct RoomBox {
  double left, top, right, bottom;
  // The share (0 to 1) of the window's growth that each edge takes.
  double left_share = 0, top_share = 0, right_share = 0, bottom_share = 0;
  double least_width = 0, least_height = 0;
  // On several lines its text needs less width; 0 for one that stays on its line.
  double least_wrapped = 0;
  bool is_button = false;  // wraps last
  int page = 0;  // controls of different pages are not shown together; those of page 0 always are
  bool wraps = false;
};

// Moves the edges of controls apart so that each has its least width: what is in line stays in
// line, what was apart or within another stays so, and who has room to spare gives it up. The
// window becomes wider where that is not enough; texts wrap where it would become wider than
// `limit`. Returns its width.
double MakeWidth(std::vector<RoomBox>& boxes, double width, double limit);

// The same for heights. A window has no limit there.
double MakeHeight(std::vector<RoomBox>& boxes, double height);

}  // namespace quellix
