// Profiles of today's browsers, their databases made by SQLite with the tables that those have:
// what should go is gone from the bytes on the disk, and nothing else is.
#include "app/cleaning_run.h"
#include "app/undo_run.h"
#include "browsers/browser_catalogue.h"
#include "support/browser_fixture.h"
#include "support/scripted_prompts.h"

namespace quellix {
namespace {

constexpr const char* kForms = R"(
CREATE TABLE moz_formhistory (id INTEGER PRIMARY KEY, fieldname TEXT NOT NULL, value TEXT NOT NULL,
  timesUsed INTEGER, firstUsed INTEGER, lastUsed INTEGER, guid TEXT);
CREATE TABLE moz_deleted_formhistory (id INTEGER PRIMARY KEY, timeDeleted INTEGER, guid TEXT);
CREATE TABLE moz_sources (id INTEGER PRIMARY KEY, source TEXT NOT NULL);
CREATE TABLE moz_history_to_sources (history_id INTEGER, source_id INTEGER,
  PRIMARY KEY (history_id, source_id)) WITHOUT ROWID;
INSERT INTO moz_formhistory(fieldname, value) VALUES ('searchbar-history', 'secret-typed');
INSERT INTO moz_sources VALUES (1, 'secret-engine');
INSERT INTO moz_history_to_sources VALUES (1, 1);)";

constexpr const char* kPlaces = R"(
CREATE TABLE moz_origins (id INTEGER PRIMARY KEY, prefix TEXT NOT NULL, host TEXT NOT NULL,
  frecency INTEGER NOT NULL, recalc_frecency INTEGER NOT NULL DEFAULT 0, UNIQUE (prefix, host));
CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR,
  rev_host LONGVARCHAR, visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL,
  typed INTEGER DEFAULT 0 NOT NULL, frecency INTEGER DEFAULT -1 NOT NULL, last_visit_date INTEGER,
  guid TEXT, foreign_count INTEGER DEFAULT 0 NOT NULL, url_hash INTEGER DEFAULT 0 NOT NULL,
  description TEXT, preview_image_url TEXT, site_name TEXT,
  origin_id INTEGER REFERENCES moz_origins(id), recalc_frecency INTEGER NOT NULL DEFAULT 0);
CREATE INDEX moz_places_url_hashindex ON moz_places (url_hash);
CREATE UNIQUE INDEX moz_places_guid_uniqueindex ON moz_places (guid);
CREATE TABLE moz_historyvisits (id INTEGER PRIMARY KEY, from_visit INTEGER, place_id INTEGER,
  visit_date INTEGER, visit_type INTEGER, session INTEGER, source INTEGER DEFAULT 0 NOT NULL,
  triggeringPlaceId INTEGER);
CREATE TABLE moz_inputhistory (place_id INTEGER NOT NULL, input LONGVARCHAR NOT NULL,
  use_count INTEGER, PRIMARY KEY (place_id, input));
CREATE TABLE moz_bookmarks (id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER DEFAULT NULL,
  parent INTEGER, position INTEGER, title LONGVARCHAR, keyword_id INTEGER, folder_type TEXT,
  dateAdded INTEGER, lastModified INTEGER, guid TEXT, syncStatus INTEGER NOT NULL DEFAULT 0,
  syncChangeCounter INTEGER NOT NULL DEFAULT 1);
CREATE TABLE moz_keywords (id INTEGER PRIMARY KEY AUTOINCREMENT, keyword TEXT UNIQUE,
  place_id INTEGER, post_data TEXT);
CREATE TABLE moz_anno_attributes (id INTEGER PRIMARY KEY, name VARCHAR(32) UNIQUE NOT NULL);
CREATE TABLE moz_annos (id INTEGER PRIMARY KEY, place_id INTEGER NOT NULL,
  anno_attribute_id INTEGER, content LONGVARCHAR, flags INTEGER DEFAULT 0,
  expiration INTEGER DEFAULT 0, type INTEGER DEFAULT 0, dateAdded INTEGER DEFAULT 0,
  lastModified INTEGER DEFAULT 0);
CREATE TABLE moz_meta (key TEXT PRIMARY KEY, value NOT NULL) WITHOUT ROWID;
CREATE TABLE moz_places_metadata (id INTEGER PRIMARY KEY, place_id INTEGER NOT NULL,
  referrer_place_id INTEGER, created_at INTEGER NOT NULL DEFAULT 0,
  FOREIGN KEY (place_id) REFERENCES moz_places(id) ON DELETE CASCADE);
