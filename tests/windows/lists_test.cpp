// What whoever knows other lists expects of one, in every window that has one.
#include "list_windows.h"

#include <algorithm>

#include "ui/resource.h"

namespace quellix::test {
namespace {

std::wstring ClipboardText() {
  std::wstring text;
  if (!OpenClipboard(nullptr)) return L"<in use>";
  if (const HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
    text = static_cast<const wchar_t*>(GlobalLock(data));
    GlobalUnlock(data);
  }
  CloseClipboard();
  return text;
}

struct EveryListTest : testing::TestWithParam<ListCase> {
  const SeededLists seeded_;
};

// On a busy machine Wine's heading may miss a click: while another window is on its way up, say.
int ArrowAfterClick(const OpenList& list) {
  const int before = list.window.ArrowOf(list.list, 0);
  EXPECT_TRUE(Await([&] {
    list.ClickHeading();
    return list.window.ArrowOf(list.list, 0) != before;
  })) << before;
  return list.window.ArrowOf(list.list, 0);
}

void ExpectSorting(const OpenList& list) {
  const int arrow = ArrowAfterClick(list);
  EXPECT_NE(arrow, 0) << "no arrow";
  const std::wstring first = list.First(), last = list.Last();
  EXPECT_EQ(ArrowAfterClick(list), -arrow);
  EXPECT_EQ(list.First(), last);
  EXPECT_EQ(list.Last(), first);
}

void ExpectTicks(const OpenList& list) {
  list.SelectFirst();
  const int before = BoxOf(list.list, 0);
  if (before == 0) return;
  for (const bool ticked : {before != 2, before == 2}) {
    list.window.PressKey(list.list, VK_SPACE);
    EXPECT_TRUE(Await([&] { return IsRowTicked(list.list, 0) == ticked; })) << ticked;
  }
}

// Up to a letter that Wine's lists do not take.
std::wstring Plural(int count, const wchar_t* word) {
  return std::to_wstring(count) + L" " + word + (count == 1 ? L"" : L"s");
}

// However many there are, digits are grouped.
std::wstring WithoutCommas(std::wstring text) {
  std::erase(text, L',');
  return text;
}

// What is ticked is counted below the list and on the button, which without any does nothing.
void ExpectTotals(const OpenList& list, const ListCase& row) {
  const HWND owner = GetParent(list.list), line = GetDlgItem(owner, row.list + lblTotals);
  ASSERT_TRUE(line && IsWindowVisible(line));
  RECT rows{}, below{};
  GetWindowRect(list.list, &rows);
  GetWindowRect(line, &below);
  EXPECT_TRUE(below.top >= rows.bottom && below.left == rows.left);
  EXPECT_EQ(WithoutCommas(TextOf(line)).find(Plural(list.Rows(), L"row")), 0u) << list.Rows();
  if (BoxOf(list.list, 0) == 0) return;
  for (int turn = 0; turn < 2; ++turn) {
    int ticked = 0;
    for (int i = 0; i < list.Rows(); ++i) ticked += IsRowTicked(list.list, i) ? 1 : 0;
    const std::wstring figure = ticked == 0 ? L"none" : std::to_wstring(ticked);
    EXPECT_NE(WithoutCommas(TextOf(line)).find(L"; " + figure + L" ticked"), std::wstring::npos)
        << testing::PrintToString(TextOf(line));
    if (row.button != 0) {
      EXPECT_EQ(IsEnabled(owner, row.button), ticked > 0);
      EXPECT_EQ(
          WithoutCommas(Shown(owner, row.button)).find(L" ticked (" + figure) != std::wstring::npos,
          ticked > 0);
    }
    PressKeys(list.top, {VK_CONTROL, 'A'});
    EXPECT_TRUE(Await([&] { return list.Selected() > 0; }));
    const int before = BoxOf(list.list, list.Focused());
    PressKeys(list.top, {VK_SPACE});  // a real one comes behind the real Ctrl
    EXPECT_TRUE(Await([&] { return BoxOf(list.list, list.Focused()) != before; }));
  }
}

void ExpectTypeAhead(const OpenList& list) {
  list.SelectFirst();
  const std::wstring last = list.Last(), typed = last.substr(0, last.find_first_of(L": |\""));
  for (const wchar_t letter : typed) PostMessageW(list.list, WM_CHAR, letter, 1);
  EXPECT_TRUE(Await([&] {
    return list.window.RowText(list.list, list.Focused(), 0).starts_with(typed);
  })) << testing::PrintToString(typed);
}

void ExpectSelectionAndCopy(const OpenList& list, bool single) {
  PressKeys(list.top, {VK_CONTROL, 'A'});
  EXPECT_TRUE(Await([&] { return single || list.Selected() == list.Rows(); }));
  if (list.Rows() > 60) list.SelectFirst();
  PressKeys(list.top, {VK_CONTROL, 'C'});
  const std::wstring text = list.Text(list.Rows() > 60 ? 1 : list.Rows());
  EXPECT_TRUE(Await([&] { return ClipboardText() == text; })) << testing::PrintToString(text);
}

void ExpectMenu(const OpenList& list, const wchar_t* path) {
  list.SelectFirst();
  const HWND owner = GetParent(list.list);
  PostMessageW(owner, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list.list), -1);
  ASSERT_TRUE(list.window.AwaitMenu());
  PostMessageW(list.window.main(), WM_CHAR, path ? L'p' : VK_ESCAPE, 1);
  if (!path) PostMessageW(list.window.main(), WM_KEYDOWN, VK_ESCAPE, 1);
  EXPECT_TRUE(Await([&] { return !list.window.HasMenu(); }));
  EXPECT_TRUE(!path || Await([&] {
    return ClipboardText().find(path) != std::wstring::npos &&
           ClipboardText().find(L'\t') == std::wstring::npos;
  })) << testing::PrintToString(ClipboardText());
}

void SelectDown(const OpenList& list, std::wstring_view begins) {
  const auto is_there = [&] {
    return list.window.RowText(list.list, list.Focused(), 0).starts_with(begins);
  };
  for (int i = 0; i < list.Rows() && !is_there(); ++i) list.window.PressKey(list.list, VK_DOWN);
  EXPECT_TRUE(is_there());
}

// Of the rows the selected one alone goes, and only after the question.
void ExpectDeletion(const OpenList& list, const ListCase& row) {
  const int rows = list.Rows();
  const std::wstring first = list.Text(1);
  for (const int answer : {row.no, row.yes}) {
    EXPECT_EQ(list.Rows(), rows);
    list.SelectFirst();
    if (row.begins) SelectDown(list, row.begins);
    list.window.PressKey(list.list, VK_DELETE);
    ASSERT_TRUE(list.window.Answer(row.question, answer));
    AwaitInput(list.list);
  }
  EXPECT_TRUE(Await([&] { return list.Rows() == rows - 1; }));
  EXPECT_TRUE(row.begins || list.Text(1) != first);
}

TEST_P(EveryListTest, BehavesAsAListDoes) {
  const ListCase& row = GetParam();
  const QuellixWindow window;
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  ASSERT_TRUE(Await([&] { return list.Rows() > (row.single ? 0 : 1); }));
  ExpectSorting(list);
  ExpectTicks(list);
  ExpectTotals(list, row);
  ExpectTypeAhead(list);
  ExpectSelectionAndCopy(list, row.single);
  ExpectMenu(list, row.path);
  WriteSettings("Ask=1\r\n");
  if (row.question) ExpectDeletion(list, row);
}

// The last column comes to stand first, as by a drag of its heading.
std::vector<int> TurnColumns(const QuellixWindow& window, HWND list) {
  std::vector<int> columns = window.ColumnsOf(list);
  std::rotate(columns.begin(), columns.end() - 1, columns.end());
  window.SetColumnsOf(list, columns);
  EXPECT_EQ(window.ColumnsOf(list), columns);
  return columns;
}

RECT PlaceOf(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  return place;
}

TEST_P(EveryListTest, IsFoundAgainAsItWasLeft) {
  const ListCase& row = GetParam();
  const auto width_of = [](HWND list) { return SendMessageW(list, LVM_GETCOLUMNWIDTH, 0, 0); };
  int arrow = 0;
  RECT left{};
  LRESULT width = 0;
  std::vector<int> columns;
  {
    const QuellixWindow window;
    const OpenList list(window, GetDlgItem(row.open(window), row.list));
    arrow = ArrowAfterClick(list);
    SendMessageW(list.list, LVM_SETCOLUMNWIDTH, 0, width_of(list.list) + 21);
    const RECT place = PlaceOf(list.top);
    SetWindowPos(list.top, nullptr, 31, 17, place.right - place.left + 40,
                 place.bottom - place.top + 30, SWP_NOZORDER);
    left = PlaceOf(list.top);
    width = width_of(list.list);
    columns = TurnColumns(window, list.list);
    ASSERT_TRUE(CloseAndAwait(list.top));
  }
  const QuellixWindow window;
  for (const char* name : {"a.tmp", "b.tmp"}) WriteBytes(TempFolder() / name, "12345");
  const OpenList list(window, GetDlgItem(row.open(window), row.list));
  const RECT place = PlaceOf(list.top);
  EXPECT_TRUE(EqualRect(&place, &left)) << place.left << ' ' << place.top;
  if (GetWindowLongW(GetParent(list.list), GWL_STYLE) & WS_CHILD)
    return;  // a page has its lists from the window's size
  EXPECT_EQ(width_of(list.list), width);
  EXPECT_EQ(window.ColumnsOf(list.list), columns);
  EXPECT_TRUE(Await([&] { return window.ArrowOf(list.list, 0) == arrow; }));
}

using MainListTest = SandboxTest;

TEST_F(MainListTest, ItsColumnsAreFoundAgainAsTheyWereLeft) {
  std::vector<int> columns;
  const auto width_of = [](const QuellixWindow& window, int column) {
    return SendMessageW(window.Control(lstvItems), LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column),
                        0);
  };
  LRESULT widths[2] = {};
  {
    const QuellixWindow window;
    for (const int column : {0, 1}) {
      SendMessageW(window.Control(lstvItems), LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column),
                   width_of(window, column) + 21);
      widths[column] = width_of(window, column);
    }
    columns = TurnColumns(window, window.Control(lstvItems));
    EXPECT_TRUE(window.Close());
  }
  const QuellixWindow window;
  for (const int column : {0, 1}) EXPECT_EQ(width_of(window, column), widths[column]) << column;
  EXPECT_EQ(window.ColumnsOf(window.Control(lstvItems)), columns);
}

