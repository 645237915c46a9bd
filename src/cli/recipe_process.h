#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/console_run.h"
#include "cli/report.h"
#include "run/context.h"

namespace quellix {

// A file of the console's own system. Throws Error; `what` is what it should be: "plug-in".
std::string ReadOwnFile(const std::string& name, std::string_view what);

struct NamedRecipe {
  std::string name;
  std::function<void(CleaningContext&)> run;
};

// Carries recipes out that were named on the console, one after the other, or shows what they would
// remove; prints and reports it. Returns an ExitCode.
int ProcessRecipes(std::string_view command, const std::vector<NamedRecipe>& recipes,
                   const ReportOptions& options, const Machine& machine, RunKind kind);

}  // namespace quellix
