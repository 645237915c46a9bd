#include <iostream>

#include "app/updates.h"
#include "cli/commands.h"
#include "cli/console_run.h"

namespace quellix {
namespace {

struct UpdateOptions {
  std::string server, proxy;
};

std::string_view NameOf(UpdateResult result) {
  constexpr std::string_view kNames[] = {"new", "none", "unreachable", "noServer"};
  return kNames[static_cast<size_t>(result)];
}

int Check(const UpdateOptions& options, UpdateSource source, const ReportOptions& report_options) {
  Report report(report_options);
  if (!options.server.empty()) source.server = options.server;
  ConsoleView view;
  const UpdateCheck check = CheckForUpdate(*OpenHttp({.proxy = options.proxy}), source,
                                           [&view](const Progress&) { return view.Breathe(); });
  report.text() << check.Text();
  const bool is_known = check.result == UpdateResult::kNew || check.result == UpdateResult::kNone;
  return report.Finish({.command = "update check",
                        .columns = {"result", "version", "current", "news", "note"},
                        .count = 1,
                        .row = [&](size_t) -> std::vector<ReportCell> {
                          return {std::string(NameOf(check.result)), TextCell(check.version),
                                  source.version, TextCell(check.news), TextCell(check.problem)};
                        },
                        .summary = {}},
                       is_known ? kDone : kFailed);
}

}  // namespace

// What it asks for is this program's own: of a volume no more than its settings would be of use.
void AddUpdateCommand(ConsoleCommands& commands) {
  const auto options = std::make_shared<UpdateOptions>();
  CLI::App& update = commands.AddGroup("update", "New versions of this program");
  CLI::App* check = nullptr;
  constexpr const char* kWhat = "Ask the server whether there is a newer version";
  if (commands.platform().works_on_volumes) {
    check = &commands.AddPlainTo(update, "check", kWhat, [options, &commands] {
      return Check(*options, {.server = {}, .key = {}, .version = std::string(CurrentVersion())},
                   commands.report_options());
    });
  } else {
    check = &commands.AddTo(update, "check", kWhat, [options, &commands](const Machine& machine) {
      return Check(*options, UpdateSourceOf(machine), commands.report_options());
    });
  }
  CLI::Option* const server =
      check
          ->add_option("--server", options->server, "The server to ask (else that of Settings.ini)")
          ->type_name("URL");
  if (commands.platform().works_on_volumes) server->required()->description("The server to ask");
  check
      ->add_option("--proxy", options->proxy,
                   "Ask by this proxy (else as the system's settings say)")
      ->type_name("URL");
  commands.AddReport(*check);
}

}  // namespace quellix
