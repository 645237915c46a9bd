// Programs that hold open what a run is about to clean, and what becomes of them.
#include "app/preview_run.h"
#include "plugins/plugin_file.h"
#include "support/browser_fixture.h"
#include "support/forwarding_files.h"
#include "support/program_system.h"
#include "support/recording_session.h"

namespace quellix {
namespace {

constexpr const char* kProgram = "qx-chat.exe";

// Where a browser holds a file, as the system tells it.
struct HeldFolder : ForwardingFolder {
  HeldFolder(std::unique_ptr<Folder> folder, const bool& is_held)
      : ForwardingFolder(std::move(folder)), is_held_(is_held) {}
  void RequireRemovable(std::string_view name) override {
    if (is_held_ && name == "lockfile") throw Error(Error::Kind::kInUse, "It is held.");
    ForwardingFolder::RequireRemovable(name);
  }
  const bool& is_held_;
};

// Two recipes for a program known by its name, and a browser known by the file that it holds.
struct ProgramsInUseTest : BrowserFixture {
  ProgramsInUseTest() {
    for (const char* name : {"one", "two"}) {
      machine->MakeFile(own + "Plugins\\" + name + ".cdp",
                        Line(std::string("D|Traces of ") + name) +
                            Line(std::string("P|") + kProgram) +
                            Line("F|No|No|" + scratch + name + "\\*.*"));
    }
    WriteOwn("plg.txt", Line("1|one.cdp|one") + Line("1|two.cdp|two"));
    machine->MakeFile(chrome + "\\Local State", "{}");
    machine->MakeFile(chrome + "\\Default\\Preferences", "{}");
    machine->MakeFile(chrome + "\\lockfile", "");
    run.selection().SetChecked(*FindItem("CleanPlugins"), true);
    for (const char* kind : {"chrome:cache", "chrome:sessions"})
      run.selection().browsers().SetTicked(kind, true);
  }
  static std::string Line(std::string text) {
    return ReplaceNoCase(text, "|", std::string(1, modPlugin::kSeparator)) + "\r\n";
  }

  // As they stand before each row: everything there, and both programs run.
  void Begin() {
    for (const std::string& path : Paths()) machine->MakeFile(path, "12345");
    browser_runs = true;
    system.running = {kProgram};
    session.calls.clear();
    session.on_await = nullptr;
    session.runs_programs = true;
    view.programs.clear();
    view.on_program = nullptr;
    view.on_pause = nullptr;
    view.stops = false;
    run.state().Hidden = run.state().BySelf = false;
  }
  void End() {
    system.running.clear();
    browser_runs = false;
  }
  Names Paths() const {
    return {scratch + "one\\a", scratch + "two\\a", chrome + "\\Default\\Cache\\Cache_Data\\f",
            chrome + "\\Default\\Sessions\\s"};
  }
  size_t CountLeft() {
    return static_cast<size_t>(std::ranges::count_if(
        Paths(), [this](const std::string& path) { return machine->Exists(path); }));
  }
  // The user's answers, one after the other; then what is asked about is skipped.
  void Answer(std::vector<ProgramAnswer> answers, bool closes_by_hand) {
    view.on_program = [this, answers, closes_by_hand, at = size_t{0}]() mutable {
      if (at == answers.size()) return ProgramAnswer::kSkip;
      if (closes_by_hand) End();
      return answers[at++];
    };
  }
  // What a program does that was asked to close.
  enum class Closing { kHasNoWindow, kEnds, kStays, kRefuses, kIsStopped };
  void Await(Closing closing) {
    if (closing == Closing::kHasNoWindow) return;
    session.on_await = [this, closing] {
      if (closing == Closing::kEnds) End();
      if (closing == Closing::kRefuses) ++waits;
      view.stops = closing == Closing::kIsStopped;
      return closing <= Closing::kStays;
    };
  }

