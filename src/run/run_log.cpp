#include "run/run_log.h"

#include "platform/words.h"
#include "run/removal.h"

namespace quellix {

void LogLine(RunTotals& run, std::string_view line) { run.RunLog.append(line).append("\r\n"); }

void LogNotCleaned(RunTotals& run, std::string_view path, std::string_view why) {
  LogLine(run, Log("%1 is not cleaned: %2", path, why));
}

void LogSpared(RunTotals& run, std::string_view path) {
  LogLine(run, Log("%1 is not cleaned: it is precious, or belongs to this program or its backups.",
                   path));
}

std::string FilesText(std::string_view caption, int64_t files, double bytes, const Locale& locale) {
  // TRANSLATORS: %1 is a caption that ends in "... ", or in dots alone.
  return Log("%1Files Deleted: %2 Space Gained: %3", Log(caption), std::to_string(files),
             FormatSize(bytes, 2, true, locale));
}

}  // namespace quellix
