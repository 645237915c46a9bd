// Catalogues of texts, which a translator may be trying.
#include "fuzz/check.h"
#include "platform/error.h"
#include "platform/words.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const Catalogue catalogue{std::string(BytesOf(data, size))};
    Check(catalogue.Of("") == "");
    for (const char* text : {"&Clean", "Stop", "a", "\xFF"}) Check(!catalogue.Of(text).empty());
    for (const uint64_t count : {0, 1, 2, 5, 22, 1000000}) {
      Check(catalogue.Of("%1 file", "%1 files", count).size() <= size + 8);
    }
    Check(catalogue.Field("Language").size() <= size);
  } catch (const Error&) {
    // It is English then.
  }
  return 0;
}
