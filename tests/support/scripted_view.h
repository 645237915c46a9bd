#pragma once

#include "run/item.h"
#include "run/views.h"
#include "search/results_view.h"
#include "support/holds.h"

namespace quellix {

// Records what a run shows and plays the user: `on_status` and `on_pause` may press Stop.
struct ScriptedView : RunView, ResultsView {
  std::function<void()> on_pause;
  bool stops = false;  // what each pause says
  size_t pauses = 0;
  std::function<void(const std::string&)> on_status;

  // What the user does in the results window before closing it; without it nobody can review.
  std::function<void(SearchResults&)> on_results;

  Names statuses;
  Names criticals, questions;
  bool goes_on = true;  // the answer to each
  std::vector<ProgramQuestion> programs;
  std::function<ProgramAnswer()> on_program;  // without it they are skipped
  Names items;                                // keys, in the order shown
  std::vector<ProgressBar> bars;
  std::vector<FileProgress> files;  // the first of them
  Commands commands;
  bool current_item_shown = false;
  std::string last_cleaned;
  std::optional<RunReport> report, kept;

  bool Breathe() override {
    ++pauses;
    if (on_pause) on_pause();
    return stops;
  }
  void SetStatus(std::string_view text) override {
    statuses.emplace_back(text);
    if (on_status) on_status(statuses.back());
  }
  void SetProgress(const ProgressBar& bar) override { bars.push_back(bar); }
  void ShowFiles(const FileProgress& shown) override {
    if (files.size() < 10000) files.push_back(shown);
  }
  void SetCommands(const Commands& now) override { commands = now; }
  void ShowCurrentItem(const Item* item) override {
    current_item_shown = item != nullptr;
    if (item != nullptr) items.emplace_back(item->key);
  }
  void ShowLastCleaned(std::string_view text) override { last_cleaned = text; }
  void ShowCritical(std::string_view text) override { criticals.emplace_back(text); }
  bool AskToGoOn(std::string_view question) override {
    questions.emplace_back(question);
    return goes_on;
  }
  ProgramAnswer AskAboutProgram(const ProgramQuestion& question) override {
    programs.push_back(question);
    return on_program ? on_program() : ProgramAnswer::kSkip;
  }
  void ShowReport(const RunReport& shown) override {
    report = shown;
    report->log = WithoutFreeSpace(shown.log);
  }
  void KeepReport(const RunReport& hidden) override { kept = hidden; }
  bool OpenResults(SearchResults& opened) override {
    results = &opened;
    ++results_opened;
    return on_results != nullptr;
  }
  void AwaitResults() override { on_results(*results); }

  SearchResults* results = nullptr;  // open until AwaitResults ends
  int results_opened = 0;
};

}  // namespace quellix
