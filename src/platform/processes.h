#pragma once

#include <functional>
#include <string>

namespace quellix {

// Work that a process of its own does.
struct ProcessJob {
  std::string alone;         // of jobs that have the same text here only one runs at a time
  std::function<int()> run;  // throws nothing; its exit code
};

struct ProcessResult {
  int code = -1;               // -1: it was killed, could not be begun, or was not for Ctrl-C
  std::string output, errors;  // what it wrote on standard output and error
};

}  // namespace quellix