CREATE TABLE moz_places_metadata_search_queries (id INTEGER PRIMARY KEY, terms TEXT NOT NULL UNIQUE);
PRAGMA user_version=78;
INSERT INTO moz_origins VALUES (1, 'https://', 'dear.example', 9, 0),
  (2, 'https://', 'secret.example', 9, 0), (3, 'https://', 'loaded.example', 9, 0);
INSERT INTO moz_places(id, url, title, visit_count, typed, last_visit_date, guid, foreign_count,
  origin_id) VALUES
  (1, 'https://dear.example/', 'Dear', 5, 1, 50, 'g1', 1, 1),
  (2, 'https://secret.example/page', 'Secret', 7, 1, 60, 'g2', 0, 2),
  (3, 'https://loaded.example/file.zip', NULL, 0, 0, 70, 'g3', 0, 3),
  (4, 'https://dear.example/keyword', NULL, 1, 0, 40, 'g4', 1, 1);
INSERT INTO moz_historyvisits(place_id, visit_date, visit_type) VALUES
  (1, 50, 1), (2, 60, 2), (3, 70, 7), (4, 40, 1);
INSERT INTO moz_inputhistory VALUES (2, 'secret-input', 1);
INSERT INTO moz_bookmarks(id, type, fk, parent, title, guid) VALUES
  (1, 2, NULL, 0, 'root', 'root________'), (2, 1, 1, 1, 'Dear bookmark', 'b2'),
  (3, 2, NULL, 1, 'a tag', 't1'), (4, 1, 1, 3, NULL, 't2');
INSERT INTO moz_keywords(keyword, place_id) VALUES ('k', 4);
INSERT INTO moz_anno_attributes VALUES (1, 'downloads/destinationFileURI'), (2, 'bookmark/note');
INSERT INTO moz_annos(place_id, anno_attribute_id, content) VALUES
  (3, 1, 'file:///C:/loaded-here.zip'), (1, 2, 'dear note'), (2, 2, 'secret note');
INSERT INTO moz_places_metadata(place_id) VALUES (2);
INSERT INTO moz_places_metadata_search_queries(terms) VALUES ('secret-terms');)";

constexpr const char* kIcons = R"(
CREATE TABLE moz_icons (id INTEGER PRIMARY KEY, icon_url TEXT NOT NULL,
  fixed_icon_url_hash INTEGER NOT NULL, width INTEGER NOT NULL DEFAULT 0,
  root INTEGER NOT NULL DEFAULT 0, color INTEGER, expire_ms INTEGER NOT NULL DEFAULT 0,
  flags INTEGER NOT NULL DEFAULT 0, data BLOB);
CREATE TABLE moz_pages_w_icons (id INTEGER PRIMARY KEY, page_url TEXT NOT NULL,
  page_url_hash INTEGER NOT NULL);
CREATE TABLE moz_icons_to_pages (page_id INTEGER NOT NULL, icon_id INTEGER NOT NULL,
  expire_ms INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (page_id, icon_id)) WITHOUT ROWID;
INSERT INTO moz_icons(id, icon_url, fixed_icon_url_hash, root, data) VALUES
  (1, 'https://dear.example/i.png', 1, 0, 'dear-icon'), (2, 'https://secret.example/i.png', 2, 0,
  'secret-icon'), (3, 'dear.example/favicon.ico', 3, 1, 'dear-root'),
  (4, 'secret.example/favicon.ico', 4, 1, 'secret-root');
INSERT INTO moz_pages_w_icons VALUES (1, 'https://dear.example/', 1),
  (2, 'https://secret.example/page', 2);
INSERT INTO moz_icons_to_pages VALUES (1, 1, 0), (2, 2, 0);)";

