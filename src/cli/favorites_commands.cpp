#include <filesystem>
#include <fstream>
#include <iostream>

#include "app/cleaning_run.h"
#include "browser_tools/favorites.h"
#include "cli/commands.h"
#include "cli/console_run.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::uintmax_t kLargestBookmarks = 16u << 20;  // bytes

struct FavoritesOptions {
  std::string bookmarks;  // a file of the console's own, "" for the favorites
  std::string proxy;
  bool asks = false;
  bool remove = false, preview = false;
};

std::string ReadFile(const std::string& name) {
  const std::filesystem::path path(std::u8string(name.begin(), name.end()));
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(path, error);
  if (!error && size > kLargestBookmarks)
    throw Error(Error::Kind::kOther, name + " is too large for a list of bookmarks.");
  std::ifstream file(path, std::ios::binary);
  std::string bytes(error ? 0 : size, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (error || !file) throw Error(Error::Kind::kMissing, name + " cannot be read.");
  return bytes;
}

// A row as it was listed, whatever became of it afterwards.
struct Listed {
  FavoriteRow row;
  std::string state;
  bool removed = false;
};

void Print(std::ostream& out, const FavoriteRow& row, const std::string& state) {
  const std::string place = row.place.empty() ? "" : row.place + "\\";
  out << (row.IsMarked() ? "marked" : "") << '\t' << Printable(place + row.name) << '\t'
      << Printable(row.address) << '\t' << Printable(state) << '\n';
}

ReportTable TableOf(const std::vector<Listed>& all, const FavoritesOptions& options) {
  return {.command = options.asks ? "favorites check" : "favorites list",
          .columns = {"path", "name", "folder", "address", "fault", "answer", "marked", "removed",
                      "note"},
          .count = all.size(),
          .row = [&all](size_t i) -> std::vector<ReportCell> {
            const FavoriteRow& row = all[i].row;
            return {TextCell(row.path),
                    row.name,
                    TextCell(row.place),
                    TextCell(row.address),
                    TextCell(FaultName(row.fault)),
                    TextCell(AnswerName(row.answer.state)),
                    row.IsMarked(),
                    all[i].removed,
                    TextCell(all[i].state)};
          },
          .summary = {{"preview", options.preview}}};
}

// Of what is marked alone, and never where something only did not answer.
int Delete(Favorites& favorites, ConsoleRun& run, std::vector<Listed>& all) {
  favorites.CheckMarked();
  favorites.Delete(run.engine().context(), favorites.CheckedRows());
  if (run.engine().state().IsPreview) {
    run.PrintPreview();
  } else {
    KeepRun(run.engine().context());
  }
  std::set<std::string> left;
  for (size_t i = 0; i < favorites.RowCount(); ++i) left.insert(favorites.row(i).path);
  for (Listed& each : all) each.removed = !each.row.path.empty() && !left.contains(each.row.path);
  std::cerr << favorites.stayed() << std::flush;
  if (run.engine().state().AbortRequested) return kFailed;
  return favorites.stayed().empty() ? kDone : kSomeFilesStayed;
}

int Run(const FavoritesOptions& options, const ReportOptions& report_options,
        const Machine& machine) {
  Report report(report_options);
  const bool removes = options.remove || options.preview;
  ConsoleRun run(machine, RunKindOf(removes, options.preview), report.text());
  const auto pause = [&run](const Progress&) { return run.view().Breathe(); };
  Favorites favorites(machine);
  if (options.bookmarks.empty()) {
    favorites.Load(pause);
  } else {
    favorites.LoadBookmarks(ReadFile(options.bookmarks), options.bookmarks, pause);
  }
  if (options.asks) favorites.Ask(*OpenHttp({.proxy = options.proxy}), pause);
  std::vector<Listed> all;
  for (size_t i = 0; i < favorites.RowCount(); ++i) {
    all.push_back({favorites.row(i), favorites.Text(i, FavoriteColumn::kState)});
    Print(report.text(), all[i].row, all[i].state);
  }
  std::cerr << favorites.problem() << favorites.Status() << std::endl;
  int code = favorites.problem().empty() ? kDone : kFailed;
  if (run.view().Breathe()) {
    std::cerr << "Aborted by user" << std::endl;
    code = kFailed;
  } else if (removes) {
    code = std::max(code, Delete(favorites, run, all));
  }
  return report.Finish(TableOf(all, options), code);
}

void AddOne(ConsoleCommands& commands, CLI::App& group, bool asks, const char* what) {
  const auto options = std::make_shared<FavoritesOptions>();
  options->asks = asks;
  CLI::App& command = commands.AddTo(group, asks ? "check" : "list", what,
                                     [options, &commands](const Machine& machine) {
                                       return Run(*options, commands.report_options(), machine);
                                     });
  commands.Changes(command);
  CLI::Option* const bookmarks =
      command
          .add_option("--bookmarks", options->bookmarks,
                      "List an HTML file of bookmarks that a browser exported instead")
          ->type_name("FILE");
  if (asks) {
    command
        .add_option("--proxy", options->proxy,
                    "Ask by this proxy (else as the system's settings say)")
        ->type_name("URL");
  }
  command
      .add_flag("--delete", options->remove,
                "Move what is marked into the recycle bin, or a backup (else nothing is changed)")
      ->excludes(bookmarks);
  command
      .add_flag("--preview", options->preview, "List what --delete would remove; change nothing")
      ->excludes(bookmarks);
  commands.AddReport(command);
}

}  // namespace

void AddFavoritesCommands(ConsoleCommands& commands) {
  CLI::App& favorites = commands.AddGroup(
      "favorites", "Internet shortcuts and bookmarks, and what is wrong with them");
  AddOne(commands, favorites, false,
         "List them, with duplicates, empty folders and malformed addresses marked");
  AddOne(commands, favorites, true, "The same, and ask on the web whether each address answers");
}

}  // namespace quellix
