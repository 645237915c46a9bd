// Internet shortcuts and bookmarks: listed, judged, and removed so that they come back.

#include "browser_tools/favorites.h"
#include "browser_tools/favorite_files.h"
#include "platform/error.h"
#include "run/known_folders.h"
#include "run/run_steps.h"
#include "support/forwarding_files.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

std::string Shortcut(const std::string& address) {
  return "[InternetShortcut]\r\nURL=" + address + "\r\n";
}

constexpr const char* kTwoBookmarks =
    "<!DOCTYPE NETSCAPE-Bookmark-file-1><A HREF=http://a.example/>a</A><A HREF=\"\">b</A>";

struct FavoritesTest : RunFixture {
  FavoritesTest() : folder(KnownFolder(ports, "Favorites").value() + "\\") { Clear(); }
  ~FavoritesTest() override { Clear(); }
  void Clear() {
    Names tree = machine->Exists(folder) ? machine->Tree(folder) : Names{};
    for (auto path = tree.rbegin(); path != tree.rend(); ++path) {
      path->ends_with("\\") ? ports.files.RemoveFolder(folder + path->substr(0, path->size() - 1))
                            : ports.files.RemoveFile(folder + *path);
    }
  }
  void Make(const std::string& name, const std::string& bytes) {
    machine->MakeFile(folder + name, bytes);
  }
  // "Fault|place|name|address", a line each.
  static Names Rows(const Favorites& favorites) {
    Names rows;
    for (size_t i = 0; i < favorites.RowCount(); ++i) {
      const FavoriteRow& row = favorites.row(i);
      rows.push_back(std::string(FaultName(row.fault)) + "|" + row.place + "|" + row.name + "|" +
                     row.address);
    }
    return rows;
  }
  Names Listed() {
    Favorites favorites(ports);
    favorites.Load();
    EXPECT_EQ(favorites.problem(), "");
    return Rows(favorites);
  }
  // Two of each kind.
  void Seed() {
    Make("a.url", Shortcut("http://a.example/x"));
    Make("b.url", Shortcut("HTTP://A.Example:80/x"));
    Make("c.URL", "");
    Make("News\\a.url", Shortcut("http://a.example/x"));
    Make("News\\desktop.ini", "x");
    Make("Old\\desktop.ini", "x");
    machine->MakeFolder(folder + "Empty\\Below\\Deeper");
  }
  const std::string folder;
};

TEST_F(FavoritesTest, EachIsListedWithWhatIsTheMatter) {
  Seed();
  const Names tree = machine->Tree(folder);
  const Names expected{"||a|http://a.example/x", "duplicate||b|HTTP://A.Example:80/x",
                       "malformed||c|", "emptyFolder||Empty|",
                       "duplicate|News|a|http://a.example/x"};
  EXPECT_EQ(Listed(), expected);
  EXPECT_EQ(Listed(), expected);
  EXPECT_EQ(machine->Tree(folder), tree);
}

TEST_F(FavoritesTest, AFileIsReadWhateverItHolds) {
  const std::tuple<const char*, std::string, const char*, const char*> kRows[] = {
      {"plain", Shortcut("http://a.example/1"), "", "http://a.example/1"},
      {"quoted", Shortcut("\"http://a.example/2\""), "", "http://a.example/2"},
      {"UTF-8", Shortcut("http://a.example/\xC3\xBC"), "", "http://a.example/\xC3\xBC"},
      {"UTF-8 with its mark", "\xEF\xBB\xBF" + Shortcut("http://a.example/3"), "",
       "http://a.example/3"},
      {"code page", Shortcut("http://a.example/\xFC"), "", "http://a.example/\xC3\xBC"},
      {"UTF-16", "\xFF\xFE" + ToUtf16Bytes(Shortcut("http://a.example/4")), "",
       "http://a.example/4"},
      {"lower case", "[internetshortcut]\nurl=http://a.example/5", "", "http://a.example/5"},
      {"a file", Shortcut("file:///C:/x.htm"), "", "file:///C:/x.htm"},
      {"a script", Shortcut("javascript:alert(1)"), "", "javascript:alert(1)"},
      {"mail", Shortcut("mailto:a@b.example"), "", "mailto:a@b.example"},
      {"nothing", "", "malformed", ""},
      {"another section", "[DEFAULT]\r\nBASEURL=http://a.example/\r\n", "malformed", ""},
      {"no address", Shortcut(""), "malformed", ""},
      {"no scheme", Shortcut("www.a.example"), "malformed", "www.a.example"},
      {"binary", std::string("\0\1\2\3\xFF\xFE\x80", 7) + std::string(500, '\0'), "malformed", ""},
      {"a megabyte", Shortcut("http://a.example/6") + std::string(1 << 20, 'x'), "unreadable", ""},
      {"a blank inside", Shortcut("http://a.example/my file"), "", "http://a.example/my file"},
      {"as some write it", Shortcut("http:\\\\a.example"), "", "http:\\\\a.example"},
      {"without //", Shortcut("https:a.example"), "", "https:a.example"},
  };
  for (const auto& [name, bytes, fault, address] : kRows) {
    Make("x.url", bytes);
    EXPECT_EQ(Listed(), Names{std::string(fault) + "||x|" + address}) << name;
  }
}

