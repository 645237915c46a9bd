// List files: whatever bytes stand in one, each line is an entry, what was read is written and read
// back the same, and the searches' lists can be asked.
#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "search/ignore_lists.h"
#include "settings/list_files.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static VolumeFile file("UDIFO.txt");
  file.Write(BytesOf(data, size));
  const Machine machine = file.machine();
  const std::vector<std::string> entries = ReadListFile(machine, "UDIFO.txt");
  const IgnoreLists lists(entries, entries, entries);
  for (const std::string& entry : entries) {
    Check(entry.find('\n') == std::string::npos);
    Check(entry.empty() || (lists.IsIgnoredFile(entry) && lists.IsIgnoredFolder(entry)));
  }
  if (!entries.empty() && entries[0].starts_with("\xEF\xBB\xBF")) return 0;  // a second mark
  WriteListFile(machine, "UDIFO.txt", entries);
  Check(ReadListFile(machine, "UDIFO.txt") == entries);
  return 0;
}
