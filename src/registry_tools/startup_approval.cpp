#include "registry_tools/startup_approval.h"

namespace quellix {
namespace {

// Its first byte tells, odd where it is off; a FILETIME ends it.
constexpr size_t kSize = 12, kTime = 4;
constexpr char kOn = 2, kOff = 3;

}  // namespace

StartupApproval ReadApproval(const RegistryValue& value) {
  if (value.type != kRegBinary || value.bytes.empty()) return {};
  StartupApproval approval{.is_on = (value.bytes[0] & 1) == 0};
  if (approval.is_on || value.bytes.size() < kSize) return approval;
  uint64_t time = 0;
  for (size_t at = kSize; at-- > kTime;)
    time = time << 8 | static_cast<unsigned char>(value.bytes[at]);
  approval.since = static_cast<int64_t>(time);
  return approval;
}

RegistryValue ApprovalOf(bool is_on, int64_t now) {
  RegistryValue value{kRegBinary, std::string(kSize, '\0')};
  value.bytes[0] = is_on ? kOn : kOff;
  for (size_t at = kTime; at < kSize && !is_on; ++at, now >>= 8)
    value.bytes[at] = static_cast<char>(now);
  return value;
}

}  // namespace quellix