class BrowsersTest : public BrowserFixture {
 protected:
  // "prefs.js" makes it a profile.
  void MakeProfile(const std::string& path, Left left = Left::kWhole) {
    machine->MakeFile(path + "\\prefs.js", "user_pref(1)");
    for (const char* name : {"key4.db", "cert9.db", "permissions.sqlite", "extensions.json",
                             "storage\\default\\moz-extension+++1\\idb\\1.sqlite"})
      machine->MakeFile(path + "\\" + name, std::string("dear secret of ") + name);
    machine->MakeFile(path + "\\logins.json", "{}");
    machine->MakeFile(path + "\\cache2\\entries\\A", "x");
    MakeDatabase(path + "\\cookies.sqlite", kFirefoxCookies, left);
    MakeDatabase(path + "\\formhistory.sqlite", kForms, left);
    MakeDatabase(path + "\\places.sqlite", kPlaces, left);
    MakeDatabase(path + "\\favicons.sqlite", kIcons, left);
  }
  void Run(std::initializer_list<const char*> keys) {
    Tick(keys);
    engine.RunCleaning();
  }
  Picture RunTwice(const std::string& folder, std::initializer_list<const char*> keys) {
    Run(keys);
    Picture after = PictureOf(folder);
    const std::string log = view.report->log;
    Run(keys);
    EXPECT_EQ(PictureOf(folder), after) << "a second run changes nothing";
    view.report->log = log;
    return after;
  }
  void ExpectOnlyBookmarksAndDownloads(const std::string& places, const std::string& icons) {
    EXPECT_EQ(Query(places,
                    "SELECT url, title, visit_count, typed, last_visit_date, foreign_count "
                    "FROM moz_places",
                    6),
              "https://dear.example/|Dear|0|0||1\nhttps://loaded.example/file.zip||0|0|70|0\n"
              "https://dear.example/keyword||0|0||1\n");
    EXPECT_EQ(Query(places, "SELECT host FROM moz_origins"), "dear.example\nloaded.example\n");
    EXPECT_EQ(Query(places, "SELECT content FROM moz_annos"),
              "file:///C:/loaded-here.zip\ndear note\n");
    EXPECT_EQ(Query(places, "SELECT keyword FROM moz_keywords") +
                  Query(places, "SELECT visit_type FROM moz_historyvisits"),
              "k\n7\n");
    EXPECT_EQ(Query(icons, "SELECT data FROM moz_icons") +
                  Query(icons, "SELECT page_url FROM moz_pages_w_icons"),
              "dear-icon\ndear-root\nhttps://dear.example/\n");
  }
};

TEST_F(BrowsersTest, CookiesGoButForThoseOfKeptSitesHoweverTheBrowserEnded) {
  machine->MakeFile(ports.program_folder + "\\keep.txt", "site:dear.example\r\n");
  const std::pair<const char*, Left> kRows[] = {
      {"whole", Left::kWhole}, {"log", Left::kLog}, {"journal", Left::kJournal}};
  for (const auto& [name, state] : kRows) {
    SCOPED_TRACE(name);
    const std::string profile = firefox + "\\Profiles\\" + name;
    MakeProfile(profile, state);
    const std::string cookies = profile + "\\cookies.sqlite";
    const Picture before = PictureOf(firefox);
    EXPECT_TRUE(IsIn(AllBytes(profile), "secret-old")) << "what the browser itself deleted";

    PreviewRun preview(ports, view);
    Tick({"CleanMozillaCookies"});
    preview.Run(engine.selection());
    EXPECT_EQ(PictureOf(firefox), before) << "a preview changes nothing";
    const std::string found = Entries(preview.state(), EntryKind::kRows);
    EXPECT_EQ(found,
              "dear.example kept\nsub.dear.example kept\ngone.example removed\n"
              "www.gone.example removed\n");

    RunTwice(profile, {"CleanMozillaCookies"});
    EXPECT_TRUE(Holds(view.report->log, "Firefox, Cookies... Rows Deleted: 2 "));
    const std::string left = AllBytes(profile);
    for (const char* gone : {"secret-one", "secret-two", "secret-old"})
      EXPECT_FALSE(IsIn(left, gone)) << gone;
    EXPECT_EQ(Query(cookies, "SELECT value FROM moz_cookies ORDER BY 1"), "dear-one\ndear-two\n");
    EXPECT_EQ(Query(cookies, "PRAGMA integrity_check") + Query(cookies, "PRAGMA user_version"),
              "ok\n17\n");
    RemoveAll();
  }
}

