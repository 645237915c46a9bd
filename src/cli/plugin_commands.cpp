#include <algorithm>

#include "cli/commands.h"
#include "cli/recipe_process.h"
#include "platform/error.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/mod_plugin.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_list.h"

namespace quellix {
namespace {

using modPlugin::InstalledPlugin;
using Names = std::vector<std::string>;

constexpr std::string_view kExtension = ".cdp";

std::string WithExtension(const std::string& name) {
  const bool has = name.size() > kExtension.size() &&
                   EqualsNoCase(std::string_view(name).substr(name.size() - 4), kExtension);
  return has ? name : name + std::string(kExtension);
}

std::string ReadPlugin(const Machine& machine, const std::string& name) {
  if (name.find_first_of("\\/:") == std::string::npos) {
    for (const std::string& file : {name, WithExtension(name)}) {
      const std::string path = modPlugin::PluginPath(machine, file);
      if (path.empty()) continue;
      if (auto bytes = machine.files.ReadWholeFile(path)) return *bytes;
    }
  }
  return ReadOwnFile(name, "plug-in");
}

auto FindPlugin(std::vector<InstalledPlugin>& plugins, const std::string& file) {
  return std::ranges::find_if(
      plugins, [&file](const InstalledPlugin& plugin) { return EqualsNoCase(plugin.file, file); });
}

int List(const ReportOptions& options, const Machine& machine) {
  Report report(options);
  const std::vector<InstalledPlugin> plugins = modPlugin::ReadPluginList(machine);
  std::vector<modPlugin::PluginGuide> guides;
  for (const InstalledPlugin& plugin : plugins) {
    const auto& guide = guides.emplace_back(modPlugin::ReadGuide(machine, plugin.file));
    report.text() << (plugin.ticked ? "[x] " : "[ ] ") << plugin.file << "  " << plugin.description
                  << (guide.group.empty() ? "" : "; " + guide.group)
                  << (guide.cost.empty() ? "" : "; costs: " + guide.cost)
                  << (guide.is_found ? "\n" : "; not found here\n");
  }
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    return {plugins[i].file,           TextCell(plugins[i].description), plugins[i].ticked,
            TextCell(guides[i].group), TextCell(guides[i].cost),         guides[i].loses_data,
            guides[i].is_found};
  };
  return report.Finish(
      {.command = "plugins list",
       .columns = {"file", "description", "ticked", "group", "cost", "losesData", "found"},
       .count = plugins.size(),
       .row = row,
       .summary = {}},
      kDone);
}

int Check(const Names& names, const ReportOptions& options, const Machine& machine) {
  Report report(options);
  std::vector<std::pair<std::string, modPlugin::Remark>> remarks;
  int code = kDone;
  for (const std::string& name : names) {
    if (names.size() > 1) report.text() << name << "\n";
    for (const auto& remark : modPlugin::CheckPlugin(machine, ReadPlugin(machine, name))) {
      if (remark.line != 0) report.text() << "line " << remark.line << ": ";
      report.text() << (remark.is_fault ? "fault: " : "") << remark.text << "\n";
      if (remark.is_fault) code = kFailed;
      remarks.emplace_back(name, remark);
    }
  }
  const auto row = [&](size_t i) -> std::vector<ReportCell> {
    const auto& [name, remark] = remarks[i];
    return {name, static_cast<uint64_t>(remark.line), remark.is_fault, remark.text};
  };
  return report.Finish({.command = "plugins check",
                        .columns = {"file", "line", "isFault", "text"},
                        .count = remarks.size(),
                        .row = row,
                        .summary = {}},
                       code);
}

int Process(const Names& names, const ReportOptions& options, const Machine& machine,
            RunKind kind) {
  std::vector<NamedRecipe> recipes;
  for (const std::string& name : names) {
    const std::string text = DecodeText(ReadPlugin(machine, name), machine.system);
    recipes.push_back({name, [plugin = modPlugin::ParsePlugin(text)](CleaningContext& context) {
                         modPlugin::RunRecords(context, plugin);
                       }});
  }
  return ProcessRecipes("plugins process", recipes, options, machine, kind);
}

int Switch(const Names& names, const Machine& machine, bool on) {
  std::vector<InstalledPlugin> plugins = modPlugin::ReadPluginList(machine);
  for (const std::string& name : names) {
    const std::string file = WithExtension(name);
    auto found = FindPlugin(plugins, file);
    if (found == plugins.end()) {
      const std::string path = modPlugin::PluginPath(machine, file);
      const auto plugin = path.empty() ? std::nullopt : modPlugin::LoadPluginFile(machine, path);
      if (!plugin) return Fail("there is no plug-in \"" + file + "\".", kWrongUsage);
      found = plugins.insert(plugins.end(), {on, file, plugin->description});
    }
    found->ticked = on;
  }
  modPlugin::WritePluginList(machine, plugins);
  return kDone;
}

}  // namespace

// FILE is a plug-in of the folder Plugins or a path of the console's own.
void AddPluginCommands(ConsoleCommands& commands) {
  CLI::App& plugins = commands.AddGroup("plugins", "Work with plug-ins, the recipes of users");
  commands.AddReport(commands.AddTo(
      plugins, "list", "List the installed plug-ins",
      [&commands](const Machine& machine) { return List(commands.report_options(), machine); }));
  const auto names = std::make_shared<Names>();
  const auto preview = std::make_shared<bool>(false);
  const auto add = [&](const char* name, const char* argument, const char* what,
                       const std::function<int(const Machine&)>& action) -> CLI::App& {
    CLI::App& command = commands.AddTo(plugins, name, what, action);
    command.add_option("names", *names, "Plug-ins")->required()->type_name(argument);
    return command;
  };
  const auto process = [names, &commands](const Machine& machine, RunKind kind) {
    return Process(*names, commands.report_options(), machine, kind);
  };
  commands.AddReport(add("check", "FILE", "Explain each line of a plug-in and name its faults",
                         [names, &commands](const Machine& machine) {
                           return Check(*names, commands.report_options(), machine);
                         }));
  CLI::App& preview_run =
      add("preview", "FILE", "List what the named plug-ins would remove",
          [process](const Machine& machine) { return process(machine, RunKind::kPreview); });
  commands.Changes(preview_run);
  commands.AddReport(preview_run);
  CLI::App& run = add("process", "FILE", "Clean by the named plug-ins",
                      [process, preview](const Machine& machine) {
                        return process(machine, *preview ? RunKind::kPreview : RunKind::kReal);
                      });
  commands.Changes(run);
  run.add_flag("--preview", *preview, "List what would go; change nothing");
  commands.AddReport(run);
  add("enable", "NAME", "Let the item CleanPlugins use a plug-in",
      [names](const Machine& machine) { return Switch(*names, machine, true); });
  add("disable", "NAME", "Keep the item CleanPlugins from using it",
      [names](const Machine& machine) { return Switch(*names, machine, false); });
}

}  // namespace quellix
