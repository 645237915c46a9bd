// What commands tell other programs: every report is checked by the schema that is published.
#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <filesystem>
#include <fstream>

#include "cli/console_fixture.h"
#include "console_schema.h"
#include "run/known_folders.h"
#include "support/browser_fixture.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

struct ConsoleReportTest : Console<BrowserFixture> {
  ConsoleReportTest() {
    schema_text_.Parse(kConsoleSchema);
    EXPECT_FALSE(schema_text_.HasParseError());
  }
  ~ConsoleReportTest() override {
    for (const char* ending : {".json", ".csv"}) fs::remove(ReportFile(ending));
    for (const char* name : {"a.url", "b.url", "c.url"}) {
      if (machine->Exists(favorites + name)) ports.files.RemoveFile(favorites + name);
    }
  }
  std::string ReportFile(const std::string& ending) { return stem_ + ending; }
  static std::string Read(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // "" for a valid report of that command, else what is wrong with it.
  std::string WhyInvalid(const std::string& text, const std::string& command) {
    rapidjson::Document report;
    if (report.Parse(text.c_str()).HasParseError()) return "it is no JSON: " + text;
    const rapidjson::SchemaDocument schema(schema_text_);
    rapidjson::SchemaValidator validator(schema);
    if (!report.Accept(validator)) {
      rapidjson::StringBuffer where;
      validator.GetInvalidDocumentPointer().StringifyUriFragment(where);
      return std::string("invalid at ") + where.GetString() + ": " + text;
    }
    return report["command"].GetString() == command ? "" : "it is of another command: " + text;
  }
  // A table of everything that can be listed.
  void Seed() {
    machine->MakeFile(temp + "a.tmp", "12345");
    machine->MakeFile(temp + "sub\\with, comma.tmp", "1");
    machine->MakeFile(temp + "kept.bak", "1");
    machine->MakeFile(scratch + "one.qxj", "123");
    machine->MakeFile(scratch + "logs\\x.log", "1");
    machine->MakeFile(favorites + "a.url", "[InternetShortcut]\r\nURL=http://a.invalid/\r\n");
    machine->MakeFile(favorites + "b.url", "[InternetShortcut]\r\nURL=http://A.invalid\r\n");
    machine->MakeFile(favorites + "c.url", "");
    machine->SetText(kUser, kRunMruKey, "a", "x");
    machine->SetText(kUser, kRunMruKey, "", "default");
    machine->SetText(kMachine, "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\qx.exe",
                     "", scratch + "none.exe");
    machine->MakeFile(firefox + "\\Profiles\\p\\prefs.js", "");
    machine->MakeFile(firefox + "\\Profiles\\p\\cache2\\entries\\1", "1");
    MakeDatabase(firefox + "\\Profiles\\p\\formhistory.sqlite",
                 "CREATE TABLE moz_formhistory(fieldname, value);"
                 "INSERT INTO moz_formhistory VALUES('a', 'b')");
    WriteOwn("keep.txt", "*.bak\r\nname without a path\r\n");
    WriteOwn("UNFI.txt", "1\x01*.qxj\x01Ours\r\n");
    machine->MakeFile(own + "Plugins\\qx.cdp",
                      "D\x01My logs\r\nF\x01No\x01No\x01" + scratch + "logs\\*.log\r\nX\r\n");
    WriteOwn("plg.txt", "1\x01qx.cdp\x01My logs\r\n");
    WriteOwn("Winapp2.ini",
             "[Qx *]\r\nFileKey1=" + scratch + "list|*.*\r\n" + "[Bad *]\r\nFileKey1=C:|*.*\r\n");
    WriteOwn("recipes.txt", "1\x01Gone\x01\r\n");
    machine->MakeFile(scratch + "list\\a", "1");
    WriteSettings("[General]\r\nDelMethod=B\r\n");
  }

  const std::string favorites = KnownFolder(ports, "Favorites").value() + "\\";
  rapidjson::Document schema_text_;
  std::string stem_ = OutputFile() + "-report";
};

const struct {
  std::string command;
  Names arguments;
  size_t rows;  // at least
  int exit_code = 0;
} kCommandRows[] = {
    {"items", {"items"}, 30},
    {"plugins list", {"plugins", "list"}, 1},
    {"plugins check", {"plugins", "check", "qx"}, 2, 1},
    {"recipes list", {"recipes", "list", "--all"}, 2},
    {"recipes check", {"recipes", "check"}, 2, 1},
    {"recipes process", {"recipes", "preview", "qx"}, 1},
    {"recipes process", {"recipes", "process", "Qx"}, 1},
    {"keep list", {"keep", "list"}, 2, 1},
    {"browsers list", {"browsers", "list"}, 8},
    {"browsers clean", {"browsers", "clean", "firefox:forms", "--preview"}, 1},
    {"browsers clean", {"browsers", "clean", "firefox", "firefox:forms"}, 2},
    {"browsers clean", {"browsers", "clean", "firefox", "firefox:forms"}, 0},
    {"search", {"search", "unnecessary"}, 1},
    {"search", {"search", "unnecessary", "--delete", "--preview"}, 1},
    {"favorites list", {"favorites", "list"}, 3},
    {"favorites list", {"favorites", "list", "--delete", "--preview"}, 3},
    {"favorites list", {"favorites", "list", "--delete"}, 3},
    {"favorites check", {"favorites", "check", "--proxy", "http://127.0.0.1:1"}, 1},
    {"registry", {"registry", "app-paths"}, 1},
    {"registry", {"registry", "app-paths", "--delete", "--preview"}, 1},
    {"registry", {"registry", "startup"}, 0},
    {"plugins process", {"plugins", "preview", "qx"}, 1},
    {"plugins process", {"plugins", "process", "qx", "--preview"}, 1},
    {"clean", {"clean", "--all", "--preview"}, 5},
    {"clean", {"clean", "--group", "files", "--item", "CleanRunMRU", "--preview"}, 5},
    {"search", {"search", "unnecessary", "--delete"}, 1},
    {"plugins process", {"plugins", "process", "qx"}, 1},
    {"clean", {"clean", "--item", "CleanTempFiles", "CleanRunMRU"}, 5},
    {"clean", {"clean", "--item", "CleanTempFiles", "CleanRunMRU"}, 1},
    {"remove", {"remove", "LIST", "--preview"}, 1},
    {"remove", {"remove", "LIST", "--method", "wipe"}, 1},
    {"backup list", {"backup", "list"}, 2}};

TEST_F(ConsoleReportTest, EveryReportIsAsPublishedAndThePrintedOneIsTheSame) {
  Seed();
  Run({"recipes", "preview", "qx"});  // a person sees it
  for (const auto& row : kCommandRows) {
    const std::string file = ReportFile(".json");
    auto arguments = With(row.arguments, {"--json", "--report", file});
    std::ranges::replace(arguments, "LIST", scratch + "list");
    const bool needs_machine = row.command != "items";
    const ProgramResult result = needs_machine ? Run(arguments) : RunQuellixctl(arguments);
    SCOPED_TRACE(::testing::PrintToString(arguments) + result.output);
    EXPECT_EQ(result.exit_code, row.exit_code);
    const std::string text = Read(file);
    EXPECT_EQ(WhyInvalid(text, row.command), "");
    EXPECT_NE(result.output.find(text.substr(0, text.find('\r'))), std::string::npos);
    EXPECT_GE(static_cast<size_t>(std::ranges::count(text, '\n')), row.rows + 3);
  }
  EXPECT_EQ(machine->Tree(temp), Names{"kept.bak"});
  EXPECT_NE(WhyInvalid("{\"schema\":\"quellixctl\"}", "clean"), "") << "the schema refuses nothing";
}

TEST_F(ConsoleReportTest, SeveralRunsEndWithASummary) {
  if (MachineArguments(*machine)[0] != "--volume") GTEST_SKIP() << "they are of volumes";
  const std::string file = ReportFile(".json");
  const Names users = {"--user", "Quellix Tester", "--user", "Nobody"};
  Expect(With({"clean", "--item", "CleanTempFiles", "--report", file}, users), 1);
  EXPECT_EQ(WhyInvalid(Read(file), "runs"), "");
  const std::string own_report = ReportFile("-1.json");
  EXPECT_EQ(WhyInvalid(Read(own_report), "clean"), "");
  fs::remove(own_report);
}

TEST_F(ConsoleReportTest, CsvQuotesWhatWouldBreakARow) {
  Seed();
  const std::string file = ReportFile(".csv");
  Expect({"clean", "--item", "CleanTempFiles", "--preview", "--csv"}, 0,
         {"kind,fate,place,part,bytes,modified,item,rule,way,archive,note,count\n",
          "file,removed,\"" + temp + "sub\\with, comma.tmp\",,1,20", ",*.bak,1\n"});
  Expect({"clean", "--item", "CleanTempFiles", "--report", file}, 0, {"Files Deleted:  2"});
  const std::string text = Read(file);
  EXPECT_EQ(std::ranges::count(text, '\n'), 5) << text;
  EXPECT_TRUE(Holds(text, "file,removed," + temp + "a.tmp,,5,20"));
  EXPECT_TRUE(Holds(text, ",CleanTempFiles,,backedUp,"));
}

TEST_F(ConsoleReportTest, WithoutItsReportACommandDoesNothing) {
  Seed();
  const std::string nowhere = (fs::path(ReportFile("")) / "none" / "report.json").string();
  for (const auto& arguments :
       {Names{"clean", "--item", "CleanTempFiles"}, Names{"search", "unnecessary", "--delete"},
        Names{"plugins", "process", "qx"}}) {
    Expect(With(arguments, {"--report", nowhere}), 1,
           {"nothing was done, because the report cannot be written to"});
  }
  // What was there before a run that is refused is still there.
  const std::string file = ReportFile(".json");
  std::ofstream(file) << "earlier";
  Expect({"clean", "--item", "CleanNothing", "--report", file}, 2);
  EXPECT_EQ(Read(file), "earlier");
  fs::remove(file);
  Expect({"clean", "--item", "CleanNothing", "--report", file}, 2);
  EXPECT_FALSE(fs::exists(file));
  EXPECT_TRUE(machine->Exists(temp + "a.tmp") && machine->Exists(scratch + "one.qxj") &&
              machine->Exists(scratch + "logs\\x.log"));
}

TEST_F(ConsoleReportTest, WhatIsTickedInTheWindowIsCleaned) {
  Seed();
  ports.files.RemoveFile(own + "recipes.txt");
  for (const Item& item : AllItems()) engine.selection().SetChecked(item, false);
  Expect({"clean", "--ticked"}, 2, {"nothing is chosen"});
  engine.selection().SetChecked(*FindItem("CleanRunMRU"), true);
  engine.Save();
  Expect({"clean", "--ticked", "--preview"}, 0, {"2 other things."});
  Expect({"clean", "--ticked"}, 0);
  EXPECT_TRUE(machine->ValueNames(kUser, kRunMruKey).empty() && machine->Exists(temp + "a.tmp"));
  // Which they are cannot be told.
  MakeUnreadable(own + "chkItems.txt");
  Expect({"clean", "--ticked"}, 1, {"it cannot be read what is ticked"});
}

TEST_F(ConsoleReportTest, AMistypedNameIsAnsweredWithTheRightOne) {
  const std::pair<Names, const char*> kRows[] = {
      {{"claen"}, "Did you mean \"quellixctl clean\"?"},
      {{"plugins", "prevew"}, "Did you mean \"quellixctl plugins preview\"?"},
      {{"backup", "lsit"}, "Did you mean \"quellixctl backup list\"?"},
      {{"reg"}, "Did you mean \"quellixctl registry\"?"}};
  for (const auto& [arguments, told] : kRows) {
    const ProgramResult result = RunQuellixctl(arguments);
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_TRUE(Holds(result.output, told));
  }
  EXPECT_FALSE(Holds(RunQuellixctl({"polish"}).output, "Did you mean"));
  Expect({"clean", "--item", "CleanTmpFiles"}, 2, {"did you mean \"CleanTempFiles\"?"});
  const ProgramResult version = RunQuellixctl({"--version"});
  EXPECT_EQ(version.exit_code, 0);
  EXPECT_TRUE(version.output.starts_with("quellixctl 0.")) << version.output;
  EXPECT_TRUE(Holds(version.output, "\nSettings, lists and logs: "));
}

}  // namespace
}  // namespace quellix
