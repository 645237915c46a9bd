#pragma once

#include <functional>
#include <vector>

#include "platform/processes.h"

namespace quellix {

// Does each job in a copy of this process, at most so many at a time, and calls `ended` for each in
// the order in which they end. Ctrl-C reaches them all, and none begins any more; when this process
// is killed, they are asked to stop in the same way. Throws Error when there can be no process.
void RunProcesses(const std::vector<ProcessJob>& jobs, size_t at_once,
                  const std::function<void(size_t job, const ProcessResult& result)>& ended);

}  // namespace quellix
