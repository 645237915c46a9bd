// The browsers built on Chromium, with databases made by SQLite itself.
#include "browsers/browser_catalogue.h"
#include "browsers/firefox_cleaner.h"
#include "browsers/firefox_profiles.h"
#include "support/browser_fixture.h"
#include "support/forwarding_files.h"

namespace quellix {
namespace {

constexpr const char* kChromeCookies = R"(
CREATE TABLE meta(key LONGVARCHAR NOT NULL UNIQUE PRIMARY KEY, value LONGVARCHAR);
CREATE TABLE cookies(creation_utc INTEGER NOT NULL, host_key TEXT NOT NULL,
  top_frame_site_key TEXT NOT NULL, name TEXT NOT NULL, value TEXT NOT NULL,
  encrypted_value BLOB NOT NULL, path TEXT NOT NULL, expires_utc INTEGER NOT NULL,
  is_secure INTEGER NOT NULL, is_httponly INTEGER NOT NULL, last_access_utc INTEGER NOT NULL,
  has_expires INTEGER NOT NULL, is_persistent INTEGER NOT NULL, priority INTEGER NOT NULL,
  samesite INTEGER NOT NULL, source_scheme INTEGER NOT NULL, source_port INTEGER NOT NULL,
  last_update_utc INTEGER NOT NULL, source_type INTEGER NOT NULL,
  has_cross_site_ancestor INTEGER NOT NULL);
CREATE UNIQUE INDEX cookies_unique_index ON cookies(host_key, top_frame_site_key,
  has_cross_site_ancestor, name, path, source_scheme, source_port);
INSERT INTO cookies SELECT 1, host, '', 'n', '', value, '/', 0,0,0,0,0,0,0,0,0,0,0,0,0 FROM
  (SELECT '.gone.example' AS host, 'secret-one' AS value UNION SELECT 'dear.example', 'dear-one');
--cut
DELETE FROM cookies;)";

constexpr const char* kWebData = R"(
CREATE TABLE autofill (name VARCHAR, value VARCHAR, value_lower VARCHAR,
  date_created INTEGER DEFAULT 0, date_last_used INTEGER DEFAULT 0, count INTEGER DEFAULT 1,
  PRIMARY KEY (name, value));
CREATE TABLE keywords (id INTEGER PRIMARY KEY, short_name VARCHAR NOT NULL, keyword VARCHAR);
CREATE TABLE credit_cards (guid VARCHAR PRIMARY KEY, card_number_encrypted BLOB);
CREATE TABLE token_service (service VARCHAR PRIMARY KEY NOT NULL, encrypted_token BLOB);
CREATE TABLE addresses (guid VARCHAR PRIMARY KEY NOT NULL, use_count INTEGER);
INSERT INTO autofill(name, value) VALUES ('email', 'secret-typed');
INSERT INTO keywords VALUES (1, 'dear-engine', 'k');
INSERT INTO credit_cards VALUES ('g', 'dear-card');
INSERT INTO addresses VALUES ('dear-address', 1);)";

constexpr const char* kChromeIcons = R"(
CREATE TABLE favicons(id INTEGER PRIMARY KEY, url LONGVARCHAR NOT NULL, icon_type INTEGER);
CREATE TABLE favicon_bitmaps(id INTEGER PRIMARY KEY, icon_id INTEGER NOT NULL,
  last_updated INTEGER DEFAULT 0, image_data BLOB, width INTEGER DEFAULT 0);
CREATE TABLE icon_mapping(id INTEGER PRIMARY KEY, page_url LONGVARCHAR NOT NULL, icon_id INTEGER);
INSERT INTO favicons VALUES (1, 'https://dear.example/i', 1), (2, 'https://secret.example/i', 1);
INSERT INTO favicon_bitmaps(icon_id, image_data) VALUES (1, 'dear-icon'), (2, 'secret-icon');
INSERT INTO icon_mapping(page_url, icon_id) VALUES ('https://dear.example/', 1),
  ('https://secret.example/', 2);)";

