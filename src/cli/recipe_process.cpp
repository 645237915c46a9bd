#include "cli/recipe_process.h"

#include <filesystem>
#include <fstream>
#include <iostream>

#include "app/run_table.h"
#include "platform/error.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/stayed.h"

namespace quellix {
namespace {

constexpr uintmax_t kLargestFile = 16u << 20;  // bytes, as a machine's ReadWholeFile allows

void PrintTotals(std::ostream& out, CleaningContext& context) {
  const Locale locale = context.machine.system.UserLocale();
  out << ReplaceNoCase(context.state.RunLog, "\r", "")
      << "Files Deleted: " << context.state.FilesDeleted
      << " Space Gained: " << FormatSize(context.state.SpaceGained, 2, true, locale) << std::endl;
  for (const std::string_view sentence : StayedSentences(context.state)) {
    out << sentence << std::endl;
  }
  const std::string wiped = WipedLine(context.state);
  if (!wiped.empty()) out << ReplaceNoCase(wiped.substr(4), "\r", "") << std::endl;
  const std::string names = StayedNames(context.state, kNamesSaved);
  if (!names.empty()) out << ReplaceNoCase(names, "\r", "") << std::endl;
}

}  // namespace

std::string ReadOwnFile(const std::string& name, std::string_view what) {
  const std::filesystem::path path(std::u8string(name.begin(), name.end()));
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) {
    throw Error(Error::Kind::kMissing, "there is no " + std::string(what) + " \"" + name + "\".");
  }
  if (size > kLargestFile) throw Error(Error::Kind::kOther, "\"" + name + "\" is too large.");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

int ProcessRecipes(std::string_view command, const std::vector<NamedRecipe>& recipes,
                   const ReportOptions& options, const Machine& machine, RunKind kind) {
  Report report(options);
  ConsoleRun run(machine, kind, report.text());
  Engine& engine = run.engine();
  for (const NamedRecipe& recipe : recipes) {
    engine.state().Entries->BeginRule(recipe.name);
    recipe.run(engine.context());
    if (engine.state().AbortRequested) {
      std::cerr << "Aborted by user" << std::endl;
      break;
    }
  }
  const bool preview = kind == RunKind::kPreview;
  if (preview) {
    run.PrintPreview();
  } else {
    CloseBackup(engine.context());
    PrintTotals(report.text(), engine.context());
    // What the log says stands in a message of the window.
    engine.state().SomeErrors |= !engine.state().RunLog.empty();
  }
  return report.Finish(TableOfRun(command, engine.state(), preview), run.Outcome());
}

}  // namespace quellix
