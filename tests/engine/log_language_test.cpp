// What the log of a run says, in English and in the language of the windows.

#include <regex>

#include "app/run_logs.h"
#include "app/run_report.h"
#include "plugins/plugin_trial.h"
#include "support/plugin_fixture.h"
#include "support/trial_words.h"

namespace quellix {
namespace {

// Of all lines below. What stands in them of errors is put into their places.
constexpr const char* kTexts[] = {
    "%1 (%2)",
    "%1 (by the line %2)",
    "%1 What is deleted has no backup.",
    "%1 is not cleaned: %2",
    "%1 is not cleaned: it is precious, or belongs to this program or its backups.",
    "%1: %2",
    "%1: nothing of this kind was found.",
    "%1: nothing of this kind was found. %2",
    "%1Files Deleted: %2",
    "%1Files Deleted: %2 Space Gained: %3",
    "Aborted by user",
    "Backed Up %1 file(s)",
    "Cache",
    "Changed since the preview: %1",
    "Deleted without a backup: %1 file(s)",
    "Files Deleted:  %1   Space Gained:  %2",
    "Firefox",
    "Free on %1:  %2 before, %3 now",
    "Kept by the keep list: %1",
    "Kept:",
    "Left, as they were not in the preview: %1",
    "Named by hand... ",
    "No plug-in is ticked.",
    "No site is named: site:example.com.",
    "None of the listed files is there.",
    "Not deleted:",
    "Plugins",
    "Plugins... ",
    "Some files were not deleted because they were locked or in use.",
    "Some files were not deleted for the reasons that stand behind their names.",
    "Temporary files... ",
    "The backup folder %1 cannot be used: %2",
    "The keep list's line \"%1\" keeps every file.",
    "The keep list's line \"%1\" keeps nothing: %2",
    "There is no folder %1.",
    "There is no profile of Firefox.",
    "Ticked in the preview, but not come by again: %1",
    "User-defined files",
    "User-defined files... ",
    "Windows run history... ",
};

struct LogLanguageTest : PluginFixture {
  void FillTemp() { MakeFiles(temp, "a.tmp b.tmp mine.doc locked.tmp"); }
  // The log of such a run, as windows show it, without what others free on the drives meanwhile.
  std::string LogOf(const std::function<void(LogLanguageTest&)>& run, const std::string& general) {
    for (const auto& entry : machine->Tree(temp)) ports.files.RemoveFile(temp + entry);
    WriteOwn("keep.txt", "");
    WriteList("");
    WriteSettings("[General]\r\nKeepLogs=1\r\nDelMethod=B\r\n" + general);
    run(*this);
    return WithoutFreeSpace(MakeReport(engine.state(), ports.system.UserLocale()).full_log);
  }

