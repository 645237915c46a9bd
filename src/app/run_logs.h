#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "run/run_state.h"

namespace quellix {

// The runs that are kept for later reading: reports as quellixctl writes them, in the folder Logs
// of the program folder, a file a run, named by its time ("2026-11-22 09.30.00.json"). They name
// what was removed and never hold contents. Those that a copy with other rights kept beside the
// program are among them; only that copy removes them.
class RunLogs {
 public:
  explicit RunLogs(const Machine& machine);

  // Keeps a run and the newest before it, `most` in all; the older ones go, with 0 all. Throws
  // Error when that could not be done; the other runs are as they were, or fewer. What of the older
  // ones stayed is returned, "" for nothing, in the language of logs.
  std::string Keep(const RunTotals& totals, int most);
  // Newest first; none when the folder cannot be listed.
  std::vector<std::string> List() const;
  // A name as people read it: "2026-11-22 09:30:00".
  static std::string TitleOf(const std::string& name);
  // Throws Error when there is no such run, or it cannot be read.
  RunTotals Read(const std::string& name) const;

 private:
  bool HasRun(const std::string& folder, const std::string& name) const;
  std::string FreeName() const;
  std::string RemoveOld(const std::string& kept, size_t most);

  Machine machine_;
  std::vector<std::string> folders_;  // each ends in "\"; the first is written to
};

}  // namespace quellix
