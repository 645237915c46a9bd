// Copies of registry entries: what is read of them is written and read again as it was, however
// the file ends.
#include "backup/reg_file.h"
#include "fuzz/check.h"
#include "platform/error.h"

using namespace quellix;

namespace {

std::string Written(const RegFile& file) {
  RegFileText text;
  for (const RegFileKey& key : file.keys) {
    text.AddKey(key.root, key.path);
    for (const auto& [name, value] : key.values) text.AddValue(name, value);
  }
  return RegFileHeader() + text.Bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes = BytesOf(data, size);
  try {
    const std::string written = Written(ParseRegFile(bytes));
    const RegFile again = ParseRegFile(written);
    Check(!again.is_cut_off && Written(again) == written);
  } catch (const Error&) {
    return 0;
  }
  return 0;
}
