// The runs that the main window starts, and looks ahead at.
#include "app/cleaning_run.h"
#include "app/entry_list.h"
#include "app/preview_run.h"
#include "app/rights.h"
#include "app/run_report.h"
#include "platform/locale.h"
#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "plugins/plugin_manager.h"
#include "run/run_steps.h"
#include "ui/frm_main.h"
#include "ui/resource.h"

namespace quellix {
namespace {

// Files and folders that Explorer's menu names one by one, at a time.
constexpr size_t kMostNamed = 10'000;

// The second is for whoever asked during the first.
constexpr int kMostHiddenRuns = 2;

}  // namespace

// Nobody is told anything; so where settings or ticked items could not be read, nothing is removed.
void FrmMain::RunHidden() {
  RunState& state = engine_.state();
  state.Hidden = true;
  exit_code_ = kFailed;
  if (engine_.is_loaded()) {
    ExitCode code = kDone;
    int runs = 0;
    do {
      // One more is for all that other starts ask for meanwhile.
      is_asked_ = false;
      takes_requests_ = ++runs < kMostHiddenRuns;
      Run([this] { engine_.RunCleaning(); });
      if (code == kDone) code = ExitCodeOf(state);
    } while (is_asked_ && window() && !IsWindowVisible(window()));
    takes_requests_ = window() && IsWindowVisible(window());
    exit_code_ = code;  // a window that was closed meanwhile has failed
    if (window()) EndAsChosen();
  }
  state.Hidden = false;
  // Who has started the program meanwhile has got this window and keeps it.
  if (IsWindowVisible(window())) {
    takes_requests_ = true;
    exit_code_ = kDone;
  } else {
    Close();
  }
}

// A run that the user starts. Without anything that cannot be had back nothing is asked.
void FrmMain::Clean(const Target& target) {
  if (work_.working()) return;
  const auto clean = [this, target] { RunTarget(target); };
  // Not by the rows: ticked ones run whether or not they are listed yet.
  const bool may_lose =
      target.item == nullptr &&
      !(target.others ? target.others->recipes.empty() : engine_.selection().recipes().empty());
  if (!engine_.preferences().ask && !may_lose) return RunAndEnd(clean);
  const std::shared_ptr<const RunEntries> found = LookAhead(LookAt(target));
  if (!found) return;
  const auto [question, text, offer] =
      Question(EntryList(machine_.system, found, true), start_offer_);
  if (question.empty()) return RunAndEnd(clean);
  FurtherChoice further{offer.text};
  switch (AskForGood(window(), question, text, target.item == nullptr, &further)) {
    case AskedForGood::kYes:
      return RunAndEnd([this, clean, leaves_to_start = further.is_ticked] {
        engine_.state().LeavesToStart = leaves_to_start;
        clean();
      });
    case AskedForGood::kShow:
      return ShowPreview(found, target);
    case AskedForGood::kCancel:
      break;
  }
}

void FrmMain::Preview(const Target& target) { ShowPreview(LookAhead(LookAt(target)), target); }

// Recipes may have been seen since they were chosen.
void FrmMain::RunTarget(Target target, std::shared_ptr<RunChoice> choice) {
  if (target.item != nullptr) return engine_.RunOneItem(*target.item);
  if (!target.others) return engine_.RunCleaning(std::move(choice));
  for (modPlugin::RecipeChoice& recipe : target.others->recipes) {
    recipe = engine_.selection().recipes().ChoiceOf(recipe.name);
  }
  engine_.RunOthers(*target.others, std::move(choice));
}

RunQuestion FrmMain::Question(const EntryList& list, const StartOffer& offer) const {
  RunQuestion question = QuestionOf(list, shown_.get(), engine_.selection().recipes(),
                                    machine_.system.UserLocale(), engine_.preferences().ask);
  question.further = offer;
  return question;
}

// A second start of the program, whose ticks are those of this one.
void FrmMain::CleanWithRights() {
  const std::string problem = Save();
  if (!problem.empty()) return Warn(problem);
  StartWithRights(window(), RightsArguments(ProfileOf(machine_)));
}

// By the ticks of this window.
void FrmMain::CleanForOthers() {
  const std::string problem = Save();
  if (!problem.empty()) return Warn(problem);
  windows_.Open(mnuUsers, window());
}

// What was dropped or copied by mistake is seen before it goes.
void FrmMain::RemoveByHand(std::vector<std::string> paths) {
  if (work_.working()) return;
  if (paths.empty()) {
    return prompts_.Inform(
        Tr("Copy files or folders in Explorer first, or drop them on this window."));
  }
  Preview({.others = OtherChoices{.paths = std::move(paths)}});
}

// Explorer starts the program for each that is selected.
void FrmMain::RemoveNamed(const std::string& path) {
  constexpr UINT kMoment = 400;  // milliseconds
  if (named_.size() < kMostNamed) {
    named_.push_back(path);
  } else {
    ++named_too_many_;
  }
  SetTimer(window(), tmrNamed, kMoment, nullptr);
}

// From another process: it may be anything.
bool FrmMain::TakeNamed(const std::wstring& path) {
  const auto taken = ParseRemoval("q " + std::string(kRemoveSwitch) + " \"" + Narrow(path) + "\"");
  if (!taken) return false;
  ComeForward();
  RemoveNamed(*taken);
  return true;
}

void FrmMain::ShowNamed() {
  if (!CanClean()) return;  // at the next tick
  KillTimer(window(), tmrNamed);
  const uint64_t left_out = std::exchange(named_too_many_, 0);
  std::vector<std::string> named = std::exchange(named_, {});
  if (left_out > 0) TellLeftOut(left_out);
  RemoveByHand(std::move(named));
}

void FrmMain::TellLeftOut(uint64_t count) {
  const Locale locale = machine_.system.UserLocale();
  const std::string most = FormatCount(kMostNamed, locale), more = FormatCount(count, locale);
  prompts_.Inform(
      TrN("Of what was named only the first %1 are looked at; %2 more is left out. Name "
          "the folder instead.",
          "Of what was named only the first %1 are looked at; %2 more are left out. "
          "Name the folder instead.",
          count, most, more));
}

FrmMain::Look FrmMain::LookAt(const Target& target) {
  return [this, target](PreviewRun& preview) {
    if (target.item != nullptr) return preview.RunOneItem(*target.item);
    target.others ? preview.RunOthers(*target.others) : preview.Run(engine_.selection());
  };
}

// What a run would come by now; null when the look was stopped, or the window has gone.
std::shared_ptr<const RunEntries> FrmMain::LookAhead(const Look& look) {
  PreviewRun preview(machine_, display_);
  bool is_whole = false;
  items_.list().BeginLook(preview.state());
  look_ = &preview;
  Work([&] {
    look(preview);
    is_whole = true;
  });
  if (window()) FollowLook();
  look_ = nullptr;
  shown_ = preview.state().Parts.Find<modPlugin::ShownRecipes>();
  start_offer_ = OfferOfStart(preview.state(), machine_);
  items_.list().EndLook();
  if (window()) {
    pane_.Settle();
    items_.Refresh();
    ShowSummary();
    if (shown_ && !items_.list().Knows(*shown_)) LookForRecipes();  // a list has changed
  }
  if (!window() || !is_whole || preview.state().AbortRequested) return nullptr;
  if (preview.state().SomeErrors) Warn(preview.state().RunLog);
  const bool is_refused = preview.state().SomeErrors && preview.entries()->all.empty();
  return is_refused ? nullptr : preview.entries();
}

void FrmMain::ShowPreview(std::shared_ptr<const RunEntries> found, const Target& target) {
  if (!found) return;
  previewed_ = target;
  previewed_offer_ = start_offer_;
  modPlugin::NoteShown(engine_.selection().recipes(), shown_);
  items_.Refresh();
  try {
    modPlugin::KeepShown(machine_, shown_);
  } catch (const Error& error) {
    Warn(Tr("Which recipes you have seen could not be stored. %1", Shown(error)));
  }
  if (found->all.empty()) return prompts_.Inform(Tr("There is nothing to remove."));
  preview_.Show(window(), std::move(found));
}

// Rows come and figures grow while it goes on.
void FrmMain::FollowLook() {
  items_.list().Follow();
  items_.Repaint();
  pane_.ShowEntries(look_->entries());
  ShowSummary();
}

// What a look found is not so any more.
void FrmMain::ForgetLook() {
  items_.list().Forget();
  pane_.ShowEntries(nullptr);
  items_.Refresh();
  ShowSummary();
}

void FrmMain::Run(const std::function<void()>& work) {
  if (work_.working()) return;
  ForgetLook();
  Work(work);
  if (!window()) return;
  display_.ShowStopped(StoppedReport(engine_.context()));
  ShowSelected();  // it tells when it was cleaned last
}

void FrmMain::RunAndEnd(const std::function<void()>& clean) {
  Run(clean);
  if (window()) EndAsChosen();
}

void FrmMain::Work(const std::function<void()>& work) {
  if (work_.working()) return;
  if (search_.working()) search_.Stop();  // it is below this on the stack, and goes on to its end
  if (!engine_.state().Hidden) log_.Close();  // a hidden run has none to put in its place
  const auto run = [&](const Pause& pause) {
    display_.BreatheBy(pause);
    try {
      work();
    } catch (const std::exception& error) {
      ReportCritical(engine_.context(), SentenceOf(error));
    }
    display_.Flush();
    display_.ShowStopped("");
  };
  const Locale locale = machine_.system.UserLocale();
  AfterRun(work_.Run({.show =
                          [this, &locale](const Progress&) {
                            display_.Flush();
                            display_.ShowFigures(locale, work_.Elapsed());
                            if (look_ != nullptr) FollowLook();
                          }},
                     run));
  if (window() && !knows_recipes_) LookForRecipes();
}

void FrmMain::ProcessPlugins() {
  std::string told;
  const auto process = [&told](CleaningContext& context) {
    told = modPlugin::ProcessTickedPlugins(context);
  };
  if (engine_.preferences().ask) {
    const auto found = LookAhead([&](PreviewRun& preview) { preview.RunByHand(process); });
    if (!found || !MayGo(window(), EntryList(machine_.system, found, true).Question())) return;
  }
  Run([&] {
    process(engine_.context());
    KeepRun(engine_.context());
  });
  if (!told.empty() && window()) prompts_.Inform(told);
}

void FrmMain::AfterRun(LongWork::End end) {
  const bool has_report = KeepReport();
  if (end == LongWork::End::kCloses) return Exit();
  if (!has_report) return;
  if (!engine_.state().Hidden) return display_.is_kept_only() ? void() : ShowLastLog();
  const std::string told = BriefReport(engine_.context());
  tray_.SetText(Wide(std::string(kApplicationTitle) + "\n" + told).c_str());
  display_.SetStatus(told);
  display_.Flush();
}

void FrmMain::ShowLastLog() {
  if (last_report_) log_.Show(window(), *last_report_);
}

// The report of the run that has just ended, if it has one, for Last log.
bool FrmMain::KeepReport() {
  std::optional<RunReport> report = display_.TakeReport();
  if (!report) return false;
  last_report_ = std::move(report);
  EnableMenuItem(GetMenu(window()), mnuLastLog, MF_BYCOMMAND | MF_ENABLED);
  return true;
}

}  // namespace quellix
