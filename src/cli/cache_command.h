#pragma once

#include <string>

#include "cli/console.h"

namespace CLI {
class App;
}

namespace quellix {

// "quellixctl cache": lists and deletes the entries of the browser cache.
class CacheCommand {
 public:
  CacheCommand(CLI::App& app, const ConsolePlatform& platform);

  bool IsParsed() const;
  // Does the command that was parsed; returns an ExitCode. Throws Error.
  int Run();

 private:
  CLI::App* AddCommand(const char* name, const char* what);

  const ConsolePlatform& platform_;
  MachineOptions machine_;
  std::string kind_ = "all";
  CLI::App* cache_;
  CLI::App* list_;
  CLI::App* delete_;
};

}  // namespace quellix
