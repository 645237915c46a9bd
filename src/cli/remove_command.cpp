#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "app/run_table.h"
#include "cli/commands.h"
#include "cli/console_run.h"

namespace quellix {
namespace {

struct RemoveOptions {
  std::vector<std::string> paths;
  std::string method;
  bool preview = false;
};

bool HasDrive(std::string_view name) {
  return name.size() >= 2 && std::isalpha(static_cast<unsigned char>(name[0])) && name[1] == ':';
}

// Behind a drive's letter alone comes what is its current folder, which nobody means to lose.
std::string WhyNoPath(const std::string& name, bool on_volume) {
  const char* why = nullptr;
  if (name.find_first_of("*?\"<>|") != name.npos) {
    why = "names no file or folder: there are no wildcards here.";
  } else if (HasDrive(name) && (name.size() == 2 || (name[2] != '\\' && name[2] != '/'))) {
    why = "names no file or folder; write C:\\... in full.";
  } else if (on_volume && !HasDrive(name)) {
    why = "is no path of that Windows; write C:\\..., as it names it itself.";
  }
  return why ? "\"" + name + "\" " + why : "";
}

// As the machine names it that it is on.
std::string FullPath(const std::string& name, bool on_volume) {
  std::filesystem::path path(std::u8string(name.begin(), name.end()));
  if (!on_volume) path = std::filesystem::absolute(path).lexically_normal();
  const std::u8string text = path.u8string();
  std::string full(text.begin(), text.end());
  std::ranges::replace(full, '/', '\\');
  return full;
}

int Remove(const RemoveOptions& options, const ReportOptions& report_options,
           const ConsolePlatform& platform, const Machine& machine) {
  OtherChoices choices;
  for (const std::string& name : options.paths)
    choices.paths.push_back(FullPath(name, platform.works_on_volumes));
  Report report(report_options);
  ConsoleRun run(machine, options.preview ? RunKind::kPreview : RunKind::kReal, report.text());
  Engine& engine = run.engine();
  if (!options.method.empty()) engine.state().FixedRemovalMode = MethodOf(options.method);
  engine.RunOthers(choices);
  if (options.preview) run.PrintPreview();
  if (engine.state().AbortRequested) std::cerr << run.view().status() << std::endl;
  return report.Finish(TableOfRun("remove", engine.state(), options.preview), run.Outcome());
}

}  // namespace

void AddRemoveCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<RemoveOptions>();
  CLI::App& remove = commands.Add("remove", "Remove files and folders that are named by hand",
                                  [options, &commands](const Machine& machine) {
                                    return Remove(*options, commands.report_options(),
                                                  commands.platform(), machine);
                                  });
  commands.Changes(remove);
  remove.add_option("paths", options->paths, "Files, and folders with all that is in them")
      ->required()
      ->type_name("PATH")
      ->check([on_volume = commands.platform().works_on_volumes](const std::string& name) {
        return WhyNoPath(name, on_volume);
      });
  AddMethod(remove, options->method);
  remove.add_flag("--preview", options->preview, "List what would go; change nothing");
  commands.AddReport(remove);
}

}  // namespace quellix