TEST_F(FavoritesTest, OnlyWhatNoServerTellsApartIsADuplicate) {
  const std::tuple<const char*, const char*, bool> kRows[] = {
      {"http://a.example", "http://A.Example:80/", true},
      {"https://a.example:443/x", "https://a.example/x", true},
      {"http://a.example/%c3%bc", "http://a.example/%C3%BC", true},
      {"http://a.example/x", "http://a.example/X", false},
      {"http://a.example/x", "http://a.example/x/", false},
      {"http://a.example/x", "https://a.example/x", false},
      {"http://a.example/x", "http://www.a.example/x", false},
      {"http://a.example/x#1", "http://a.example/x#2", false},
      {"http://a.example/?a&b", "http://a.example/?b&a", false},
      {"http://u@a.example/", "http://a.example/", false},
      {"http://a.example/%41", "http://a.example/A", false},
      {"mailto:a@b", "mailto:A@b", false},
      {"file:///C:/x", "file:///C:/x", true},
  };
  for (const auto& [a, b, same] : kRows)
    EXPECT_EQ(ComparedAddress(a) == ComparedAddress(b), same) << a << " " << b;
}

TEST_F(FavoritesTest, WhatIsMarkedGoesAndCanComeBack) {
  for (const char* const mode : {"D", "B"}) {
    Clear();
    Seed();
    WriteSettings(std::string("[General]\r\nDelMethod=") + mode + "\r\n");
    Favorites favorites(ports);
    favorites.Load();
    favorites.CheckMarked();
    EXPECT_EQ(favorites.CheckedRows(), (std::vector<size_t>{1, 2, 3, 4}));
    EXPECT_TRUE(Holds(favorites.QuestionFor(4), *mode == 'B' ? "a backup?" : "recycle bin?"));
    engine.Load();
    engine.state().Entries = std::make_shared<RunEntries>();
    favorites.Delete(engine.context(), favorites.CheckedRows());
    EXPECT_EQ(favorites.stayed(), "");
    EXPECT_EQ(Rows(favorites), Names{"||a|http://a.example/x"});
    EXPECT_EQ(Listed(), Names{"||a|http://a.example/x"});
    EXPECT_EQ(machine->Tree(folder),
              (Names{"News\\", "News\\desktop.ini", "Old\\", "Old\\desktop.ini", "a.url"}));
    for (const RunEntry& entry : engine.state().Entries->all) {
      if (entry.kind != EntryKind::kFile) continue;
      EXPECT_EQ(entry.way, *mode == 'B' ? Way::kBackedUp : Way::kRecycled) << entry.place;
    }
    EXPECT_EQ(engine.state().RunFilesDeleted, *mode == 'B' ? 6 : 3);
  }
}

TEST_F(FavoritesTest, WhatHasChangedSinceStays) {
  Seed();
  Make("Work\\w.url", Shortcut("http://w.example/"));
  machine->MakeFolder(folder + "Work\\Empty");
  Favorites favorites(ports);
  favorites.Load();
  favorites.CheckMarked();
  EXPECT_TRUE(Holds(favorites.QuestionFor(5), "Empty folders are removed for good."));
  Make("b.url", Shortcut("http://other.example/"));
  Make("Empty\\Below\\Deeper\\new.url", Shortcut("http://new.example/"));
  ports.files.RemoveFile(folder + "c.URL");
  WriteOwn("keep.txt", folder + "News\\*\r\n" + folder + "Work\r\n");
  const Names tree = machine->Tree(folder);
  engine.Load();
  favorites.Delete(engine.context(), favorites.CheckedRows());
  EXPECT_EQ(machine->Tree(folder), tree);
  for (const char* const why : {"b.url: It holds another address by now.", "It is no longer empty.",
                                "c.URL: It is no longer there.", "News\\a.url: ", "Work\\Empty: "})
    EXPECT_TRUE(Holds(favorites.stayed(), why));
}

