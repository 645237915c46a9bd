#include "ui/room.h"

#include <algorithm>
#include <cmath>

namespace quellix {
namespace {

// What is kept free at the window's borders, and between two controls, where there was as much.
constexpr double kMargin = 14, kGap = 6;
constexpr double kSame = 0.6;  // edges so near to each other are one

// The members of a box along one direction, and across it.
struct Direction {
  double RoomBox::*from, RoomBox::*to, RoomBox::*from_share, RoomBox::*to_share, RoomBox::*least;
  double RoomBox::*across_from, RoomBox::*across_to;
};
constexpr Direction kAcross{&RoomBox::left,        &RoomBox::right,       &RoomBox::left_share,
                            &RoomBox::right_share, &RoomBox::least_width, &RoomBox::top,
                            &RoomBox::bottom};
constexpr Direction kDown{&RoomBox::top,          &RoomBox::bottom,       &RoomBox::top_share,
                          &RoomBox::bottom_share, &RoomBox::least_height, &RoomBox::left,
                          &RoomBox::right};

bool IsSeen(const RoomBox& box) { return box.right - box.left >= 1 && box.bottom - box.top >= 1; }

bool MayMeet(const RoomBox& a, const RoomBox& b) {
  return a.page == 0 || b.page == 0 || a.page == b.page;
}

bool Holds(const RoomBox& outer, const RoomBox& inner) {
  return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
         outer.bottom >= inner.bottom &&
         (outer.right - outer.left) * (outer.bottom - outer.top) >
             (inner.right - inner.left) * (inner.bottom - inner.top) * 1.02;
}

// A text beside what it stands for, such as a box or a list to choose from, which is a little
// higher.
bool IsBeside(const RoomBox& tall, const RoomBox& low) {
  return tall.top <= low.top && low.bottom <= tall.bottom &&
         tall.bottom - tall.top < 2 * (low.bottom - low.top) &&
         (tall.right < low.left + kSame || low.right < tall.left + kSame);
}

// The edges of all boxes along one direction, each of which has to stay behind some others.
class Line {
 public:
  Line(const std::vector<RoomBox>& boxes, const Direction& direction, double size)
      : boxes_(boxes), direction_(direction), size_(size) {
    for (const RoomBox& box : boxes) {
      firsts_.push_back(EdgeAt(box.*direction.from, box.*direction.from_share));
      lasts_.push_back(EdgeAt(box.*direction.to, box.*direction.to_share));
    }
    for (size_t i = 0; i < boxes.size(); ++i) {
      if (!IsSeen(boxes[i])) continue;
      Keep(firsts_[i], lasts_[i], boxes[i].*direction.least);
      for (size_t j = 0; j < boxes.size(); ++j) {
        if (i != j && IsSeen(boxes[j]) && MayMeet(boxes[i], boxes[j])) Relate(i, j);
      }
    }
    earliest_ = Earliest();
  }

  // What the window needs.
  double LeastSize() const {
    double least = size_;
    for (size_t i = 0; i < edges_.size(); ++i) {
      least = std::max(least, earliest_[i] + MarginBehind(edges_[i]));
    }
    return least;
  }

  // Whether a box has no room for what it needs in a window of that size.
  bool IsTight(size_t box, double size) const {
    const std::vector<double> latest = Latest(size);
    return earliest_[lasts_[box]] > latest[lasts_[box]] + kSame ||
           earliest_[firsts_[box]] > latest[firsts_[box]] + kSame;
  }

  // Puts the edges as near to their places as can be, in a window that is large enough.
  void Place(std::vector<RoomBox>& boxes, double size) const {
    std::vector<double> at = Latest(size);
    for (size_t i = 0; i < edges_.size(); ++i) {
      at[i] = std::min(at[i], edges_[i].at + edges_[i].share * (size - size_));
    }
    Push(at);
    for (size_t i = 0; i < boxes.size(); ++i) {
      boxes[i].*direction_.from = at[firsts_[i]];
      boxes[i].*direction_.to = at[lasts_[i]];
    }
  }

 private:
  struct Edge {
    double at, share;
  };
  struct Distance {
    size_t first, second;
    double least;
  };

