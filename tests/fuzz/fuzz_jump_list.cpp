// Jump lists, which any program may write.
#include "cleaners/compound_file.h"
#include "cleaners/jump_list.h"
#include "fuzz/check.h"
#include "platform/error.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view file = BytesOf(data, size);
  const Pins custom = PinsOf("a.customDestinations-ms", file);
  Check(custom != Pins::kSome);
  const Pins automatic = PinsOf("a.automaticDestinations-ms", file);
  try {
    const auto list = ReadStream(file, "DestList");
    Check(!list || list->size() <= file.size());
    Check(list || automatic == Pins::kUnknown);
  } catch (const Error&) {
    Check(automatic == Pins::kUnknown || file.empty());
  }
  return 0;
}