TEST_F(BrowsersTest, HistoryGoesAndBookmarksWithTheirIconsStay) {
  const std::string profile = firefox + "\\Profiles\\p.default-release";
  for (const Left left : {Left::kWhole, Left::kLog, Left::kJournal}) {
    SCOPED_TRACE(static_cast<int>(left));
    MakeProfile(profile, left);
    const std::string places = profile + "\\places.sqlite", icons = profile + "\\favicons.sqlite";
    const char* const kKept = "SELECT * FROM moz_bookmarks";
    const std::string bookmarks = Query(places, kKept, 13);
    const Picture before = PictureOf(profile);
    Picture after = RunTwice(profile, {"CleanMozillaHistory"});
    EXPECT_EQ(Query(places, kKept, 13), bookmarks);
    ExpectOnlyBookmarksAndDownloads(places, icons);
    const std::string bytes_left = AllBytes(profile);
    for (const char* gone : {"secret.example", "secret-input", "secret-terms", "Secret",
                             "secret note", "secret-icon", "secret-root"})
      EXPECT_FALSE(IsIn(bytes_left, gone)) << gone;
    // The list of downloads is an item of its own.
    after = RunTwice(profile, {"CleanMozillaDownloads"});
    EXPECT_FALSE(IsIn(AllBytes(profile), "loaded"));
    EXPECT_EQ(Query(places, kKept, 13), bookmarks);
    EXPECT_EQ(Query(places, "PRAGMA integrity_check") + Query(icons, "PRAGMA integrity_check"),
              "ok\nok\n");
    for (const auto& [name, bytes] : before) {
      if (name.starts_with("places.") || name.starts_with("favicons.")) continue;
      EXPECT_EQ(after[name], bytes) << name;
    }
    RemoveAll();
  }
}

TEST_F(BrowsersTest, PagesThatWereVisitedAsWellOutliveTheListOfDownloads) {
  const std::string profile = firefox + "\\Profiles\\p.default-release";
  MakeProfile(profile);
  MakeDatabase(profile + "\\places.sqlite",
               std::string(kPlaces) +
                   "INSERT INTO moz_historyvisits(place_id, visit_date, "
                   "visit_type) VALUES (2, 65, 7);");
  RunTwice(profile, {"CleanMozillaDownloads"});
  EXPECT_EQ(Query(profile + "\\places.sqlite", "SELECT id, last_visit_date FROM moz_places", 2),
            "1|50\n2|60\n4|40\n");
}

TEST_F(BrowsersTest, ProfilesAreFoundWhereverTheyAre) {
  machine->MakeFile(
      firefox + "\\profiles.ini",
      "[Profile0]\r\nName=a\r\nIsRelative=1\r\nPath=Profiles/Kl\xC3\xA9o \xE5\xBC\xA0\r\n"
      "[Profile1]\r\nIsRelative=0\r\nPath=" +
          scratch +
          "far\\p\r\n[Profile2]\r\n"
          "Path=\r\n[Profile3]\r\nPath=Z:\\nowhere\r\n[Install1]\r\nDefault=x\r\n");
  const std::string package = local + "\\Packages\\Mozilla.Firefox_n80bbvh6b1yt2\\LocalCache\\";
  const std::tuple<const char*, std::string, std::string> kRows[] = {
      {"relative", firefox + "\\Profiles\\Kl\xC3\xA9o \xE5\xBC\xA0",
       local + "\\Mozilla\\Firefox\\Profiles\\Kl\xC3\xA9o \xE5\xBC\xA0"},
      {"absolute", scratch + "far\\p", ""},
      {"not named", firefox + "\\Profiles\\other", local + "\\Mozilla\\Firefox\\Profiles\\other"},
      {"of the Store", package + "Roaming\\Mozilla\\Firefox\\Profiles\\s",
       package + "Local\\Mozilla\\Firefox\\Profiles\\s"}};
  for (const auto& [name, path, cache] : kRows) {
    MakeProfile(path);
    if (!cache.empty()) machine->MakeFile(cache + "\\cache2\\entries\\B", "x");
  }
  machine->MakeFile(firefox + "\\Profiles\\no profile\\logins.json", "dear");
  Run({"CleanMozillaCache", "CleanMozillaForms", "CleanMozillaPasswords"});
  for (const auto& [name, path, cache] : kRows) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(IsIn(AllBytes(path), "secret-typed"));
    EXPECT_EQ(Joined(machine->Tree(path)),
              "cache2\\ cert9.db cookies.sqlite extensions.json favicons.sqlite formhistory.sqlite "
              "key4.db permissions.sqlite places.sqlite prefs.js storage\\ storage\\default\\ "
              "storage\\default\\moz-extension+++1\\ storage\\default\\moz-extension+++1\\idb\\ "
              "storage\\default\\moz-extension+++1\\idb\\1.sqlite");
    EXPECT_EQ(Joined(machine->Tree(cache)), cache.empty() ? "" : "cache2\\");
  }
  EXPECT_TRUE(machine->Exists(firefox + "\\Profiles\\no profile\\logins.json"));
  EXPECT_TRUE(
      Holds(view.report->log, "Firefox, Saved passwords... Rows Deleted: 0 Files Deleted: 4"));
}

