#include <iomanip>
#include <iostream>

#include "cli/commands.h"
#include "cli/console_run.h"
#include "platform/error.h"

namespace quellix {
namespace {

using Fact = SurveyedVolume::Fact;

void Print(std::ostream& out, const SurveyedVolume& volume) {
  out << Printable(volume.place) << "\n";
  for (const Fact& fact : volume.facts) {
    if (fact.value.empty()) continue;
    const std::string name = fact.name.empty() ? "" : fact.name + "  ";
    out << "  " << std::left << std::setw(12) << fact.kind << Printable(name + fact.value) << "\n";
  }
}

// A place that cannot be looked at does not hide the others.
SurveyedVolume Survey(const std::string& place, const ConsolePlatform& platform, int& code) {
  try {
    return platform.survey(place);
  } catch (const Error& error) {
    code = kFailed;
    SurveyedVolume volume;
    volume.place = place;
    volume.Add(SurveyedVolume::kHindrance, "", error.what());
    return volume;
  }
}

struct Row {
  const SurveyedVolume* volume;
  const Fact* fact;
};

int ListVolumes(std::vector<std::string> places, const ConsolePlatform& platform,
                const ReportOptions& options) {
  Report report(options);
  const bool are_named = !places.empty();
  if (!are_named) places = platform.mounted_places();
  int code = kDone;
  std::vector<SurveyedVolume> volumes;
  for (const std::string& place : places) {
    SurveyedVolume volume = Survey(place, platform, code);
    if (are_named || volume.has_windows) volumes.push_back(std::move(volume));
  }
  std::vector<Row> rows;
  uint64_t found = 0;
  for (const SurveyedVolume& volume : volumes) {
    Print(report.text(), volume);
    found += volume.has_windows ? 1 : 0;
    for (const Fact& fact : volume.facts) rows.push_back({&volume, &fact});
  }
  if (volumes.empty()) report.text() << "No disk that is mounted here holds a Windows.\n";
  const auto row = [&rows](size_t i) -> std::vector<ReportCell> {
    const auto& [volume, fact] = rows[i];
    return {volume->place, fact->kind, TextCell(fact->name), TextCell(fact->value)};
  };
  return report.Finish({.command = "volumes",
                        .columns = {"volume", "fact", "name", "value"},
                        .count = rows.size(),
                        .row = row,
                        .summary = {{"windows", found}}},
                       found == 0 ? kFailed : code);
}

}  // namespace

void AddVolumesCommand(ConsoleCommands& commands) {
  if (!commands.platform().survey) return;
  const auto places = std::make_shared<std::vector<std::string>>();
  CLI::App& volumes = commands.AddPlain(
      "volumes", "Tell what Windows is where, and what stands in the way of cleaning it",
      [places, &commands] {
        return ListVolumes(*places, commands.platform(), commands.report_options());
      });
  volumes
      .add_option("places", *places,
                  "Folders disks are mounted in, images or devices (else all that is mounted)")
      ->type_name("PLACE");
  commands.AddReport(volumes);
}

}  // namespace quellix
