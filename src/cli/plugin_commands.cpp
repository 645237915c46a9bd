#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "platform/error.h"
#include "platform/profile_strings.h"
#include "platform/text.h"
#include "plugins/mod_plugin.h"
#include "plugins/plugin_check.h"
#include "plugins/plugin_list.h"
#include "run/removal.h"
#include "run/run_steps.h"
#include "run/stayed.h"

namespace quellix {
namespace {

using modPlugin::InstalledPlugin;
using Names = std::vector<std::string>;

constexpr std::string_view kExtension = ".cdp";
constexpr uintmax_t kLargestFile = 16u << 20;  // bytes, as a machine's ReadWholeFile allows

std::string WithExtension(const std::string& name) {
  const bool has = name.size() > kExtension.size() &&
                   EqualsNoCase(std::string_view(name).substr(name.size() - 4), kExtension);
  return has ? name : name + std::string(kExtension);
}

// A file of the console's own system.
std::string ReadOwnFile(const std::string& name) {
  const std::filesystem::path path(std::u8string(name.begin(), name.end()));
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) {
    throw Error(Error::Kind::kMissing, "there is no plug-in \"" + name + "\".");
  }
  if (size > kLargestFile) throw Error(Error::Kind::kOther, "\"" + name + "\" is too large.");
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string ReadPlugin(const Machine& machine, const std::string& name) {
  if (name.find_first_of("\\/:") == std::string::npos) {
    for (const std::string& file : {name, WithExtension(name)}) {
      const std::string path = modPlugin::PluginPath(machine, file);
      if (path.empty()) continue;
      if (auto bytes = machine.files.ReadWholeFile(path)) return *bytes;
    }
  }
  return ReadOwnFile(name);
}

auto FindPlugin(std::vector<InstalledPlugin>& plugins, const std::string& file) {
  return std::ranges::find_if(
      plugins, [&file](const InstalledPlugin& plugin) { return EqualsNoCase(plugin.file, file); });
}

void PrintTotals(CleaningContext& context) {
  std::string text = context.state.RunLog;
  std::erase(text, '\r');
  const Locale locale = context.machine.system.UserLocale();
  std::cout << text << "Files Deleted: " << context.state.FilesDeleted
            << " Space Gained: " << FormatSize(context.state.SpaceGained, 2, true, locale)
            << std::endl;
  for (const std::string_view sentence : StayedSentences(context.state)) {
    std::cout << sentence << std::endl;
  }
  std::string names = StayedNames(context.state, RunState::kMostStayed);
  std::erase(names, '\r');
  if (!names.empty()) std::cout << names << std::endl;
}

int List(const Machine& machine) {
  for (const InstalledPlugin& plugin : modPlugin::ReadPluginList(machine)) {
    std::cout << (plugin.ticked ? "[x] " : "[ ] ") << plugin.file << "  " << plugin.description
              << "\n";
  }
  std::cout << std::flush;
  return kDone;
}

int Check(const Names& names, const Machine& machine) {
  int code = kDone;
  for (const std::string& name : names) {
    if (names.size() > 1) std::cout << name << "\n";
    for (const auto& remark : modPlugin::CheckPlugin(machine, ReadPlugin(machine, name))) {
      if (remark.line != 0) std::cout << "line " << remark.line << ": ";
      std::cout << (remark.is_fault ? "fault: " : "") << remark.text << "\n";
      if (remark.is_fault) code = kFailed;
    }
  }
  std::cout << std::flush;
  return code;
}

int Process(const Names& names, const Machine& machine, RunKind kind) {
  ConsoleRun run(machine, kind);
  Engine& engine = run.engine();
  std::vector<modPlugin::Plugin> plugins;  // all are read before the first one cleans
  for (const std::string& name : names) {
    plugins.push_back(
        modPlugin::ParsePlugin(DecodeText(ReadPlugin(machine, name), machine.system)));
  }
  for (const modPlugin::Plugin& plugin : plugins) {
    modPlugin::RunRecords(engine.context(), plugin);
    if (engine.state().AbortRequested) {
      std::cerr << "Aborted by user" << std::endl;
      break;
    }
  }
  if (kind == RunKind::kPreview) {
    run.PrintPreview();
  } else {
    CloseBackup(engine.context());
    PrintTotals(engine.context());
    // What the log says stands in a message of the window.
    engine.state().SomeErrors |= !engine.state().RunLog.empty();
  }
  return run.Outcome();
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
  commands.AddTo(plugins, "list", "List the installed plug-ins", List);
  const auto names = std::make_shared<Names>();
  const auto add = [&](const char* name, const char* argument, const char* what,
                       std::function<int(const Names&, const Machine&)> action) {
    commands
        .AddTo(plugins, name, what, [=](const Machine& machine) { return action(*names, machine); })
        .add_option("names", *names, "Plug-ins")
        ->required()
        ->type_name(argument);
  };
  add("check", "FILE", "Explain each line of a plug-in and name its faults", Check);
  add("preview", "FILE", "List what the named plug-ins would remove",
      [](const Names& n, const Machine& m) { return Process(n, m, RunKind::kPreview); });
  add("process", "FILE", "Clean by the named plug-ins",
      [](const Names& n, const Machine& m) { return Process(n, m, RunKind::kReal); });
  add("enable", "NAME", "Let the item CleanPlugins use a plug-in",
      [](const Names& n, const Machine& m) { return Switch(n, m, true); });
  add("disable", "NAME", "Keep the item CleanPlugins from using it",
      [](const Names& n, const Machine& m) { return Switch(n, m, false); });
}

}  // namespace quellix
