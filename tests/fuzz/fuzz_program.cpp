// The version of a program file, as a volume has them.
#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "platform/file_version.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static VolumeFile file("fuzzed.exe");
  file.Write(BytesOf(data, size));
  const auto version = ReadFileVersion(file.machine().files, file.path());
  Check(!version || version->company.size() <= 3 * size);
  return 0;
}
