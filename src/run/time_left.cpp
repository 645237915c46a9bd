#include "run/time_left.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "run/removal.h"

namespace quellix {
namespace {

constexpr uint64_t kUntilKnown = 3000, kUntilGuessed = 1000;  // milliseconds
constexpr double kLeastPart = 0.01;
constexpr double kStep = 10;  // seconds

std::string About(double count, const char* unit) {
  const long whole = std::lround(count);
  return "about " + std::to_string(whole) + " " + unit + (whole == 1 ? "" : "s") + " left";
}

// Nothing while nobody can tell.
std::optional<double> SecondsLeft(const Progress& progress, uint64_t milliseconds) {
  if (progress.total == 0) return std::nullopt;
  const double part = static_cast<double>(progress.done) / static_cast<double>(progress.total);
  if (part < kLeastPart || part > 1) return std::nullopt;
  return static_cast<double>(milliseconds) / 1000 * (1 - part) / part;
}

std::string ShortTime(double seconds) {
  const double minutes = seconds / 60;
  if (seconds < 90) return std::to_string(std::max(std::lround(seconds), 1L)) + " s left";
  if (minutes < 90) return std::to_string(std::lround(minutes)) + " min left";
  return std::to_string(std::lround(minutes / 60)) + " h left";
}

}  // namespace

std::string TimeLeftText(const Progress& progress, uint64_t milliseconds) {
  const std::optional<double> left = SecondsLeft(progress, milliseconds);
  if (!left || milliseconds < kUntilKnown) return "";
  const double seconds = *left;
  if (seconds < 5) return "a few seconds left";
  if (seconds < 55) return About(kStep * std::round(seconds / kStep), "second");
  if (seconds < 55 * 60) return About(seconds / 60, "minute");
  return About(seconds / 3600, "hour");
}

Progress StepsOf(const FileProgress& files) {
  if (files.all_bytes <= 0) return {.done = files.done, .total = files.total};
  return {.done = static_cast<uint64_t>(std::min(files.bytes, files.all_bytes)),
          .total = static_cast<uint64_t>(files.all_bytes)};
}

std::string ProgressText(const FileProgress& files, const Locale& locale, uint64_t milliseconds) {
  if (files.total == 0) return "";
  std::string text = FormatCount(files.done, locale) + " of " + FormatCount(files.total, locale) +
                     ", " + FormatSize(files.bytes, 1, true, locale);
  const std::optional<double> left = SecondsLeft(StepsOf(files), milliseconds);
  const bool is_known = left && milliseconds >= kUntilGuessed && files.done < files.total;
  return is_known ? text + ", " + ShortTime(*left) : text;
}

}  // namespace quellix
