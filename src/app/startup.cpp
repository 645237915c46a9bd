#include "app/startup.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix {
namespace {

constexpr int64_t kFiletimesAMinute = 600'000'000;

constexpr struct {
  std::string_view text;
  StartMode mode;
} kSwitches[] = {
    {"-S", StartMode::kWithWindows}, {"-C", StartMode::kCleanNow}, {"-H", StartMode::kHidden}};

}  // namespace

StartMode ParseCommandLine(std::string_view arguments) {
  const std::string wanted = UpCase(TrimBlanks(arguments));
  for (const auto& [text, mode] : kSwitches) {
    if (wanted == text) return mode;
  }
  return StartMode::kNormal;
}

std::optional<std::string> ParseRemoval(std::string_view command_line) {
  std::string_view rest = TrimBlanks(command_line);
  const bool is_quoted = rest.starts_with('"');
  const size_t name_end = rest.find(is_quoted ? '"' : ' ', 1);
  if (name_end == rest.npos) return std::nullopt;
  rest = TrimBlanks(rest.substr(name_end + 1));
  if (!EqualsNoCase(rest.substr(0, kRemoveSwitch.size() + 1), std::string(kRemoveSwitch) + " "))
    return std::nullopt;
  rest = TrimBlanks(rest.substr(kRemoveSwitch.size()));
  if (rest.size() < 2 || !rest.starts_with('"') || !rest.ends_with('"')) return std::nullopt;
  rest = rest.substr(1, rest.size() - 2);
  const bool is_full = rest.starts_with("\\\\") || rest.substr(0, 3).ends_with(":\\");
  if (!is_full || rest.size() < 3 || rest.find('"') != rest.npos) return std::nullopt;
  return std::string(rest);
}

modShutDown::Ending TakeEnding(std::string& arguments) {
  const std::vector<std::string> words = Split(TrimBlanks(arguments), ' ');
  if (words.size() < 2 || !EqualsNoCase(words[words.size() - 2], "--then")) {
    return modShutDown::Ending::kNone;
  }
  const auto ending = modShutDown::EndingNamed(words.back());
  if (!ending) return modShutDown::Ending::kNone;
  arguments.clear();
  for (size_t i = 0; i + 2 < words.size(); ++i) arguments += (i > 0 ? " " : "") + words[i];
  return *ending;
}

bool CleansAtStart(StartMode mode, bool startup_clean) {
  return mode == StartMode::kWithWindows ? startup_clean : mode != StartMode::kNormal;
}

void AutoClean::Start(std::optional<int16_t> minutes) {
  CleanInterval = minutes;
  if (minutes) CleanInterval = std::max<int16_t>(*minutes, 0);
  IntervalStart = last_tick_ = clock_();
}

void AutoClean::Tick(const std::function<bool()>& can_clean, const std::function<void()>& clean) {
  const int64_t now = clock_();
  FollowClock(now);
  if (!IsOver(now) || !can_clean()) return;
  clean();
  IntervalStart = last_tick_ = clock_();
}

void AutoClean::FollowClock(int64_t now) {
  if (now < last_tick_) IntervalStart -= last_tick_ - now;
  last_tick_ = now;
}

// Minutes are counted as the clock shows them, so an interval is over up to a minute earlier than a
// stopwatch would tell.
bool AutoClean::IsOver(int64_t now) const {
  return CleanInterval &&
         now / kFiletimesAMinute - IntervalStart / kFiletimesAMinute > *CleanInterval;
}

}  // namespace quellix