  ProgramSystem system{ports.system};
  RecordingSession session;
  bool browser_runs = false;
  ForwardingFiles files{ports.files, [this](const std::string&, std::unique_ptr<Folder> folder) {
                          return std::make_unique<HeldFolder>(std::move(folder), browser_runs);
                        }};
  Machine user{files,  ports.registry, ports.shell,    ports.url_cache,     ports.profile,
               system, session,        ports.cleaners, ports.program_folder};
  Engine run{user, view};
  size_t waits = 0;
};

TEST_F(ProgramsInUseTest, WhoWatchesIsAskedOncePerProgramAndWhatStillRunsIsLeftWhole) {
  using enum ProgramAnswer;
  using enum Closing;
  const std::vector<ProgramAnswer> kTwice = {kClose, kSkip, kClose, kSkip};
  const char* const kRefused = "It has not closed yet. It may be asking something.";
  const struct {
    const char* name;
    std::vector<ProgramAnswer> answers;
    Closing closing;
    size_t asked, left;              // questions in all; of the four files
    const char *logged, *told = "";  // told by the last question
    bool by_hand = false;
  } kRows[] = {
      {"skipped", {}, kStays, 2, 4, "Traces of two is not cleaned: qx-chat.exe runs"},
      {"closed by hand", {kRetry}, kStays, 1, 0, "was closed before it was cleaned.", "", true},
      {"looked for again in vain", {kRetry, kRetry}, kStays, 4, 4, "runs; close it first"},
      {"closed", {kClose}, kEnds, 1, 0, "qx-chat.exe was closed"},
      {"without a window", {kClose}, kHasNoWindow, 3, 4, "runs"},
      {"closes a window and stays", {kClose}, kStays, 3, 4, "runs"},
      {"refuses", kTwice, kRefuses, 4, 4, "runs", kRefused},
      {"stopped while it is awaited", {kClose}, kIsStopped, 1, 4, "Aborted by user"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    Begin();
    Answer(row.answers, row.by_hand);
    Await(row.closing);
    run.RunCleaning();
    ASSERT_EQ(view.programs.size(), row.asked);
    EXPECT_EQ(CountLeft(), row.left);
    EXPECT_TRUE(Holds(run.state().RunLog, row.logged));
    EXPECT_EQ(view.programs.front().what, "Traces of one");
    EXPECT_TRUE(view.programs.back().told.starts_with(row.told)) << view.programs.back().told;
  }
  EXPECT_EQ(waits, 600u) << "each of them a moment";
}

TEST_F(ProgramsInUseTest, NobodyIsAskedWhereNobodyWatchesOrNothingRuns) {
  const std::pair<const char*, bool*> kRows[] = {{"hidden", &run.state().Hidden},
                                                 {"by itself", &run.state().BySelf},
                                                 {"nothing can run", nullptr},
                                                 {"nothing runs", &browser_runs}};
  for (const auto& [name, set] : kRows) {
    SCOPED_TRACE(name);
    Begin();
    const bool runs = set != &browser_runs;
    session.runs_programs = set != nullptr;
    if (!runs) End();
    if (runs && set) *set = true;
    run.RunCleaning();
    EXPECT_TRUE(view.programs.empty());
    EXPECT_EQ(CountLeft(), runs ? 4u : 0u);
    EXPECT_EQ(run.state().RunLog.find("runs; close it first") != std::string::npos, runs);
  }
}

TEST_F(ProgramsInUseTest, APreviewOnlyLooksAndARunAfterItAsksForWhatWasTickedThere) {
  Begin();
  PreviewRun preview(user, view);
  preview.Run(run.selection());
  EXPECT_TRUE(view.programs.empty());
  EXPECT_TRUE(Holds(preview.state().RunLog, "runs; close it first"));

  run.state().IsPreview = true;  // as the console does it
  run.RunCleaning();
  run.state().IsPreview = false;
  EXPECT_TRUE(view.programs.empty() && CountLeft() == 4u);

  const auto all = [](size_t) { return true; };
  run.RunCleaning(std::make_shared<RunChoice>(*preview.entries(), all));
  EXPECT_TRUE(view.programs.empty()) << "nothing of theirs was ticked";

  End();
  PreviewRun later(user, view);
  later.Run(run.selection());
  Begin();
  run.RunCleaning(std::make_shared<RunChoice>(*later.entries(), all));
  ASSERT_EQ(view.programs.size(), 2u);
  EXPECT_EQ(view.programs.back().program, "Google Chrome");
  EXPECT_EQ(view.programs.back().what, "Google Chrome, Cache");
  EXPECT_EQ(CountLeft(), 4u);

  view.on_program = [] { return ProgramAnswer::kClose; };
  Await(Closing::kEnds);
  run.RunCleaning(std::make_shared<RunChoice>(*later.entries(), all));
  EXPECT_EQ(CountLeft(), 0u);
  EXPECT_EQ(session.calls.back(), std::string("close ") + kProgram);
}

}  // namespace
}  // namespace quellix
