// The main window's list of all that can be cleaned.
#include "app/item_list.h"

#include <algorithm>

#include "app/entry_list.h"
#include "app/item_catalogue.h"
#include "app/preview_run.h"
#include "support/browser_fixture.h"
#include "support/recording_session.h"
#include "support/run_fixture.h"

namespace quellix {
namespace {

class ItemListTest : public RunFixture {
 protected:
  void TearDown() override {
    for (const char* name : {"a.tmp", "b.tmp", "locked.tmp"}) {
      if (machine->Exists(temp + name)) ports.files.RemoveFile(temp + name);
    }
  }
  std::string Name(size_t row) const { return list.Text(row, ItemColumn::kName); }
  std::string Note(const char* item) const {
    return list.Text(list.RowOf(*FindItem(item)).value(), ItemColumn::kNote);
  }
  Names NamesOf(Group group) const {
    Names names;
    for (size_t row = 0; row < list.RowCount(); ++row) {
      if (list.At(row).group == group) names.push_back(Name(row));
    }
    return names;
  }
  size_t Heading(Group group) const { return RowOf(group, 0); }
  size_t RowOf(Group group, int folded) const {
    const auto is_it = [&](const ItemList::Row& row) {
      return row.group == group && row.item == nullptr && row.folded == folded;
    };
    size_t row = 0;
    while (!is_it(list.At(row))) ++row;
    return row;
  }
  void Look() {
    PreviewRun preview(ports, view);
    list.BeginLook(preview.state());
    preview.Run(engine.selection());
    list.EndLook();
  }
  bool HasOlderWindowsOnly(const Item& item) const {
    return item.guide.last_windows != 0 && ports.system.Version().major > item.guide.last_windows;
  }

