#pragma once

#include <functional>
#include <vector>

#include "platform/processes.h"

namespace quellix {

// Does each job in a copy of this process, at most so many at a time, and calls `ended` for each in
// the order in which they end; one that cannot be begun failed, and says why. Ctrl-C, or SIGINT to
// this process alone, reaches them all, and none begins any more; when this process is killed, they
// are asked to stop in the same way.
void RunProcesses(const std::vector<ProcessJob>& jobs, size_t at_once,
                  const std::function<void(size_t job, const ProcessResult& result)>& ended);

}  // namespace quellix
