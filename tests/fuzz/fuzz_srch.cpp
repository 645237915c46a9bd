// The search options: whatever stands in srch.txt, what was read is written and read back the same.
#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "search/drive_list.h"
#include "search/search_options.h"

using namespace quellix;

namespace {

auto Day(const std::optional<LocalTime>& date) {
  return date ? std::optional(DayNumber(*date)) : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static VolumeFile file("srch.txt");
  file.Write(BytesOf(data, size));
  const Machine machine = file.machine();
  const SearchOptions options = LoadSearchOptions(machine);
  const Locale locale = machine.system.UserLocale();
  const SearchOptions again =
      ParseSearchOptions(SearchOptionLines(options, locale, machine.system.Now()), locale);
  Check(again.drives == options.drives);
  Check(again.file_reference == options.file_reference && again.date == options.date);
  Check(!options.first_date || Day(again.first_date) == Day(options.first_date));
  Check(!options.second_date || Day(again.second_date) == Day(options.second_date));
  Check(again.size == options.size && again.size_kb == options.size_kb);
  Check(again.size_equals == options.size_equals && again.system == options.system);
  for (const std::string& root : ParseDriveLine(*options.drives)) Check(root.ends_with(":\\"));
  return 0;
}