  ItemList list{ports, engine.selection()};
};

TEST_F(ItemListTest, GroupsFoldAwayWhatThisWindowsCannotHaveUnlessItIsTicked) {
  const Item& absent = *FindItem("CleanInstallMRU");
  ASSERT_TRUE(HasOlderWindowsOnly(absent));
  const Names folded = Split(
      "Miscellaneous/Plugins/MS Office history/Windows clipboard/"
      "Windows run history/Windows find history/1 more...",
      '/');
  EXPECT_EQ(NamesOf(Group::kMiscellaneous), folded);
  EXPECT_FALSE(list.RowOf(absent));
  const size_t fold = RowOf(Group::kMiscellaneous, 1);
  EXPECT_TRUE(!list.TicksOf(fold) && list.IsDimmed(fold));
  list.Toggle(fold);
  ASSERT_TRUE(list.RowOf(absent));
  EXPECT_TRUE(list.IsDimmed(*list.RowOf(absent)));
  EXPECT_EQ(Note("CleanInstallMRU"), "nothing of it on this Windows");
  EXPECT_EQ(NamesOf(Group::kMiscellaneous).back(), "Install from history");
  list.Toggle(*list.RowOf(absent));
  list.SetFolded(Group::kMiscellaneous, true);
  EXPECT_TRUE(engine.selection().IsChecked(absent));
  EXPECT_TRUE(list.RowOf(absent)) << "what a run would take is always seen";
  EXPECT_EQ(NamesOf(Group::kMiscellaneous).back(), "Install from history");
}

TEST_F(ItemListTest, AHeadingShowsAndTogglesItsGroupAndABoxThatIsOffStaysSo) {
  Preferences preferences;
  preferences.select_risky = false;
  engine.selection().ApplyProtection(preferences);
  const size_t heading = Heading(Group::kFirefox),
               forms = *list.RowOf(*FindItem("CleanMozillaForms"));
  const std::tuple<size_t, Ticks, const char*> kSteps[] = {
      {heading, Ticks::kSome, "4 of 6 ticked"},
      {forms, Ticks::kSome, "5 of 6 ticked"},
      {*list.RowOf(*FindItem("CleanMozillaPasswords")), Ticks::kAll, "6 of 6 ticked"},
      {heading, Ticks::kNone, "0 of 6 ticked"},
      {forms, Ticks::kSome, "1 of 6 ticked"},
      {heading, Ticks::kSome, "5 of 6 ticked"}};
  EXPECT_EQ(list.TicksOf(heading), Ticks::kNone);
  for (const auto& [row, ticks, note] : kSteps) {
    list.Toggle(row);
    EXPECT_EQ(list.TicksOf(heading), ticks);
    EXPECT_EQ(list.Text(heading, ItemColumn::kNote), note);
  }
  const size_t empty_files = *list.RowOf(*FindItem("CleanEmptyFiles"));
  list.Toggle(empty_files);
  EXPECT_EQ(list.TicksOf(empty_files), Ticks::kNone);
  EXPECT_TRUE(list.IsDimmed(empty_files));
  EXPECT_EQ(Note("CleanEmptyFiles"), "Switched off for safety. Enable it in the Options");
  EXPECT_EQ(Note("CleanMozillaPasswords"), "saved passwords are lost");
  EXPECT_EQ(list.Text(Heading(Group::kFolderFiles), ItemColumn::kNote).substr(0, 5), "0 of ");
}

TEST_F(ItemListTest, ALookFillsInWhatItFindsAndAWordBeginsTheSearchForAName) {
  machine->RemoveRegistryTree(kUser, kRunMruKey);
  machine->MakeFile(temp + "a.tmp", std::string(3000, 'x'));
  machine->MakeFile(temp + "locked.tmp", "1");
  auto lock = machine->LockFile(temp + "locked.tmp");
  Tick({"CleanTempFiles", "CleanRunMRU", "CleanUserFiles"});
  list.Refresh();
  const Item& item = *FindItem("CleanTempFiles");
  const size_t row = *list.RowOf(item);
  EXPECT_EQ(list.Text(row, ItemColumn::kBytes), "");
  EXPECT_EQ(list.Summary(), "3 items");
  Look();
  EXPECT_EQ(list.Text(row, ItemColumn::kBytes), "2.93 KB");
  EXPECT_EQ(list.Text(row, ItemColumn::kCount), "1");
  EXPECT_EQ(Note("CleanTempFiles"), "1 will stay");
  EXPECT_EQ(Note("CleanUserFiles"), "nothing found");
  EXPECT_EQ(list.Text(Heading(Group::kFolderFiles), ItemColumn::kBytes), "2.93 KB");
  EXPECT_EQ(list.Text(Heading(Group::kMiscellaneous), ItemColumn::kCount), "0");
  EXPECT_EQ(list.Summary(), "3 items, 2.93 KB");
  Tick({"CleanTempFiles", "CleanMozillaHistory"});
  EXPECT_EQ(list.Summary(), "2 items, 2.93 KB found so far");
  list.Forget();
  EXPECT_EQ(list.Text(row, ItemColumn::kBytes), "");
  lock.reset();

  EXPECT_EQ(list.Find("TEMPORARY F", 0), row);
  const size_t cookies = list.Find("cookies", 0).value(),
               next = list.Find("c", cookies + 1).value();
  EXPECT_NE(cookies, next);
  EXPECT_EQ(list.Find("recycle", next), 1u) << "on from the top";
  EXPECT_FALSE(list.Find("no such item", 0));
}

TEST_F(ItemListTest, ALookThatWasStoppedIsToldAsAPartAndAFoldAsWhatItHides) {
  for (const char* name : {"a.tmp", "b.tmp"}) machine->MakeFile(temp + name, "12345");
  machine->MakeFile(scratch + "listed.txt", "123");
  machine->MakeFile(ports.program_folder + "\\UDFI.txt", scratch + "listed.txt\r\n");
  Tick({"CleanTempFiles", "CleanUserFiles"});
  {
    PreviewRun preview(ports, view);
    list.BeginLook(preview.state());
    view.on_status = [&](const std::string&) {
      list.Follow();
      EXPECT_NE(list.Summary(), "2 items, 3 Bytes") << "the other one was not looked at";
      if (!preview.entries()->all.empty()) view.stops = true;
    };
    preview.Run(engine.selection());
    list.EndLook();
    view.on_status = nullptr;
    view.stops = false;
    ASSERT_TRUE(preview.state().AbortRequested);
    EXPECT_TRUE(list.Summary().ends_with(" found so far")) << list.Summary();
  }
  const size_t fold = RowOf(Group::kMiscellaneous, 1);
  const std::array<bool, kItemCount> hidden = list.ScopeOf(fold).items,
                                     all = list.ScopeOf(fold - 6).items;
  EXPECT_EQ(std::ranges::count(hidden, true), 1);
  EXPECT_TRUE(hidden[FindItem("CleanInstallMRU")->run_order - 1]);
  EXPECT_EQ(std::ranges::count(all, true), 6);
}

// A cache, which needs no database.
class ItemListBrowserTest : public BrowserFixture {
 protected:
  static size_t RowOf(const ItemList& list, int kind) {
    size_t row = 0;
    while (list.At(row).section != 0 || list.At(row).line != kind) ++row;
    return row;
  }
  void SetUp() override {
    machine->MakeFile(chrome + "\\Default\\Preferences", "{}");
    machine->MakeFile(chrome + "\\Local State", "{}");
    machine->MakeFile(cached, "12345");
    machine->MakeFile(firefox + "\\Profiles\\x\\prefs.js", "");
    Preferences preferences;
    preferences.select_risky = false;
    engine.selection().ApplyProtection(preferences);
    heading = list.RowCount();
    list.SetSections(FindSections(ports));
    cache = RowOf(list, 0);
  }
  const std::string cached = chrome + "\\Default\\Cache\\Cache_Data\\f_000001";
  ItemList list{ports, engine.selection()};
  size_t heading = 0, cache = 0;  // rows
};

TEST_F(ItemListBrowserTest, BrowsersStandBehindTheItemsAndAreTickedLikeThem) {
  ASSERT_EQ(list.sections().size(), 1u) << "Firefox has its items";
  EXPECT_EQ(list.Text(heading, ItemColumn::kName), "Google Chrome");
  EXPECT_EQ(list.Text(cache, ItemColumn::kName), "Cache");
  EXPECT_TRUE(list.At(heading).IsHeading() && !list.At(cache).IsHeading());

  list.Toggle(heading);
  EXPECT_EQ(list.TicksOf(heading), Ticks::kSome) << "passwords and the like are not along";
  EXPECT_EQ(list.TicksOf(cache), Ticks::kAll);
  EXPECT_EQ(list.Text(heading, ItemColumn::kNote), "3 of 7 ticked");
  list.Toggle(heading);
  EXPECT_EQ(list.TicksOf(heading), Ticks::kNone);
  list.TickAll(true);
  EXPECT_EQ(list.Text(heading, ItemColumn::kNote), "3 of 7 ticked");
  list.TickAll(false);
  EXPECT_EQ(list.Summary(), "Nothing is ticked");
}

TEST_F(ItemListBrowserTest, WhatIsTickedOfABrowserGoesWithARun) {
  list.Toggle(cache);
  EXPECT_EQ(list.Summary(), "1 item");
  PreviewRun preview(ports, view);
  list.BeginLook(preview.state());
  preview.Run(engine.selection());
  list.EndLook();
  EXPECT_EQ(list.Text(cache, ItemColumn::kBytes), "5 Bytes");
  EXPECT_EQ(list.Text(heading, ItemColumn::kCount), "2") << "a file and its folder";
  EXPECT_EQ(list.Summary(), "1 item, 5 Bytes");
  EntryList entries(ports.system, preview.entries(), true);
  for (const size_t row : {heading, cache, size_t{0}}) {
    entries.ShowScope(list.ScopeOf(row));
    EXPECT_EQ(entries.RowCount(), row == 0 ? 0u : 2u);
  }

  engine.Save();
  EXPECT_EQ(ReadOwn("Browsers.txt"), "chrome:cache\r\n");
  Engine other(ports, view);
  EXPECT_EQ(other.Load(), "");
  other.RunCleaning();
  EXPECT_TRUE(!machine->Exists(cached) && machine->Exists(chrome + "\\Default\\Preferences"));
  EXPECT_NE(other.state().RunLog.find("Google Chrome"), std::string::npos);
}

TEST_F(ItemListTest, WhoHasNoRightsIsToldWhatNeedsThem) {
  RecordingSession session;
  session.is_administrator = false;
  const Machine user = WithSession(ports, session);
  ItemList plain(user, engine.selection());
  const size_t row = plain.RowOf(*FindItem("CleanMemDump")).value();
  EXPECT_EQ(plain.Text(row, ItemColumn::kNote), "needs administrator rights");
  EXPECT_NE(plain.Details(row).find("Note: needs administrator rights."), std::string::npos);
  EXPECT_EQ(Note("CleanMemDump"), "");
  for (const bool may : {false, true}) {
    const ItemList& rows = may ? list : plain;
    EXPECT_EQ(rows.may_need_rights(), !may);
    EXPECT_EQ(rows.NeedsRights(row), !may);
    EXPECT_FALSE(rows.NeedsRights(0) || rows.NeedsRights(*rows.RowOf(*FindItem("CleanTempFiles"))));
  }
}

TEST_F(ItemListTest, SortingStaysWithinTheGroupsAndTellsWhenAnItemWasCleaned) {
  machine->MakeFile(temp + "a.tmp", "12345");
  Tick({"CleanTempFiles"});
  list.Sort(ItemColumn::kName);
  const Names by_name = NamesOf(Group::kFolderFiles);
  EXPECT_TRUE(std::ranges::is_sorted(by_name.begin() + 1, by_name.end() - 1));
  EXPECT_EQ(Name(0), "Folders and Files");
  list.SetFolded(Group::kInternet, false);
  EXPECT_EQ(NamesOf(Group::kInternet).back(), "Offline web pages") << "what cannot be is last";
  Look();
  list.Refresh();
  list.Sort(ItemColumn::kBytes);
  list.Sort(ItemColumn::kBytes);
  EXPECT_EQ(Name(1), "Temporary files");
  EXPECT_TRUE(list.is_descending());

  const size_t row = *list.RowOf(*FindItem("CleanTempFiles"));
  EXPECT_EQ(list.Details(row), "Everything in your temporary folder, with the folders in it.");
  engine.RunCleaning();
  const std::string now = engine.settings().LastCleanedText();
  EXPECT_NE(list.Details(row).find("Cleaned last: " + now.substr(0, now.find(' '))),
            std::string::npos);
  const size_t other = *list.RowOf(*FindItem("CleanRecentDocs"));
  EXPECT_EQ(list.Details(other).find("Cleaned last"), std::string::npos);
}

struct EntryListTest : RunFixture {
  EntryListTest() {
    entries->Add({.bytes = 2000, .last_write = 5, .place = "C:\\b\\Zebra.txt"});
    entries->BeginRule("tool.cdp");
    entries->Add({.fate = Fate::kStayed,
                  .bytes = 300,
                  .last_write = 9,
                  .place = "C:\\B\\apple.txt",
                  .note = "It is in use."});
    entries->Add({.kind = EntryKind::kRegistryValue,
                  .fate = Fate::kKept,
                  .place = "HKEY_CURRENT_USER\\K",
                  .part = "été",
                  .note = "HKEY_CURRENT_USER\\K"});
  }
  static std::string Sizes(const EntryList& list) {
    std::string sizes;
    for (size_t row = 0; row < list.RowCount(); ++row)
      sizes += std::to_string(list.At(row).bytes) + " ";
    return sizes;
  }
  const std::shared_ptr<RunEntries> entries = std::make_shared<RunEntries>();
};

TEST_F(EntryListTest, SortsAndFiltersByWhatItsColumnsMean) {
  EntryList list(ports.system, entries, true);
  const std::tuple<RunColumn, const char*, const char*> kOrders[] = {
      {RunColumn::kPlace, "300 2000 0 ", "0 2000 300 "},
      {RunColumn::kBytes, "0 300 2000 ", "2000 300 0 "},
      {RunColumn::kModified, "0 2000 300 ", "300 2000 0 "},
      {RunColumn::kKind, "300 2000 0 ", "0 300 2000 "},
      {RunColumn::kNote, "2000 0 300 ", "300 0 2000 "}};
  for (const auto& [column, first, again] : kOrders) {
    for (const char* sizes : {first, again}) {
      list.Sort(column);
      EXPECT_EQ(Sizes(list), sizes) << static_cast<int>(column);
    }
  }
  const std::pair<const char*, const char*> kFilters[] = {{"ZEBRA", "2000 "}, {"in USE", "300 "},
                                                          {"tool", "300 0 "}, {"ÉTÉ", "0 "},
                                                          {"none", ""},       {"", "300 0 2000 "}};
  for (const auto& [filter, sizes] : kFilters) {
    list.SetFilter(filter);
    EXPECT_EQ(Sizes(list), sizes) << filter;
  }
  EXPECT_EQ(list.Summary(), "1 entry to be removed, 1.95 KB; 1 will stay; 1 kept.");
  list.TickAll(false);
  EXPECT_EQ(list.Summary(), "0 entries to be removed, 0 Bytes; 1 will stay; 1 kept.");
}

// "[folder, count] " of a heading, of others their bytes.
std::string RowTexts(const EntryList& list) {
  std::string text;
  for (size_t row = 0; row < list.RowCount(); ++row) {
    text += (list.IsHeading(row) ? "[" + list.Text(row, RunColumn::kPlace) + ", " +
                                       list.Text(row, RunColumn::kKind) + "] "
                                 : std::to_string(list.At(row).bytes) + " ");
  }
  return text;
}

EntryScope ScopeOf(size_t item) {
  EntryScope scope;
  scope.items[item] = true;
  return scope;
}

// A list that grows while it is shown.
struct EntryListGrowingTest : RunFixture {
  EntryListGrowingTest() { list.Sort(RunColumn::kPlace); }
  RunEntries* Add(uint8_t item, uint64_t bytes, const char* place, Fate fate = Fate::kRemoved) {
    entries->Add({.fate = fate, .item = item, .bytes = bytes, .place = place});
    return entries.get();
  }
  std::string Rows() { return RowTexts(list); }
  const std::shared_ptr<RunEntries> entries = std::make_shared<RunEntries>();
  const RunEntries* const first = Add(10, 5, "C:\\t\\b.tmp");  // before the list is made
  EntryList list{ports.system, entries, true};
};

TEST_F(EntryListGrowingTest, GrowsGroupsByFolderAndShowsWhatItemsName) {
  Add(10, 3, "C:\\T\\a.tmp");
  Add(1, 9, "C:\\other\\z.tmp");
  Add(10, 7, "C:\\t\\c.tmp", Fate::kStayed);
  entries->Add({.kind = EntryKind::kRegistryValue, .item = 16, .place = "HKEY_X\\K", .part = "v"});
  EXPECT_EQ(Rows(), "5 ");
  list.Grow();
  EXPECT_EQ(Rows(), "5 3 9 7 0 ") << "what comes stands at the end";
  list.Settle();
  EXPECT_EQ(Rows(), "9 3 5 7 0 ");
  list.SetGrouped(true);
  EXPECT_EQ(Rows(), "[C:\\other, 1 entry] 9 [C:\\T, 3 entries] 3 5 7 [HKEY_X\\K, 1 entry] 0 ");
  EXPECT_EQ(list.Text(2, RunColumn::kBytes), "8 Bytes") << "what stays frees nothing";
  list.SetTicked(2, false);
  EXPECT_FALSE(list.IsTicked(2) || list.IsTicked(3) || list.IsTicked(4));
  EXPECT_EQ(list.Summary(), "2 entries to be removed, 9 Bytes; 1 will stay.");
  list.SetTicked(3, true);
  EXPECT_TRUE(list.IsTicked(2));
  list.ShowScope(ScopeOf(9));
  EXPECT_EQ(Rows(), "[C:\\T, 3 entries] 3 5 7 ");
  EXPECT_EQ(list.Summary(), "1 entry to be removed, 3 Bytes; 1 will stay.");
  list.SetFilter("c.tmp");
  EXPECT_EQ(Rows(), "[C:\\t, 1 entry] 7 ");
  Add(10, 2, "C:\\T\\0c.tmp");
  list.Grow();
  EXPECT_EQ(Rows(), "[C:\\t, 1 entry] 7 2 ");
  EXPECT_EQ(list.Summary(), "2 entries to be removed, 5 Bytes; 1 will stay.");
  list.Settle();
  EXPECT_EQ(Rows(), "[C:\\T, 2 entries] 2 7 ");
  list.SetGrouped(false);
  list.ShowScope({});
  list.SetFilter("");
  EXPECT_EQ(Rows(), "9 2 3 5 7 0 ");
}

}  // namespace
}  // namespace quellix
