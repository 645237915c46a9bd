#include "run/time_left.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/words.h"
#include "run/removal.h"

namespace quellix {
namespace {

constexpr uint64_t kUntilKnown = 3000, kUntilGuessed = 1000;  // milliseconds
constexpr double kLeastPart = 0.01;
constexpr double kStep = 10;  // seconds

// Whole ones: how many, and the number as text.
std::pair<uint64_t, std::string> Whole(double count) {
  const auto whole = static_cast<uint64_t>(std::lround(count));
  return {whole, std::to_string(whole)};
}

std::string SecondsText(double seconds) {
  const auto [count, number] = Whole(kStep * std::round(seconds / kStep));
  return TrN("about %1 second left", "about %1 seconds left", count, number);
}

std::string MinutesText(double seconds) {
  const auto [count, number] = Whole(seconds / 60);
  return TrN("about %1 minute left", "about %1 minutes left", count, number);
}

std::string HoursText(double seconds) {
  const auto [count, number] = Whole(seconds / 3600);
  return TrN("about %1 hour left", "about %1 hours left", count, number);
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
  // TRANSLATORS: Seconds, minutes and hours, as short as can be.
  if (seconds < 90) return Tr("%1 s left", std::to_string(std::max(std::lround(seconds), 1L)));
  if (minutes < 90) return Tr("%1 min left", std::to_string(std::lround(minutes)));
  return Tr("%1 h left", std::to_string(std::lround(minutes / 60)));
}

}  // namespace

std::string TimeLeftText(const Progress& progress, uint64_t milliseconds) {
  const std::optional<double> left = SecondsLeft(progress, milliseconds);
  if (!left || milliseconds < kUntilKnown) return "";
  const double seconds = *left;
  if (seconds < 5) return Tr("a few seconds left");
  if (seconds < 55) return SecondsText(seconds);
  if (seconds < 55 * 60) return MinutesText(seconds);
  return HoursText(seconds);
}

Progress StepsOf(const FileProgress& files) {
  if (files.all_bytes <= 0) return {.done = files.done, .total = files.total};
  return {.done = static_cast<uint64_t>(std::min(files.bytes, files.all_bytes)),
          .total = static_cast<uint64_t>(files.all_bytes)};
}

std::string ProgressText(const FileProgress& files, const Locale& locale, uint64_t milliseconds) {
  if (files.total == 0) return "";
  const std::string done = FormatCount(files.done, locale),
                    total = FormatCount(files.total, locale),
                    size = FormatSize(files.bytes, 1, true, locale);
  const std::optional<double> left = SecondsLeft(StepsOf(files), milliseconds);
  const bool is_known = left && milliseconds >= kUntilGuessed && files.done < files.total;
  // TRANSLATORS: "3,571 of 20,000, 9.6 MB, 12 s left".
  return is_known ? Tr("%1 of %2, %3, %4", done, total, size, ShortTime(*left))
                  : Tr("%1 of %2, %3", done, total, size);
}

}  // namespace quellix
