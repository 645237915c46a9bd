#include "platform/system.h"

namespace quellix {
namespace {

constexpr int64_t kDaysTo1970 = 134774;  // from 1601
constexpr int64_t kStepsASecond = 10'000'000;

// As if the time were UTC.
int64_t Plain(const LocalTime& time) {
  const int64_t hours = (DayNumber(time) + kDaysTo1970) * 24 + time.hour;
  return ((hours * 60 + time.minute) * 60 + time.second) * kStepsASecond;
}

}  // namespace

int64_t FromLocalTime(System& system, const LocalTime& time) {
  if (!IsCalendarDate(time)) return 0;
  const int64_t wanted = Plain(time);
  int64_t result = wanted;
  // The zone's distance may differ at the first guess; an hour that is skipped has no answer.
  for (int round = 0; round < 2; ++round) result += wanted - Plain(system.ToLocalTime(result));
  return result;
}

std::string ExpandVariables(std::string_view text, const VariableValue& value_of) {
  std::string result;
  for (;;) {
    const size_t start = text.find('%');
    const size_t end = start == text.npos ? text.npos : text.find('%', start + 1);
    if (end == text.npos) return result.append(text);
    const auto value = value_of(text.substr(start + 1, end - start - 1));
    if (!value || value->empty()) return {};
    result.append(text.substr(0, start)).append(*value);
    text.remove_prefix(end + 1);
  }
}

std::string ExpandEnvironment(System& system, std::string_view text) {
  return ExpandVariables(text, [&](std::string_view name) { return system.Environment(name); });
}

}  // namespace quellix
