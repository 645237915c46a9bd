// The list of a run's entries: its order, its filter, its groups.
#include "app/entry_list.h"

#include "support/run_fixture.h"

namespace quellix {
namespace {

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

using EntryListGrowingTest = RunFixture;

TEST_F(EntryListGrowingTest, GrowsGroupsByFolderAndShowsWhatItemsName) {
  const auto entries = std::make_shared<RunEntries>();
  const auto add = [&](uint8_t item, uint64_t bytes, const char* place,
                       Fate fate = Fate::kRemoved) {
    entries->Add({.fate = fate, .item = item, .bytes = bytes, .place = place});
  };
  add(10, 5, "C:\\t\\b.tmp");
  EntryList list(ports.system, entries, true);
  const auto rows = [&list] { return RowTexts(list); };
  list.Sort(RunColumn::kPlace);
  add(10, 3, "C:\\T\\a.tmp");
  add(1, 9, "C:\\other\\z.tmp");
  add(10, 7, "C:\\t\\c.tmp", Fate::kStayed);
  entries->Add({.kind = EntryKind::kRegistryValue, .item = 16, .place = "HKEY_X\\K", .part = "v"});
  EXPECT_EQ(rows(), "5 ");
  list.Grow();
  EXPECT_EQ(rows(), "5 3 9 7 0 ") << "what comes stands at the end";
  list.Settle();
  EXPECT_EQ(rows(), "9 3 5 7 0 ");
  list.SetGrouped(true);
  EXPECT_EQ(rows(), "[C:\\other, 1 entry] 9 [C:\\T, 3 entries] 3 5 7 [HKEY_X\\K, 1 entry] 0 ");
  EXPECT_EQ(list.Text(2, RunColumn::kBytes), "8 Bytes") << "what stays frees nothing";
  list.SetTicked(2, false);
  EXPECT_FALSE(list.IsTicked(2) || list.IsTicked(3) || list.IsTicked(4));
  EXPECT_EQ(list.Summary(), "2 entries to be removed, 9 Bytes; 1 will stay.");
  list.SetTicked(3, true);
  EXPECT_TRUE(list.IsTicked(2));
  list.ShowScope(ScopeOf(9));
  EXPECT_EQ(rows(), "[C:\\T, 3 entries] 3 5 7 ");
  EXPECT_EQ(list.Summary(), "1 entry to be removed, 3 Bytes; 1 will stay.");
  list.SetFilter("c.tmp");
  EXPECT_EQ(rows(), "[C:\\t, 1 entry] 7 ");
  add(10, 2, "C:\\T\\0c.tmp");
  list.Grow();
  EXPECT_EQ(rows(), "[C:\\t, 1 entry] 7 2 ");
  EXPECT_EQ(list.Summary(), "2 entries to be removed, 5 Bytes; 1 will stay.");
  list.Settle();
  EXPECT_EQ(rows(), "[C:\\T, 2 entries] 2 7 ");
  list.SetGrouped(false);
  list.ShowScope({});
  list.SetFilter("");
  EXPECT_EQ(rows(), "9 2 3 5 7 0 ");
}

}  // namespace
}  // namespace quellix