struct BrowsersSpoiledTest : BrowsersTest {
  struct Spoiler {
    const char* name;
    std::function<void()> spoil;
    const char* told;
  };
  std::vector<Spoiler> Spoilers(const std::string& profile, const std::string& cookies,
                                std::shared_ptr<void>& lock) {
    const auto write = [this, cookies](const std::string& bytes) {
      return [=, this] { ports.files.WriteWholeFile(cookies, bytes); };
    };
    const std::string whole = Read(cookies), garbage(7, '\xFF');
    const auto changed = [&](size_t at, const std::string& with) {
      return write(std::string(whole).replace(at, with.size(), with));
    };
    return {
        {"running",
         [&, this] {
           machine->MakeFile(profile + "\\parent.lock", "");
           lock = machine->LockFile(profile + "\\parent.lock");
         },
         "Profiles\\p"},
        {"held", [&, this] { lock = machine->LockFile(cookies); }, "cookies.sqlite"},
        {"no database", changed(0, "not a database at all"), "it is damaged"},
        {"damaged", changed(4096 + 1, garbage), "it is damaged"},
        {"damaged where nothing goes", changed(3 * 4096 + 1, garbage), "it is damaged"},
        {"cut short", write(whole.substr(0, 5000)), "it is damaged"},
        {"empty", write(""), "no such table: moz_cookies"},
        {"of another form",
         [&, this] {
           ports.files.RemoveFile(cookies);
           MakeDatabase(cookies, "CREATE TABLE moz_cookies(name, value, site)");
         },
         "no such column: host"},
        {"read-only", [&, this] { ports.files.SetAttributes(cookies, kReadOnly); },
         "it is read-only"},
        {"with further names", [&, this] { machine->MakeHardLink(profile + "\\other", cookies); },
         "it has further names"},
        {"a journal that cannot be made", [&, this] { machine->MakeFolder(cookies + "-journal"); },
         "cookies.sqlite"}};
  }
};

TEST_F(BrowsersSpoiledTest, WhatCannotBeChangedWholeIsToldAndStaysToTheByte) {
  const std::string profile = firefox + "\\Profiles\\p", cookies = profile + "\\cookies.sqlite";
  std::shared_ptr<void> lock;
  MakeProfile(profile);
  for (const auto& row : Spoilers(profile, cookies, lock)) {
    SCOPED_TRACE(row.name);
    MakeProfile(profile);
    row.spoil();
    const Picture before = PictureOf(profile);
    Run({"CleanMozillaCookies"});
    EXPECT_EQ(PictureOf(profile), before);
    const std::string told = StayedNames(engine.state(), kNamesSaved);
    EXPECT_TRUE(Holds(told, row.told));
    EXPECT_EQ(Entries(engine.state(), EntryKind::kRows), "");
    lock.reset();
    if (machine->Exists(cookies)) ports.files.SetAttributes(cookies, kNormal);
    RemoveAll();
  }
}

TEST_F(BrowsersTest, WhatWasBackedUpComesBackWithItsLog) {
  WriteSettings("[General]\r\nDelMethod=B\r\n");
  const std::string profile = firefox + "\\Profiles\\p";
  for (const Left left : {Left::kWhole, Left::kLog}) {
    MakeProfile(profile, left);
    const Picture before = PictureOf(profile);
    Run({"CleanMozillaCookies", "CleanMozillaForms"});
    EXPECT_FALSE(IsIn(AllBytes(profile), "secret-typed"));
    ASSERT_TRUE(CanUndo(*engine.state().Entries));
    ScriptedPrompts prompts;
    prompts.overwrites.assign(4, OverwriteAnswer::kAll);
    const RestoreResult result = UndoRun(ports, *engine.state().Entries, prompts, {});
    EXPECT_TRUE(result.problems.empty());
    EXPECT_EQ(PictureOf(profile), before);
    RemoveAll();
  }
}

TEST_F(BrowsersTest, OnlyWhatWasTickedInThePreviewGoes) {
  const std::string profile = firefox + "\\Profiles\\p", cookies = profile + "\\cookies.sqlite";
  MakeProfile(profile);
  PreviewRun preview(ports, view);
  Tick({"CleanMozillaCookies"});
  preview.Run(engine.selection());
  const RunEntries& entries = *preview.entries();
  engine.RunCleaning(std::make_shared<RunChoice>(
      entries, [&](size_t i) { return entries.all[i].part != "gone.example"; }));
  EXPECT_EQ(Query(cookies, "SELECT value FROM moz_cookies"), "secret-one\n");
  EXPECT_FALSE(IsIn(AllBytes(profile), "dear-two"));
}

}  // namespace
}  // namespace quellix
