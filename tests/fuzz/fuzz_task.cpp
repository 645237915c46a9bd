// Tasks of the task scheduler.
#include "fuzz/check.h"
#include "platform/error.h"
#include "registry_tools/startup_tasks.h"

using namespace quellix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const ScheduledTask task = ParseTask(BytesOf(data, size));
    for (const std::string& command : task.commands) Check(command.size() <= 3 * size + 4);
  } catch (const Error&) {
    return 0;
  }
  return 0;
}