  const InEnglishAgain after;
};

struct Row {
  const char* name;
  std::function<void(LogLanguageTest&)> run;
  Names holds;  // parts of the English log
};

const Row kRows[] = {
    {"what goes into a backup, what is kept and what stays",
     [](LogLanguageTest& test) {
       test.FillTemp();
       test.WriteOwn("keep.txt", "*.doc\r\nsite:\r\n");
       test.MakeKeys("a:v");
       test.WriteList("1|Qx cache.cdp|Pages of Qx\r\n");
       test.WriteRecipe("Qx cache.cdp", "D|Pages of Qx\r\nR|HKEY_CURRENT_USER\\" +
                                            std::string(kKey) +
                                            "\\a|v|No\r\nF|No|No|C:\\*.*\r\nF|Yes|No|" +
                                            test.scratch + "*.none\r\n");
       test.machine->MakeFolder(test.scratch + "Safe");
       test.WriteSettings(test.Read(test.own + "Settings.ini") +
                          "[Backup]\r\nPath=" + test.scratch + "Safe\\\r\n");
       test.machine->RemoveRegistryTree(kUser, kRunMruKey);
       test.machine->SetText(kUser, kRunMruKey, "a", "cmd");
       const auto lock = test.machine->LockFile(test.temp + "locked.tmp");
       test.Tick({"CleanTempFiles", "CleanPlugins", "CleanRunMRU", "CleanMozillaCache"});
       test.engine.RunCleaning();
     },
     {"The keep list's line \"site:\" keeps nothing: No site is named: site:example.com.\r\n",
      "Temporary files... Files Deleted: 2 Space Gained: 2 Bytes\r\n", "C:\\*.* is not cleaned: ",
      "Plugins... Files Deleted: 0", "Backed Up ", "Windows run history... Files Deleted: 1\r\n",
      "Files Deleted:  2   Space Gained:  2 Bytes", "Kept by the keep list: 1\r\n",
      "Some files were not deleted ", "mine.doc (by the line *.doc)"}},
    {"nothing is there, and all is kept",
     [](LogLanguageTest& test) {
       test.WriteOwn("keep.txt", "*\r\n");
       test.WriteOwn("UDFI.txt", test.scratch + "none\r\n");
       test.machine->RemoveRegistryTree(kUser, kRunMruKey);
       test.Tick({"CleanUserFiles", "CleanPlugins", "CleanMozillaCache", "CleanRunMRU"});
       test.engine.RunCleaning();
     },
     {"The keep list's line \"*\" keeps every file.\r\n",
      "Plugins: nothing of this kind was found. No plug-in is ticked.\r\n",
      "Cache (Firefox): nothing of this kind was found.",
      "User-defined files: nothing of this kind was found. None of the listed files is there."}},
    {"without a backup",
     [](LogLanguageTest& test) {
       test.FillTemp();
       test.WriteOwn("file", "no folder");
       test.WriteSettings(test.Read(test.own + "Settings.ini") + "[Backup]\r\nPath=" + test.own +
                          "file\\x\\\r\n");
       test.Clean("CleanTempFiles");
     },
     {" What is deleted has no backup.\r\n", "Deleted without a backup: 4 file(s)"}},
    {"a run that is stopped",
     [](LogLanguageTest& test) {
       test.FillTemp();
       test.StopWhenStatusBegins("Working");
       test.Clean("CleanTempFiles");
       test.view.on_status = nullptr;
     },
     {"Aborted by user\r\n"}},
    {"what a preview has not shown",
     [](LogLanguageTest& test) {
       test.MakeFiles(test.temp, "a.tmp b.tmp");
       test.Tick({"CleanTempFiles"});
       PreviewRun preview(test.ports, test.view);
       preview.Run(test.engine.selection());
       test.ports.files.RemoveFile(test.temp + "a.tmp");
       test.MakeFiles(test.temp, "c.tmp");
       test.machine->MakeFile(test.temp + "b.tmp", "longer by now");
       test.engine.RunCleaning(std::make_shared<RunChoice>(
           *preview.entries(), [](size_t) { return true; }, std::span<const size_t>()));
     },
     {"Left, as they were not in the preview: 1\r\n", "Changed since the preview: 1\r\n",
      "Ticked in the preview, but not come by again: 1\r\n"}},
    {"what was named by hand",
     [](LogLanguageTest& test) {
       test.MakeFiles(test.scratch, "a");
       test.engine.RunOthers({.paths = {test.scratch + "a", test.scratch + "none"}});
     },
     {"Named by hand... Files Deleted: 1 Space Gained: 1 Bytes\r\n", "none: "}},
};

// Each text between marks that tell which one it is: one within another is seen, too.
Catalogue Numbered() {
  std::vector<std::pair<std::string, std::string>> rows = {{"", Head("n != 1")}};
  for (size_t i = 0; i < std::size(kTexts); ++i)
    rows.emplace_back(kTexts[i], "{" + std::to_string(i) + ":" + kTexts[i] + "}");
  std::ranges::sort(rows);
  return Catalogue(MoOf(rows));
}

std::string WithoutMarks(const std::string& log) {
  static const std::regex marks(R"(\{\d+:|\})");
  return std::regex_replace(log, marks, "");
}

// The lines that are none of the catalogue's. Why a file stays the system tells in its own
// language.
Names EnglishLines(const std::string& log) {
  Names lines = Split(ReplaceNoCase(log, "\r\n", "\n"), '\n');
  std::erase_if(lines, [](const std::string& line) {
    const bool is_marked = !line.empty() && line.front() == '{' && line.back() == '}';
    return is_marked || line.find_first_not_of('-') == line.npos || Holds(line, "locked.tmp");
  });
  return lines;
}

bool DependsOnMachine(std::string_view text) {
  const std::string_view beginnings[] = {"Free on", "Some files", "There is no "};
  return std::ranges::any_of(beginnings, [&](auto part) { return text.starts_with(part); });
}

TEST_F(LogLanguageTest, IsEnglishUnlessTheSettingsWantThatOfTheWindows) {
  std::string all;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    Speak(Catalogue());
    const std::string english = LogOf(row.run, "");
    for (const std::string& part : row.holds) EXPECT_TRUE(Holds(english, part)) << part;
    EXPECT_EQ(LogOf(row.run, "LogLanguage=1\r\n"), english) << "where no language is spoken";
    Speak(Numbered());
    EXPECT_EQ(LogOf(row.run, "LogLanguage=0\r\n"), english);
    const std::string marked = LogOf(row.run, "LogLanguage=1\r\n");
    EXPECT_EQ(Joined(EnglishLines(marked)), "");
    EXPECT_EQ(WithoutFreeSpace(WithoutMarks(marked)), english);
    const RunLogs runs(ports);
    EXPECT_EQ(runs.Read(runs.List().at(0)).RunLog, engine.state().RunLog);
    all += marked;
  }
  for (size_t i = 0; i < std::size(kTexts); ++i) {
    const std::string text = kTexts[i];
    if (DependsOnMachine(text)) continue;
    EXPECT_TRUE(Holds(all, "{" + std::to_string(i) + ":")) << text;
  }
}

// Also where no run begins; what cannot be read says nothing of it.
TEST_F(LogLanguageTest, FollowsTheSettingsThatCanBeRead) {
  Speak(Numbered());
  const auto log_of_trial = [&](const std::string& general) {
    WriteSettings("[General]\r\n" + general);
    modPlugin::PluginTrial trial(ports);
    trial.Run(modPlugin::ParsePlugin(Text("F|No|No|C:\\*.*\r\n")), view);
    return trial.notes();
  };
  EXPECT_TRUE(Holds(log_of_trial("LogLanguage=1\r\n"), " is not cleaned: "));
  EXPECT_TRUE(Holds(log_of_trial("LogLanguage=1\r\n"), "{"));
  MakeUnreadable(own + "Settings.ini");
  Clean("CleanTempFiles");
  EXPECT_TRUE(Holds(engine.state().RunLog, "{"));
  ports.files.RemoveFolder(own + "Settings.ini");
  EXPECT_FALSE(Holds(log_of_trial(""), "{"));
}

}  // namespace
}  // namespace quellix