struct EmptyCase {
  const char* name;
  const char* list_case;
  int list;
  const wchar_t* says;
};

struct EmptyListTest : testing::TestWithParam<EmptyCase> {
  void SetUp() override {
    { const SeededLists gone; }
    ResetSandbox();
    WriteBytes(ProgramFolder() / "UNFI.txt", Fields("1|*.qx-none|None\r\n"));
    WriteBytes(TempFolder() / "a.tmp", "12345");
  }
};

TEST_P(EmptyListTest, SaysWhyAndWhatToDo) {
  const EmptyCase& row = GetParam();
  const ListCase& found = ListNamed(row.list_case);
  const QuellixWindow window;
  const HWND list = GetDlgItem(found.open(window), row.list);
  if (row.list == lstvRun) Type(GetParent(list), txtFilter, L"nothing has this");
  ASSERT_TRUE(AwaitRows(list, 0));
  EXPECT_TRUE(Await([&] { return TextOf(list).find(row.says) != std::wstring::npos; }))
      << testing::PrintToString(TextOf(list));
  EXPECT_EQ(Shown(GetParent(list), row.list + lblTotals), L"No rows");
  EXPECT_TRUE(found.button == 0 || !IsEnabled(GetParent(list), found.button));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, EmptyListTest,
    testing::Values(
        EmptyCase{"Results", "Results", lstvDeletion, L"Nothing was found. What is searched for"},
        EmptyCase{"Archives", "Archives", lstvArchives, L"There are no backups in C:\\Program"},
        EmptyCase{"Contents", "Contents", lstvEntries, L"Choose an archive above"},
        EmptyCase{"Filtered", "Log", lstvRun, L"Empty the filter"},
        EmptyCase{"SharedDlls", "SharedDlls", lstvOrphanedDLL, L"nothing here to put in order"},
        EmptyCase{"Cache", "Cache", lstvCache, L"holds no entry of this kind"},
        EmptyCase{"KeepList", "KeepList", lstvList, L"Type an entry below and press Add"}),
    [](const auto& row) { return row.param.name; });

using WindowPlaceTest = SandboxTest;

TEST_F(WindowPlaceTest, APlaceBeyondTheScreensIsMendedAndNothingIsWrittenOfWhatWasLeftAlone) {
  const fs::path settings = ProgramFolder() / "Settings.ini";
  for (const char* beyond : {"5000,4000", "-5000,-4000"}) {
    SCOPED_TRACE(beyond);
    const std::string text = std::string("[Windows]\r\nfrmBackups=") + beyond + ",900,600,0\r\n";
    WriteBytes(settings, text);
    const QuellixWindow window;
    const HWND backups = window.Open(mnuBackups, L"Backups");
    const RECT place = PlaceOf(backups);
    EXPECT_TRUE(place.left >= 0 && place.top >= 0);
    EXPECT_LE(place.right, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_LE(place.bottom, GetSystemMetrics(SM_CYSCREEN));
    EXPECT_EQ(place.right - place.left, 900);
    ASSERT_TRUE(CloseAndAwait(backups));
    EXPECT_TRUE(window.Close());
    EXPECT_EQ(ReadBytes(settings), text);
  }
}

INSTANTIATE_TEST_SUITE_P(Lists, EveryListTest, testing::ValuesIn(ListCases()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace quellix::test
