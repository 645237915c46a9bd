// New versions: told by a server, fetched only as they were signed, and started.

#include "app/updates.h"
#include "platform/error.h"
#include "platform/path.h"
#include "shipped_files.h"
#include "support/forwarding_files.h"
#include "support/noting_shell.h"
#include "support/run_fixture.h"
#include "support/web_server.h"

namespace quellix {
namespace {

TEST(VersionTest, VersionsAreNumbers) {
  const std::tuple<const char*, const char*, std::optional<int>> kRows[] = {
      {"1.0", "1.0", 0},
      {"1.0", "1.0.0.0", 0},
      {"0.9.9", "0.10.0", -1},
      {"2", "1.99.99.99", 1},
      {"1.2.3", "1.2.4", -1},
      {"1.2.3.5", "1.2.3.4", 1},
      {"", "1", {}},
      {"1", "", {}},
      {"1.2.3.4.5", "1", {}},
      {"1.", "1", {}},
      {".1", "1", {}},
      {"1.x", "1", {}},
      {"-1", "1", {}},
      {"1 ", "1", {}},
      {"99999999999", "1", {}},
      {"1.0.0\\..\\..", "1", {}},
  };
  for (const auto& [first, b, order] : kRows) EXPECT_EQ(CompareVersions(first, b), order) << first;
}

struct UpdatesTest : WebServerTest {
  static UpdateSource Source(const std::string& name) {
    return {.server = At("/" + name), .key = Variable("QUELLIX_UPDATE_TEST_KEY"), .version = "1.0"};
  }
  UpdateCheck Check(const std::string& name) { return CheckForUpdate(*http, Source(name)); }
  // Why the installer is refused, or its size.
  std::string Fetched(const UpdateSource& source, const std::string& version = "99.1.0") {
    try {
      return std::to_string(FetchInstaller(*http, source, version).size());
    } catch (const Error& error) {
      return error.what();
    }
  }
};

TEST_F(UpdatesTest, AServerTellsOfANewVersion) {
  const UpdateCheck check = Check("new");
  EXPECT_EQ(check.result, UpdateResult::kNew) << check.problem;
  EXPECT_EQ(check.version, "99.1.0");
  EXPECT_EQ(check.news, "\nSmaller, faster, kinder.\n[31mred\n");
  EXPECT_TRUE(Holds(check.Text(), "There is a new version: 99.1.0."));
  UpdateSource newest = Source("new");
  newest.version = "99.1.0";
  EXPECT_EQ(CheckForUpdate(*http, newest).result, UpdateResult::kNone);
  EXPECT_EQ(Check("old").result, UpdateResult::kNone);
  EXPECT_EQ(Check("new//").result, UpdateResult::kNew) << "with a slash at the end";
}

TEST_F(UpdatesTest, WhatIsNoAnswerIsTold) {
  const std::pair<const char*, const char*> kRows[] = {
      {"words", "what it tells is no version"},   {"empty", "what it tells is no version"},
      {"binary", "what it tells is no version"},  {"many", "the answer is too large"},
      {"no-utf", "what it tells is no version"},  {"missing", "it answers with an error (404)"},
      {"moved-text", "it leads elsewhere (302)"},
  };
  for (const auto& [name, problem] : kRows) {
    const UpdateCheck check = Check(name);
    EXPECT_EQ(check.result, UpdateResult::kUnreachable) << name;
    EXPECT_EQ(check.problem, problem) << name;
    EXPECT_TRUE(Holds(check.Text(), problem));
  }
  const auto stop = [](const Progress&) { return true; };
  EXPECT_EQ(CheckForUpdate(*http, Source("new"), stop).problem, "it was stopped");
}

TEST_F(UpdatesTest, OnlyAServerThatNobodyCanStandInForIsAsked) {
  const std::pair<std::string, std::string> kRows[] = {
      {"http://updates.example", "must begin with https://"},
      {"http://127.0.0.1.example", "must begin with https://"},
      {"ftp://127.0.0.1", "is no address"},
      {"updates.example", "is no address"},
      {"https://updates.example?x=", "is no address"},
      {Address("QUELLIX_TLS_PORT", "/new", "https"), TextHere(HttpEnd::kCertificate)},
      {Address("QUELLIX_CLOSED_PORT", ""), "cannot be reached"},
  };
  for (const auto& [server, problem] : kRows) {
    const UpdateCheck check = CheckForUpdate(*http, {server, "", "1.0"});
    EXPECT_EQ(check.result, UpdateResult::kUnreachable) << server;
    EXPECT_TRUE(Holds(check.problem, problem));
  }
  const UpdateCheck none = CheckForUpdate(*http, {});
  EXPECT_EQ(none.result, UpdateResult::kNoServer);
  EXPECT_TRUE(Holds(none.Text(), "No server is set"));
}

TEST_F(UpdatesTest, OnlyWhatWasSignedIsFetched) {
  EXPECT_EQ(Fetched(Source("new")), "102402");
  const std::pair<const char*, const char*> kRows[] = {
      {"missing", "it answers with an error (404)"},
      {"unsigned", "what tells its checksum is not signed"},
      {"no-facts", "the signature of its checksum is not that of its makers"},
      {"other-key", "the signature of its checksum is not that of its makers"},
      {"changed-facts", "the signature of its checksum is not that of its makers"},
      {"other-version", "its checksum is that of something else"},
      {"of-nothing", "its size makes no sense"},
      {"changed", "what came is not what its makers signed"},
      {"shorter", "what came is not what its makers signed"},
      {"longer", "the answer is too large"},
      {"cut", "the connection broke off"},
      {"moved", "it leads elsewhere (302)"},
      {"moved-facts", "it leads elsewhere (302)"},
  };
  for (const auto& [name, why] : kRows)
    EXPECT_EQ(Fetched(Source(name)), std::string("The new version was not installed: ") + why + ".")
        << name;
}

TEST_F(UpdatesTest, ADowngradeIsNoUpdateAndWithoutAKeyNoneIsFetched) {
  UpdateSource source = Source("new");
  source.version = "99.1.0";
  EXPECT_TRUE(Holds(Fetched(source), "it is no newer one"));
  source.version = "99.2";
  EXPECT_TRUE(Holds(Fetched(source), "it is no newer one"));
  EXPECT_TRUE(Holds(Fetched(Source("new"), "..\\..\\x"), "it is no newer one"));
  source.key.clear();
  EXPECT_TRUE(Holds(Fetched(source), "without the key"));
}

TEST_F(UpdatesTest, ADownloadStops) {
  const auto stop = [](const Progress& progress) { return progress.total > 0; };
  EXPECT_THROW(FetchInstaller(*http, Source("new"), "99.1.0", stop), Error);
}

struct InstallerTest : RunFixture {
  InstallerTest() { Forget(); }
  ~InstallerTest() override { Forget(); }
  Names Left() {
    Names left;
    for (const std::string& path : machine->Tree(temp))
      if (path.starts_with("quellix-update-")) left.push_back(path);
    return left;
  }
  void Forget() {
    ClearInstallers(ports);
    EXPECT_EQ(Left(), Names{});
  }
  // The deepest first.
  void ClearPlanted() {
    Names left = Left();
    while (!left.empty()) {
      ports.files.RemoveFolder(WithoutBackslash(temp + left.back()));
      left.pop_back();
    }
  }
  Machine On(Shell& shell) const { return With(ports.files, shell); }
  Machine With(FileSystem& files, Shell& shell) const {
    return {files,        ports.registry, shell,          ports.url_cache,     ports.profile,
            ports.system, ports.session,  ports.cleaners, ports.program_folder};
  }
};

TEST_F(InstallerTest, ItIsStartedWhereNobodyElseHasPutAnything) {
  NotingShell shell(ports.shell);
  StartInstaller(On(shell), "2.0", "installer");
  EXPECT_TRUE(shell.started.ends_with("\\quellix-2.0-setup.exe")) << shell.started;
  EXPECT_TRUE(shell.started.starts_with(temp + "quellix-update-")) << shell.started;
  EXPECT_EQ(Read(shell.started), "installer");
  const std::string before = shell.started;
  StartInstaller(On(shell), "2.1", "another");
  EXPECT_NE(shell.started, before);
  EXPECT_EQ(Left().size(), 2u);  // the folder and its file
  engine.ClearLeftovers();
  EXPECT_EQ(Left(), Names{}) << "nor at the next start";
}

TEST_F(InstallerTest, WhatOthersCallAlmostTheSameStays) {
  const std::string name = "quellix-update-" + TemporaryName();
  machine->MakeFile(temp + "quellix-update-mine\\a.txt", "dear");
  machine->MakeFile(temp + TemporaryName() + "\\a.txt", "dear");
  machine->MakeFile(temp + "quellix-update-" + TemporaryName(), "a file");
  machine->MakeFile(scratch + "outside\\a.txt", "dear");
  const bool has_links = machine->Can(Ability::kRemoveLinks);
  if (has_links) machine->MakeFolderLink(temp + name, scratch + "outside");
  const Names before = machine->Tree(temp), outside = machine->Tree(scratch);
  ClearInstallers(ports);
  EXPECT_EQ(machine->Tree(temp), before);
  EXPECT_EQ(machine->Tree(scratch), outside);
  if (has_links) ports.files.RemoveFolder(temp + name);
  Clean("CleanTempFiles");
}

TEST_F(InstallerTest, WhatDoesNotStartGoesAtOnce) {
  const std::tuple<const char*, bool, bool> kRows[] = {{"it cannot be started", true, true},
                                                       {"its rights are refused", false, false}};
  for (const auto& [name, refuses, agrees] : kRows) {
    NotingShell shell(ports.shell);
    shell.refuses = refuses;
    shell.agrees = agrees;
    bool is_started = false;
    try {
      is_started = StartInstaller(On(shell), "2.0", "installer");
    } catch (const Error&) {
      EXPECT_TRUE(refuses) << name;
    }
    EXPECT_TRUE(!is_started && !shell.started.empty()) << name;
    EXPECT_EQ(Left(), Names{}) << name;
  }
}

// Whatever another program of this user does to it before it is held, or after.
TEST_F(InstallerTest, OnlyTheBytesThatWereSignedAreStarted) {
  for (const char* const changed : {"insTaller", "install", "installer and more", ""}) {
    struct Exchanging : ForwardingFolder {
      Exchanging(std::unique_ptr<Folder> folder, std::string bytes)
          : ForwardingFolder(std::move(folder)), bytes_(std::move(bytes)) {}
      std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
        if (mode == OpenMode::kReadKept) {
          const auto file = ForwardingFolder::Open(name, OpenMode::kReadAndCreate);
          file->Resize(0);
          file->Write(0, bytes_);
        }
        return ForwardingFolder::Open(name, mode);
      }
      std::string bytes_;
    };
    ForwardingFiles files(ports.files, [&](const std::string&, std::unique_ptr<Folder> folder) {
      return std::unique_ptr<Folder>(new Exchanging(std::move(folder), changed));
    });
    NotingShell shell(ports.shell);
    EXPECT_THROW(StartInstaller(With(files, shell), "2.0", "installer"), Error) << changed;
    EXPECT_EQ(shell.started, "") << changed;
    EXPECT_EQ(Left(), Names{}) << changed;
  }
}

// As a library that the installer would load.
TEST_F(InstallerTest, BesideWhatAnotherProgramPutThereNothingIsStarted) {
  for (const bool is_folder : {false, true}) {
    struct Planting : ForwardingFolder {
      Planting(std::unique_ptr<Folder> folder, bool plants_folder)
          : ForwardingFolder(std::move(folder)), plants_folder_(plants_folder) {}
      std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
        if (mode == OpenMode::kReadKept) Plant();
        return ForwardingFolder::Open(name, mode);
      }
      void Plant() {
        if (plants_folder_) return CreateFolder("quellix-2.0-setup.exe.local");
        ForwardingFolder::Open("version.dll", OpenMode::kCreateNew)->Write(0, "bad");
      }
      const bool plants_folder_;
    };
    ForwardingFiles files(ports.files, [&](const std::string&, std::unique_ptr<Folder> folder) {
      return std::unique_ptr<Folder>(new Planting(std::move(folder), is_folder));
    });
    NotingShell shell(ports.shell);
    EXPECT_THROW(StartInstaller(With(files, shell), "2.0", "installer"), Error) << is_folder;
    EXPECT_EQ(shell.started, "") << is_folder;
    for (const std::string& left : Left()) {
      EXPECT_TRUE(is_folder && left.ends_with('\\')) << left << ": no file is left";
    }
    if (is_folder) ClearPlanted();
  }
}