TEST_F(FavoritesTest, TheFolderOfAllUsersIsReadOnceAndJudgedByItself) {
  const std::string key =
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
  const std::string shared = scratch + "All";
  Make("a.url", Shortcut("http://a.example/"));
  Make("Shared\\b.url", Shortcut("http://b.example/"));
  machine->MakeFile(shared + "\\a.url", Shortcut("http://a.example/"));
  machine->MakeFile(shared + "\\c.url", Shortcut("http://a.example/"));
  const Names of_user{"||a|http://a.example/", "|Shared|b|http://b.example/"};
  Names both = of_user;
  both.insert(both.end(), {"||a|http://a.example/", "duplicate||c|http://a.example/"});
  const std::pair<std::string, Names> kRows[] = {
      {shared, both}, {folder, of_user}, {folder + "Shared", of_user}, {"C:\\", of_user}};
  for (const auto& [path, rows] : kRows) {
    machine->SetText(kMachine, key, "Common Favorites", path);
    EXPECT_EQ(Listed(), rows) << path;
  }
  machine->SetText(kMachine, key, "Common Favorites", "");
}

TEST_F(FavoritesTest, AFolderThatCannotBeReadOrHasALinkIsNotCalledEmpty) {
  struct Closed : ForwardingFolder {
    using ForwardingFolder::ForwardingFolder;
    void Enumerate(Detail, const EntryVisitor&) override {
      throw Error(Error::Kind::kDenied, "Access is denied.");
    }
  };
  machine->MakeFolder(folder + "Closed");
  machine->MakeFolder(folder + "Empty");
  machine->MakeFile(scratch + "outside\\a.url", Shortcut("http://a.example/"));
  if (machine->Can(Ability::kRemoveLinks))
    machine->MakeFolderLink(folder + "Linked\\link", scratch + "outside");
  std::string deep = "Deep";
  for (int i = 0; i < 70; ++i) deep += "\\d";
  machine->MakeFolder(folder + deep);
  ForwardingFiles files(ports.files, [&](const std::string& path, std::unique_ptr<Folder> opened) {
    if (path != folder + "Closed\\") return opened;
    return std::unique_ptr<Folder>(new Closed(std::move(opened)));
  });
  Favorites favorites(WithFiles(ports, files));
  favorites.Load();
  EXPECT_EQ(Rows(favorites), Names{"emptyFolder||Empty|"});
  EXPECT_TRUE(Holds(favorites.problem(), "Closed cannot be listed."));
  EXPECT_TRUE(Holds(favorites.problem(), "\\d lies too deep to be listed."));
  if (machine->Can(Ability::kRemoveLinks)) ports.files.RemoveFolder(folder + "Linked\\link");
}

TEST_F(FavoritesTest, WithoutItsBackupNothingGoesAndWhatIsTooLargeGoesUnread) {
  Make("a.url", Shortcut("http://a.example/"));
  Make("b.url", Shortcut("http://b.example/") + std::string(70 << 10, 'x'));
  const Names tree = machine->Tree(folder);
  WriteSettings("[General]\r\nDelMethod=B\r\n[Backup]\r\nPath=" + scratch + "file\\\r\n");
  machine->MakeFile(scratch + "file", "where the folder of backups would be");
  Favorites favorites(ports);
  favorites.Load();
  engine.Load();
  favorites.Delete(engine.context(), {0});
  EXPECT_EQ(machine->Tree(folder), tree);
  EXPECT_NE(favorites.stayed(), "");
  WriteSettings("[General]\r\nDelMethod=W\r\n");
  favorites.Delete(engine.context(), {1});
  EXPECT_EQ(favorites.stayed(), "");
  EXPECT_EQ(machine->Tree(folder), Names{"a.url"});
  EXPECT_EQ(engine.state().RemovalMode, kRecycle) << "nothing is lost for good";
}

TEST_F(FavoritesTest, TheSecondOfTwoIsTheOnlyOneWhenTheFirstGoes) {
  Make("a.url", Shortcut("http://a.example/"));
  Make("b.url", Shortcut("http://a.example/"));
  Favorites favorites(ports);
  favorites.Load();
  engine.Load();
  favorites.Delete(engine.context(), {0});
  EXPECT_EQ(Rows(favorites), Names{"||b|http://a.example/"});
  EXPECT_EQ(favorites.Text(0, FavoriteColumn::kState), "");
  favorites.LoadBookmarks(kTwoBookmarks, "x");
  favorites.Delete(engine.context(), {0, 1});
  EXPECT_EQ(favorites.RowCount(), 2u) << "of an exported file nothing can go";
  EXPECT_EQ(machine->Tree(folder), Names{"b.url"});
}