class ChromiumTest : public BrowserFixture {
 protected:
  // What is never touched, whatever is cleaned.
  const Names kDear = Split(
      "Bookmarks/Preferences/Secure Preferences/Extension State\\1.log/"
      "IndexedDB\\chrome-extension_abc_0.indexeddb.leveldb\\1.log/"
      "Sync Extension Settings\\abc\\1.log/Service Worker\\Database\\1.log/"
      "Service Worker\\CacheStorage\\aa\\1\\x",
      '/');

  void MakeProfile(const std::string& profile) {
    const auto make = [&](const std::string& name, const std::string& bytes) {
      machine->MakeFile(profile + "\\" + name, bytes);
    };
    for (const std::string& name : kDear) make(name, "dear secret of " + name);
    make("Bookmarks", R"({"roots":{"bookmark_bar":{"url": "https://dear.example/"}}})");
    make("Service Worker\\CacheStorage\\aa\\index.txt", "\x0A chrome-extension://abc/");
    make("Cache\\Cache_Data\\f_1", "secret-cache");
    make("Code Cache\\js\\1", "secret-code");
    make("Visited Links", "secret-links");
    make("Sessions\\Tabs_1", "secret-tabs");
    make("IndexedDB\\https_gone.example_0.indexeddb.leveldb\\1.log", "secret-idb");
    make("IndexedDB\\https_dear.example_0.indexeddb.leveldb\\1.log", "dear-idb");
    make("Service Worker\\CacheStorage\\bb\\index.txt", "\x0A https://gone.example/ secret-sw");
    make("Service Worker\\CacheStorage\\cc\\index.txt", "\x0A https://dear.example/ dear-sw");
    make("Local Storage\\leveldb\\1.log", "secret-ls");
    MakeDatabase(profile + "\\Network\\Cookies", kChromeCookies, Left::kJournal);
    MakeDatabase(profile + "\\Web Data", kWebData);
    MakeDatabase(profile + "\\Favicons", kChromeIcons);
    MakeDatabase(profile + "\\History",
                 "CREATE TABLE urls(url); INSERT INTO urls VALUES('secret-url')");
    MakeDatabase(profile + "\\Login Data",
                 "CREATE TABLE logins(u); INSERT INTO logins VALUES('secret-pw')", Left::kLog);
  }
  void Clean(std::initializer_list<const char*> names) {
    std::vector<BrowserChoice> choices;
    const std::vector<FoundBrowser> browsers = FindBrowsers(ports);
    std::string problem;
    for (const char* name : names) {
      for (const BrowserChoice& each : ParseBrowserChoice(browsers, name, problem))
        choices.push_back(each);
    }
    EXPECT_EQ(problem, "");
    RunOthers(engine.context(), {.browsers = choices});
  }
};

const std::pair<const char*, std::vector<const char*>> kKindRows[] = {
    {"chrome:cache", {"secret-cache", "secret-code"}},
    {"chrome:cookies", {"secret-one"}},
    {"chrome:history", {"secret-url", "secret-links", "secret-icon"}},
    {"chrome:forms", {"secret-typed"}},
    {"chrome:passwords", {"secret-pw"}},
    {"chrome:sessions", {"secret-tabs"}},
    {"chrome:sitedata", {"secret-idb", "secret-sw"}}};

TEST_F(ChromiumTest, EachKindTakesItsOwnInEveryProfileAndNothingElse) {
  machine->MakeFile(ports.program_folder + "\\keep.txt", "site:dear.example\r\n");
  const Names profiles = {chrome + "\\Default", chrome + "\\Profile 7"};
  for (const std::string& profile : profiles) MakeProfile(profile);
  machine->MakeFile(chrome + "\\System Profile\\Preferences", "dear");
  machine->MakeFile(chrome + "\\System Profile\\Sessions\\x", "dear");
  std::map<std::string, std::string> dear;
  for (const std::string& name : kDear)
    dear[name] = *ports.files.ReadWholeFile(profiles[0] + "\\" + name);
  for (const auto& [kind, gone] : kKindRows) {
    SCOPED_TRACE(kind);
    const std::string before = AllBytes(chrome);
    for (const char* text : gone) EXPECT_TRUE(IsIn(before, text)) << text;
    Clean({kind});
    const std::string left = AllBytes(chrome);
    for (const auto& [other, texts] : kKindRows) {
      for (const char* text : texts)
        EXPECT_EQ(IsIn(left, text), other != kind && IsIn(before, text)) << text;
    }
    const Picture after = PictureOf(chrome);
    Clean({kind});
    EXPECT_EQ(PictureOf(chrome), after) << "a second run changes nothing";
  }
  for (const std::string& profile : profiles) {
    for (const auto& [name, bytes] : dear)
      EXPECT_EQ(ports.files.ReadWholeFile(profile + "\\" + name), bytes) << name;
    EXPECT_EQ(Query(profile + "\\Network\\Cookies", "SELECT encrypted_value FROM cookies"),
              "dear-one\n");
    EXPECT_EQ(Query(profile + "\\Web Data",
                    "SELECT short_name FROM keywords UNION SELECT "
                    "card_number_encrypted FROM credit_cards UNION SELECT guid FROM addresses"),
              "dear-address\ndear-card\ndear-engine\n");
    EXPECT_EQ(Query(profile + "\\Favicons", "SELECT image_data FROM favicon_bitmaps"),
              "dear-icon\n");
    // One store holds those of all sites.
    const std::string left = AllBytes(profile);
    for (const char* stays : {"dear-idb", "dear-sw", "secret-ls"}) EXPECT_TRUE(IsIn(left, stays));
  }
  EXPECT_TRUE(machine->Exists(chrome + "\\System Profile\\Sessions\\x"));
}

TEST_F(ChromiumTest, WhatAddOnsShareWithSitesStaysAsLongAsThereAreAddOns) {
  const std::string profile = chrome + "\\Default";
  MakeProfile(profile);
  machine->MakeFile(profile + "\\Extensions\\abc\\1.0\\manifest.json", "{}");
  Clean({"chrome:sitedata"});
  EXPECT_TRUE(IsIn(AllBytes(profile), "secret-ls"));
  EXPECT_NE(StayedNames(engine.state(), kNamesSaved).find("add-ons"), std::string::npos);
  ports.files.RemoveFile(profile + "\\Extensions\\abc\\1.0\\manifest.json");
  for (const char* name : {"\\Extensions\\abc\\1.0", "\\Extensions\\abc"})
    ports.files.RemoveFolder(profile + name);
  Clean({"chrome:sitedata"});
  EXPECT_FALSE(IsIn(AllBytes(profile), "secret-ls"));
  EXPECT_EQ(engine.state().StayedCount, 0);
}

TEST_F(ChromiumTest, ADatabaseThatIsKeptKeepsWhatItsBrowserHadNotWrittenYet) {
  const std::string profile = chrome + "\\Default";
  MakeProfile(profile);
  WriteOwn("keep.txt", profile + "\\Login Data\r\n");
  const Picture before = PictureOf(chrome);
  EXPECT_TRUE(machine->Exists(profile + "\\Login Data-wal"));
  Clean({"chrome:passwords"});
  EXPECT_EQ(PictureOf(chrome), before);
}

TEST_F(ChromiumTest, BrowsersAreFoundWithTheirProfilesAndWhatTheyCost) {
  EXPECT_TRUE(FindBrowsers(ports).empty());
  for (const std::string& path :
       {chrome + "\\Default", chrome + "\\Profile 2", chrome + "\\Guest Profile",
        local + "\\Microsoft\\Edge\\User Data\\Default",
        roaming + "\\Opera Software\\Opera Stable\\Default", firefox + "\\Profiles\\x"}) {
    machine->MakeFile(path + "\\Preferences", "{}");
    machine->MakeFile(path + "\\prefs.js", "");
  }
  std::string found;
  const std::vector<FoundBrowser> browsers = FindBrowsers(ports);
  for (const FoundBrowser& browser : browsers) {
    found += std::string(browser.label) + " " + std::to_string(browser.profiles) + " " +
             std::to_string(browser.kinds.size()) + "\n";
  }
  EXPECT_EQ(found, "Firefox 1 8\nGoogle Chrome 2 7\nMicrosoft Edge 1 7\nOpera 1 7\n");
  const auto parse = [&](const char* name) {
    std::string text, problem;
    for (const BrowserChoice& choice : ParseBrowserChoice(browsers, name, problem))
      text += NameOf(choice) + " ";
    return text + problem;
  };
  EXPECT_EQ(parse("chrome"), "chrome:cache chrome:history ");
  EXPECT_EQ(parse("Firefox:SiteData"), "firefox:sitedata ");
  EXPECT_EQ(parse("vivaldi:cache"), "there is no browser \"vivaldi\" here.");
  EXPECT_EQ(parse("edge:downloads"), "Microsoft Edge has nothing that is called \"downloads\".");
}

using BrowserKillTest = BrowserFixture;

// A disk that takes no more after some changes, the last of them half done: as a kill leaves it.
struct Dying {
  int changes_left = 0;
  bool is_dead = false;
  // Whether a change is still made, whole.
  bool Lives() {
    if (is_dead) Die();
    return --changes_left > 0;
  }
  [[noreturn]] void Die() {
    is_dead = true;
    throw Error(Error::Kind::kOther, "killed");
  }
};

class DyingFile : public ForwardingFile {
 public:
  DyingFile(std::unique_ptr<RandomFile> file, Dying& disk)
      : ForwardingFile(std::move(file)), disk_(disk) {}
  void Write(uint64_t offset, std::string_view bytes) override {
    const bool is_whole = disk_.Lives();
    ForwardingFile::Write(offset, is_whole ? bytes : bytes.substr(0, bytes.size() / 2));
    if (!is_whole) disk_.Die();
  }
  void Resize(uint64_t size) override {
    if (!disk_.Lives()) disk_.Die();
    ForwardingFile::Resize(size);
  }