TEST_F(InstallerTest, NobodyWritesOrRemovesItUntilItHasStarted) {
  if (!ports.session.RunsPrograms()) GTEST_SKIP() << "nothing is started on a volume";
  NotingShell shell(ports.shell);
  shell.on_start = [&](const std::string& path) {
    EXPECT_THROW(ports.files.Open(path, OpenMode::kReadAndCreate), Error);
    EXPECT_THROW(ports.files.RemoveFile(path), Error);
    EXPECT_THROW(ports.files.Rename(path, path + "2"), Error);
  };
  EXPECT_TRUE(StartInstaller(On(shell), "2.0", "installer"));
  EXPECT_EQ(Read(shell.started), "installer");
}

TEST_F(InstallerTest, OnlyWhoWantsItIsAskedFor) {
  for (const auto& [text, wanted] :
       {std::pair("", false), std::pair("[General]\nCheckUpdates=1\n", true),
        std::pair("[General]\nCheckUpdates=yes\n", false), std::pair(kShippedSettings, false)}) {
    WriteSettings(text);
    EXPECT_EQ(settings.Load().check_updates, wanted) << text;
    EXPECT_EQ(UpdateSourceOf(ports).server, "");
  }
  WriteSettings("[Updates]\nServer=https://updates.example\n");
  EXPECT_EQ(UpdateSourceOf(ports).server, "https://updates.example");
}

TEST_F(InstallerTest, TheServerIsAskedOnceAWeek) {
  EXPECT_TRUE(IsUpdateCheckDue(ports));
  NoteUpdateCheck(ports);
  EXPECT_FALSE(IsUpdateCheckDue(ports));
  const int64_t now = ports.system.UtcNow(), hour = 36'000'000'000;
  const std::pair<int64_t, bool> kRows[] = {
      {now - 167 * hour, false}, {now - 169 * hour, true}, {now + hour, true}, {-1, true}};
  for (const auto& [last, is_due] : kRows) {
    settings.WriteIniValue("Updates", "LastCheck", std::to_string(last));
    EXPECT_EQ(IsUpdateCheckDue(ports), is_due) << last;
  }
  settings.WriteIniValue("Updates", "LastCheck", "soon");
  EXPECT_TRUE(IsUpdateCheckDue(ports));
}

}  // namespace
}  // namespace quellix