TEST_F(FavoritesTest, WhatTheGuardKeepsStays) {
  const std::string key =
      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
  const std::string kept = ports.system.SystemFolder() + "\\Qx favorites";
  machine->MakeFolder(kept + "\\Empty");
  machine->MakeFile(kept + "\\a.url", "");
  machine->SetText(kMachine, key, "Common Favorites", kept);
  Favorites favorites(ports);
  favorites.Load();
  favorites.CheckMarked();
  EXPECT_EQ(favorites.CheckedRows().size(), 2u);
  engine.Load();
  favorites.Delete(engine.context(), favorites.CheckedRows());
  EXPECT_TRUE(machine->Exists(kept + "\\Empty") && machine->Exists(kept + "\\a.url"));
  EXPECT_TRUE(Holds(favorites.stayed(), "Empty: ") && Holds(favorites.stayed(), "a.url: "));
  machine->SetText(kMachine, key, "Common Favorites", "");
  ports.files.RemoveFolder(kept + "\\Empty");
  ports.files.RemoveFile(kept + "\\a.url");
  ports.files.RemoveFolder(kept);
}

TEST_F(FavoritesTest, AStopKeepsWhatIsLeft) {
  Seed();
  Favorites favorites(ports);
  favorites.Load();
  favorites.CheckMarked();
  engine.Load();
  view.stops = true;
  const Names tree = machine->Tree(folder);
  favorites.Delete(engine.context(), favorites.CheckedRows());
  EXPECT_EQ(machine->Tree(folder), tree);
}

constexpr const char* kBookmarks = R"(<!DOCTYPE NETSCAPE-Bookmark-file-1>
<!-- a comment with <A HREF="http://no.example"> in it -->
<META HTTP-EQUIV="Content-Type" CONTENT="text/html; charset=UTF-8">
<TITLE>Bookmarks</TITLE><H1>Bookmarks</H1>
<DL><p>
<DT><H3 ADD_DATE="1">News &amp; more</H3>
<DL><p>
<DT><A HREF="http://a.example/?a=1&amp;b=2" ICON="data:x>y">A &lt;1&gt; &#252;&#x41;&none;</A>
<DD>what somebody wrote of it
<dt><a add_date=3 href=http://b.example/>B</a>
</DL><p>
<DT><H3>Empty</H3><DL><p></DL><p>
<DT><A HREF='http://a.example/?a=1&b=2'>again</A>
<DT><A>nothing</A>
</DL><p>
)";

TEST_F(FavoritesTest, ExportedBookmarksAreListed) {
  Favorites favorites(ports);
  favorites.LoadBookmarks(kBookmarks, "bookmarks.html");
  EXPECT_EQ(Rows(favorites),
            (Names{"|News & more|A <1> \xC3\xBC"
                   "A&none;|http://a.example/?a=1&b=2",
                   "|News & more|B|http://b.example/", "emptyFolder||Empty|",
                   "duplicate||again|http://a.example/?a=1&b=2", "malformed||nothing|"}));
  EXPECT_FALSE(favorites.can_delete());
  favorites.CheckMarked();
  EXPECT_TRUE(favorites.CheckedRows().empty());
}

TEST_F(FavoritesTest, WhatAreNoBookmarksIsRefusedOrPassedOver) {
  Favorites favorites(ports);
  for (const std::string& bytes : {std::string(), std::string("<html>"), std::string(1000, '\0')})
    EXPECT_THROW(favorites.LoadBookmarks(bytes, "x"), Error);
  const std::string head = "<!DOCTYPE NETSCAPE-Bookmark-file-1>";
  std::string deep = head;
  for (int i = 0; i < 20'000; ++i) deep += "<DL><H3>folder</H3>";
  deep += "<A HREF=http://a.example/>a</A>";
  size_t pauses = 0;
  ReadBookmarks(deep, ports.system, [&pauses](const Progress&) { return ++pauses == 9; });
  EXPECT_EQ(pauses, 9u);
  EXPECT_FALSE(ReadBookmarks(deep, ports.system).empty());
}

}  // namespace
}  // namespace quellix
