#include "run/run_limits.h"

#include "platform/filetime.h"
#include "run/stayed.h"
#include "run/working_folder.h"

namespace quellix {

RunLimits::RunLimits(CleaningContext& context) : context_(context), keep_(KeepOf(context)) {
  const int64_t days = context.state.OlderThanDays;
  if (days > 0) written_before_ = context.machine.system.UtcNow() - days * kFiletimesADay;
}

bool RunLimits::IsKept(Folder* folder, const std::string& path, std::string_view name) {
  if (keep_.empty()) return false;
  const std::string file = path + std::string(name);
  const std::string_view line =
      folder ? keep_.ForFile(*folder, folder->Id(), file) : keep_.ForPath(file);
  if (!line.empty()) NoteKept(context_.state, file, line);
  return !line.empty();
}

}  // namespace quellix
