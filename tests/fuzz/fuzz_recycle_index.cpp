// The records of a recycle bin, as a volume has them.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/error.h"
#include "platform/volume/recycle_index.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const RecycleIndex index = ReadRecycleIndex({reinterpret_cast<const char*>(data), size});
  for (const int version : {1, 2}) {
    try {
      // What was read is written so that it is read again.
      const RecycleIndex again = ReadRecycleIndex(WriteRecycleIndex(version, index));
      if (again.size != index.size || again.deleted != index.deleted || again.path != index.path) {
        std::abort();
      }
    } catch (const NotAvailable&) {
      continue;
    }
  }
  return 0;
}