 private:
  Dying& disk_;
};

class DyingFolder : public ForwardingFolder {
 public:
  DyingFolder(std::unique_ptr<Folder> folder, Dying& disk)
      : ForwardingFolder(std::move(folder)), disk_(disk) {}
  std::unique_ptr<RandomFile> Open(std::string_view name, OpenMode mode) override {
    if (mode != OpenMode::kRead && disk_.is_dead) disk_.Die();
    return std::make_unique<DyingFile>(ForwardingFolder::Open(name, mode), disk_);
  }
  void RemoveFile(std::string_view name) override {
    if (!disk_.Lives()) disk_.Die();
    ForwardingFolder::RemoveFile(name);
  }

 private:
  Dying& disk_;
};

TEST_F(BrowserKillTest, AKillAtAnyChangeLeavesTheOldOrTheNewContent) {
  const std::string profile = firefox + "\\Profiles\\p", cookies = profile + "\\cookies.sqlite";
  machine->MakeFile(profile + "\\prefs.js", "");
  for (const Left left : {Left::kWhole, Left::kLog, Left::kJournal}) {
    bool is_done = false;
    int kept_old = 0, became_new = 0;
    for (int changes = 1; !is_done; ++changes) {
      SCOPED_TRACE(std::to_string(static_cast<int>(left)) + " " + std::to_string(changes));
      for (const char* ending : {"", "-wal", "-journal"}) {
        if (machine->Exists(cookies + ending)) ports.files.RemoveFile(cookies + ending);
      }
      MakeDatabase(cookies, kFirefoxCookies, left);
      Dying disk{.changes_left = changes};
      ForwardingFiles files(ports.files, [&](const std::string&, std::unique_ptr<Folder> folder) {
        return std::unique_ptr<Folder>(std::make_unique<DyingFolder>(std::move(folder), disk));
      });
      const Machine dying = WithFiles(ports, files);
      CleaningContext killed{dying, settings, engine.state(), view, mod_zip};
      CleanFirefoxProfile(killed, FindFirefoxProfiles(dying).at(0), BrowserKind::kCookies);
      is_done = !disk.is_dead;
      // As the browser opens it next.
      const auto folder = ports.files.OpenFolder(profile);
      Database database(*folder, "cookies.sqlite", cookies, Database::Use::kChange);
      const int64_t rows = database.Number("SELECT count(*) FROM moz_cookies");
      EXPECT_EQ(database.Number("SELECT count(*) FROM pragma_integrity_check WHERE "
                                "integrity_check <> 'ok'"),
                0);
      ASSERT_TRUE(rows == 4 || rows == 0) << rows;
      ++(rows == 4 ? kept_old : became_new);
    }
    EXPECT_GT(kept_old, 0);
    EXPECT_GT(became_new, 1) << "compacting was killed too";
  }
}

}  // namespace
}  // namespace quellix
