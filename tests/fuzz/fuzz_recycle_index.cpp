// The records of a recycle bin, as a volume has them.
#include "fuzz/check.h"
#include "platform/error.h"
#include "platform/recycle_index.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const RecycleIndex index = ReadRecycleIndex(BytesOf(data, size));
  for (const int version : {1, 2}) {
    try {
      // What was read is written so that it is read again.
      const RecycleIndex again = ReadRecycleIndex(WriteRecycleIndex(version, index));
      Check(again.size == index.size && again.deleted == index.deleted && again.path == index.path);
    } catch (const NotAvailable&) {
      continue;
    }
  }
  return 0;
}