  size_t EdgeAt(double at, double share) {
    const auto same = std::ranges::find_if(edges_, [&](const Edge& edge) {
      return std::abs(edge.at - at) < kSame && edge.share == share;
    });
    if (same != edges_.end()) return static_cast<size_t>(same - edges_.begin());
    edges_.push_back({at, share});
    return edges_.size() - 1;
  }

  void Keep(size_t first, size_t second, double least) {
    if (first != second) distances_.push_back({first, second, least});
  }

  // The second behind the first or within it; boxes that lie upon each other take turns.
  void Relate(size_t i, size_t j) {
    const RoomBox &a = boxes_[i], &b = boxes_[j];
    const auto [from, to, from_share, to_share, least, across_from, across_to] = direction_;
    if (Holds(a, b)) {
      Keep(firsts_[i], firsts_[j], b.*from - a.*from);
      Keep(lasts_[j], lasts_[i], std::min(a.*to - b.*to, kGap));
    } else if (a.*across_from + kSame < b.*across_to && b.*across_from + kSame < a.*across_to &&
               a.*to < b.*from + kSame) {
      Keep(lasts_[i], firsts_[j], std::clamp(b.*from - a.*to, 0.0, kGap));
    } else if (least == &RoomBox::least_height && IsBeside(a, b)) {
      Keep(firsts_[i], firsts_[j], b.top - a.top);
      Keep(firsts_[j], firsts_[i], a.top - b.top);
    }
  }

  double MarginBehind(const Edge& edge) const {
    return std::min(std::max(size_ - edge.at, 0.0), kMargin);
  }

  // As many rounds as a chain of edges is long suffice.
  void Push(std::vector<double>& at) const {
    for (size_t round = 0; round < edges_.size(); ++round) {
      for (const Distance& distance : distances_) {
        at[distance.second] = std::max(at[distance.second], at[distance.first] + distance.least);
      }
    }
  }
  void Pull(std::vector<double>& at) const {
    for (size_t round = 0; round < edges_.size(); ++round) {
      for (const Distance& distance : distances_) {
        at[distance.first] = std::min(at[distance.first], at[distance.second] - distance.least);
      }
    }
  }

  std::vector<double> Earliest() const {
    std::vector<double> at;
    for (const Edge& edge : edges_) at.push_back(std::min(edge.at, kMargin));
    Push(at);
    return at;
  }

  std::vector<double> Latest(double size) const {
    std::vector<double> at;
    for (const Edge& edge : edges_) at.push_back(size - MarginBehind(edge));
    Pull(at);
    return at;
  }

  const std::vector<RoomBox>& boxes_;
  const Direction& direction_;
  double size_;
  std::vector<Edge> edges_;
  std::vector<size_t> firsts_, lasts_;  // edges, by box
  std::vector<Distance> distances_;
  std::vector<double> earliest_;
};

// The text that needs more than its template gave it most of all, where the window is too wide for
// it; null when none is left.
RoomBox* NextToWrap(std::vector<RoomBox>& boxes, const Line& line, double limit) {
  RoomBox* next = nullptr;
  const auto excess = [](const RoomBox& box) {
    const double lacks = box.least_width - (box.right - box.left);
    return box.is_button ? lacks - 10'000 : lacks;
  };
  for (size_t i = 0; i < boxes.size(); ++i) {
    RoomBox& box = boxes[i];
    const double wrapped = std::max(box.least_wrapped, box.right - box.left);
    if (box.wraps || box.least_wrapped == 0 || wrapped >= box.least_width) continue;
    if (line.IsTight(i, limit) && (!next || excess(box) > excess(*next))) next = &box;
  }
  return next;
}

}  // namespace

double MakeWidth(std::vector<RoomBox>& boxes, double width, double limit) {
  while (true) {
    const Line line(boxes, kAcross, width);
    const double least = line.LeastSize();
    RoomBox* const next = least > limit ? NextToWrap(boxes, line, limit) : nullptr;
    if (!next) {
      const double size = std::max(width, least);
      line.Place(boxes, size);
      return size;
    }
    next->wraps = true;
    next->least_width = std::max(next->least_wrapped, next->right - next->left);
  }
}

double MakeHeight(std::vector<RoomBox>& boxes, double height) {
  const Line line(boxes, kDown, height);
  const double size = std::max(height, line.LeastSize());
  line.Place(boxes, size);
  return size;
}

}  // namespace quellix
