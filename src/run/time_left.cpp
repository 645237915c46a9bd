#include "run/time_left.h"

#include <cmath>

namespace quellix {
namespace {

constexpr uint64_t kUntilKnown = 3000;  // milliseconds
constexpr double kLeastPart = 0.01;
constexpr double kStep = 10;  // seconds

std::string About(double count, const char* unit) {
  const long whole = std::lround(count);
  return "about " + std::to_string(whole) + " " + unit + (whole == 1 ? "" : "s") + " left";
}

}  // namespace

std::string TimeLeftText(const Progress& progress, uint64_t milliseconds) {
  if (progress.total == 0 || milliseconds < kUntilKnown) return "";
  const double part = static_cast<double>(progress.done) / static_cast<double>(progress.total);
  if (part < kLeastPart || part > 1) return "";
  const double seconds = static_cast<double>(milliseconds) / 1000 * (1 - part) / part;
  if (seconds < 5) return "a few seconds left";
  if (seconds < 55) return About(kStep * std::round(seconds / kStep), "second");
  if (seconds < 55 * 60) return About(seconds / 60, "minute");
  return About(seconds / 3600, "hour");
}

}  // namespace quellix
