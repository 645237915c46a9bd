#include "app/low_disk.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "backup/leftovers.h"
#include "platform/error.h"
#include "platform/filetime.h"
#include "platform/text.h"
#include "settings/own_files.h"

namespace quellix {
namespace {

constexpr int64_t kBetweenLooks = 600'000'000;  // FILETIMEs of a minute
constexpr std::string_view kSection = "CleanUp", kKey = "LowDiskTime";

// Of what makes no sense 0.
int64_t ParseTime(const std::string& text) {
  int64_t time = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), time);
  return error == std::errc() && end == text.data() + text.size() && time > 0 ? time : 0;
}

}  // namespace

void LowDiskClean::Start(int16_t percent) {
  percent_ = percent;
  last_look_ = 0;
}

void LowDiskClean::Tick(const std::function<bool()>& can_clean,
                        const std::function<void()>& clean) {
  const int64_t now = machine_.system.UtcNow();
  const bool is_soon = last_look_ != 0 && std::abs(now - last_look_) < kBetweenLooks;
  if (!IsOn() || is_soon || !can_clean()) return;
  last_look_ = now;
  if (IsLow() && BeginDay(now)) clean();
}

// A drive that does not tell is not low.
bool LowDiskClean::IsLow() const {
  try {
    const std::string drive = machine_.system.WindowsFolder().substr(0, 3);
    const auto root = machine_.files.OpenFolder(drive);
    if (!root) return false;
    const DiskRoom room = root->Room();
    const auto free = static_cast<double>(room.free), size = static_cast<double>(room.size);
    const auto fills = [&](const std::string& notes) {
      return HasFiller(machine_.files, notes, drive);
    };
    return size > 0 && free * 100 < size * percent_ &&
           std::ranges::none_of(FoundFolders(machine_), fills);
  } catch (const Error&) {
    return false;
  }
}

// False while the last one goes on. A clock that was moved back begins it anew, without a run.
bool LowDiskClean::BeginDay(int64_t now) {
  try {
    settings_.RequireReadable();
    const int64_t last = ParseTime(settings_.ReadIniValue(kSection, kKey, ""));
    if (last != 0 && now >= last && now - last < kFiletimesADay) return false;
    settings_.WriteIniValue(kSection, kKey, std::to_string(now));
    return now >= last;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace quellix
