// Programs that hold open what a run is about to clean, and what becomes of them.
#include "app/preview_run.h"
#include "platform/error.h"
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
                        Line({"D", std::string("Traces of ") + name}) + Line({"P", kProgram}) +
                            Line({"F", "No", "No", scratch + name + "\\*.*"}));
    }
    WriteOwn("plg.txt", Line({"1", "one.cdp", "one"}) + Line({"1", "two.cdp", "two"}));
    machine->MakeFile(chrome + "\\Local State", "{}");
    machine->MakeFile(chrome + "\\Default\\Preferences", "{}");
    machine->MakeFile(chrome + "\\lockfile", "");
    run.selection().SetChecked(*FindItem("CleanPlugins"), true);
    for (const char* kind : {"chrome:cache", "chrome:sessions"})
      run.selection().browsers().SetTicked(kind, true);
  }
  static std::string Line(const Names& fields) {
    std::string line;
    for (const std::string& field : fields)
      line += (line.empty() ? "" : std::string(1, modPlugin::kSeparator)) + field;
    return line + "\r\n";
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
  std::vector<std::string> Paths() const {
    return {scratch + "one\\a", scratch + "two\\a", chrome + "\\Default\\Cache\\Cache_Data\\f",
            chrome + "\\Default\\Sessions\\s"};
  }
  size_t CountLeft() {
    return static_cast<size_t>(std::ranges::count_if(
        Paths(), [this](const std::string& path) { return machine->Exists(path); }));
  }
  bool IsLogged(std::string_view text) {
    return run.state().RunLog.find(text) != std::string::npos;
  }
  std::function<ProgramAnswer()> Answers(std::initializer_list<ProgramAnswer> answers) {
    return [left = std::vector(answers), this]() mutable {
      if (left.empty()) return ProgramAnswer::kSkip;
      const ProgramAnswer answer = left.front();
      left.erase(left.begin());
      if (answer == ProgramAnswer::kRetry && closes_by_hand) End();
      return answer;
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
  bool closes_by_hand = false;
};

TEST_F(ProgramsInUseTest, WhoWatchesIsAskedOncePerProgramAndWhatStillRunsIsLeftWhole) {
  using enum ProgramAnswer;
  const auto ends = [this] {
    End();
    return true;
  };
  size_t waits = 0;
  const struct {
    const char* name;
    std::function<void()> change;
    size_t asked;      // questions in all
    const char* told;  // by the last of them
    size_t left;       // of the four
    const char* logged;
  } kRows[] = {
      {"skipped", [&] {}, 2, "", 4, "Traces of two is not cleaned: qx-chat.exe runs"},
      {"closed by hand",
       [&] {
         view.on_program = Answers({kRetry});
         closes_by_hand = true;
       },
       1, "", 0, "qx-chat.exe was closed before it was cleaned."},
      {"looked for again in vain",
       [&] {
         view.on_program = Answers({kRetry, kRetry});
       },
       4, "", 4, "runs; close it first"},
      {"closed",
       [&] {
         view.on_program = Answers({kClose});
         session.on_await = ends;
       },
       1, "", 0, "qx-chat.exe was closed"},
      {"without a window", [&] { view.on_program = Answers({kClose}); }, 3, "", 4, "runs"},
      {"closes a window and stays",
       [&] {
         view.on_program = Answers({kClose});
         session.on_await = [] { return true; };
       },
       3, "", 4, "runs"},
      {"refuses",
       [&] {
         view.on_program = Answers({kClose, kSkip, kClose, kSkip});
         waits = 0;
         session.on_await = [&] { return ++waits == 0; };
       },
       4, "It has not closed yet. It may be asking something.", 4, "runs"},
      {"stopped while it is awaited",
       [&] {
         view.on_program = Answers({kClose});
         session.on_await = [&] { return !(view.stops = true); };
       },
       1, "", 4, "Aborted by user"},
      {"hidden", [&] { run.state().Hidden = true; }, 0, "", 4, "runs; close it first"},
      {"begun by itself", [&] { run.state().BySelf = true; }, 0, "", 4, "runs; close it first"},
      {"where nothing can run", [&] { session.runs_programs = false; }, 0, "", 4, "runs"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    Begin();
    row.change();
    run.RunCleaning();
    EXPECT_EQ(view.programs.size(), row.asked);
    EXPECT_EQ(CountLeft(), row.left);
    EXPECT_TRUE(IsLogged(row.logged)) << run.state().RunLog;
    if (!view.programs.empty()) {
      EXPECT_EQ(view.programs.front().what, "Traces of one");
      EXPECT_TRUE(view.programs.back().told.starts_with(row.told)) << view.programs.back().told;
    }
    closes_by_hand = false;
    End();
  }
  EXPECT_EQ(waits, 600u) << "each of them a moment";
  Begin();
  End();
  view.programs.clear();
  run.RunCleaning();
  EXPECT_TRUE(CountLeft() == 0 && view.programs.empty()) << "nothing runs";
}

TEST_F(ProgramsInUseTest, APreviewOnlyLooksAndARunAfterItAsksForWhatWasTickedThere) {
  Begin();
  PreviewRun preview(user, view);
  preview.Run(run.selection());
  EXPECT_TRUE(view.programs.empty());
  EXPECT_TRUE(Joined(Names{preview.state().RunLog}).find("runs; close it first") !=
              std::string::npos);

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
  session.on_await = [this] {
    End();
    return true;
  };
  run.RunCleaning(std::make_shared<RunChoice>(*later.entries(), all));
  EXPECT_EQ(CountLeft(), 0u);
  EXPECT_EQ(session.calls.back(), std::string("close ") + kProgram);
}

}  // namespace
}  // namespace quellix
