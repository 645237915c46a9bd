#include "quellix_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>

#include <commctrl.h>
#include <shlobj.h>

#include "failure_pictures.h"
#include "ui/resource.h"

namespace quellix::test {
namespace {

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";

// These tests empty folders of the user who runs them, so they start only where that user is made
// up: in a prefix that says so and from which no drive leads out.
struct SandboxGuard : testing::Environment {
  void SetUp() override {
    wchar_t value[4] = {};
    GetEnvironmentVariableW(L"QUELLIX_SANDBOX", value, 4);
    const bool marked = std::wstring_view(value) == L"1" &&
                        GetFileAttributesW(L"C:\\quellix-sandbox") != INVALID_FILE_ATTRIBUTES;
    if (marked && GetDriveTypeW(L"Z:\\") == DRIVE_NO_ROOT_DIR) return TakePicturesOfFailures();
    std::fputs("window_tests runs in the sandbox only\n", stderr);
    std::_Exit(2);
  }
};
const auto* const kGuard = testing::AddGlobalTestEnvironment(new SandboxGuard);

struct Search {
  DWORD process;
  std::wstring_view title, window_class, text;
  HWND found;
};

// Stops at a control that shows the text.
BOOL CALLBACK CompareText(HWND control, LPARAM parameter) {
  return TextOf(control).find(*reinterpret_cast<const std::wstring_view*>(parameter)) ==
         std::wstring::npos;
}

bool Shows(HWND window, std::wstring_view text) {
  return text.empty() || !EnumChildWindows(window, CompareText, reinterpret_cast<LPARAM>(&text));
}

BOOL CALLBACK Compare(HWND window, LPARAM parameter) {
  Search& search = *reinterpret_cast<Search*>(parameter);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process != search.process || !IsWindowVisible(window)) return TRUE;
  wchar_t text[100] = {};
  GetClassNameW(window, text, 100);
  if (!search.window_class.empty() && search.window_class != text) return TRUE;
  if (!search.title.empty() && search.title != TextOf(window)) return TRUE;
  if (!Shows(window, search.text)) return TRUE;
  search.found = window;
  return FALSE;
}

// How many copies the tests have started and not ended.
int copies = 0;

// What a copy has while it runs: its sign, and the owner of its windows.
bool IsACopyThere() {
  const HANDLE sign = OpenMutexW(SYNCHRONIZE, FALSE, L"Local\\Quellix runs");
  if (sign) CloseHandle(sign);
  return sign || FindWindowW(L"ThunderRT6Main", nullptr);
}

// The main window's progress bar, from any window of the program; null where it has none.
HWND BarOf(HWND window) {
  for (HWND at = GetAncestor(window, GA_ROOT); at; at = GetWindow(at, GW_OWNER)) {
    if (const HWND bar = GetDlgItem(at, pgClean)) return bar;
  }
  return nullptr;
}

// The window that holds a control takes input.
bool TakesInput(HWND control) {
  return IsWindowEnabled(control) && IsWindowEnabled(GetAncestor(control, GA_ROOT));
}

// Posts a message and waits until the program has taken it up. What is posted arrives in order, and
// the bar keeps a step that the program has no use for: it tells how far that has come.
void PostAndAwait(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  static WPARAM step = 1000;
  const HWND bar = BarOf(window);
  PostMessageW(window, message, wparam, lparam);
  if (!bar) return;
  PostMessageW(bar, PBM_SETSTEP, ++step, 0);
  Await([&] {
    return !IsWindow(bar) || SendMessageW(bar, PBM_GETSTEP, 0, 0) == static_cast<LRESULT>(step);
  });
}

}  // namespace

fs::path ProgramFolder() { return L"C:\\Program Files\\Quellix"; }

fs::path TempFolder() {
  wchar_t path[MAX_PATH + 1] = {};
  GetTempPathW(MAX_PATH + 1, path);
  return path;
}

void ResetSandbox() {
  for (const char* name : {"Settings.ini", "chkItems.txt"}) {
    fs::remove(ProgramFolder() / name);
  }
  for (const auto& entry : fs::directory_iterator(TempFolder())) {
    fs::remove_all(entry.path());
  }
}

void WriteBytes(const fs::path& path, std::string_view bytes) {
  fs::create_directories(path.parent_path());
  if (!Await([&] {
        std::ofstream file(path, std::ios::binary);
        file << bytes;
        return static_cast<bool>(file.flush());
      })) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

std::string ReadBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool Await(const std::function<bool()>& condition) {
  for (int i = 0; i < 3000; ++i) {
    if (condition()) return true;
    Sleep(20);
  }
  return false;
}

QuellixProcess::QuellixProcess(std::wstring_view arguments, DWORD flags) {
  const std::wstring program = ProgramFolder() / L"quellix.exe";
  std::wstring line = L"\"" + program + L"\" " + std::wstring(arguments);
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  if (copies == 0 && !Await([] { return !IsACopyThere(); })) {
    throw std::runtime_error("a copy of quellix.exe does not end");
  }
  if (!Await([&] {
        return CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, flags, nullptr,
                              nullptr, &start, &process_) != FALSE;
      })) {
    throw std::runtime_error("quellix.exe does not start: " + std::to_string(GetLastError()));
  }
  ++copies;
}

QuellixProcess::~QuellixProcess() {
  TerminateProcess(process_.hProcess, 1);
  WaitForSingleObject(process_.hProcess, INFINITE);
  CloseHandle(process_.hThread);
  CloseHandle(process_.hProcess);
  --copies;
}

std::optional<DWORD> QuellixProcess::AwaitExitCode() const {
  DWORD code = 0;
  WaitForSingleObject(process_.hProcess, 60000);
  if (!HasEnded() || !GetExitCodeProcess(process_.hProcess, &code)) return std::nullopt;
  return code;
}

HWND QuellixProcess::AnyWindow() const {
  Search search{process_.dwProcessId, {}, {}, {}, nullptr};
  EnumWindows(Compare, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

QuellixWindow::QuellixWindow(std::wstring_view arguments) : QuellixProcess(arguments) {
  main_ = AwaitWindow(L"Quellix");
  // A message that appears with it has the same title.
  const HWND owner = main_ ? GetWindow(main_, GW_OWNER) : nullptr;
  if (owner && IsWindowVisible(owner)) main_ = owner;
}

HWND QuellixWindow::Find(std::wstring_view title, std::wstring_view window_class) const {
  Search search{
      process_.dwProcessId, title, window_class.empty() ? kDialogClass : window_class, {}, nullptr};
  EnumWindows(Compare, reinterpret_cast<LPARAM>(&search));
  return search.found == main_ && main_ != nullptr ? nullptr : search.found;
}

HWND QuellixWindow::AwaitWindow(std::wstring_view title) const {
  HWND window = nullptr;
  if (Await([&] { return (window = Find(title, {})) != nullptr; })) return window;
  throw std::runtime_error("no window " + testing::PrintToString(std::wstring(title)));
}

HWND QuellixWindow::AwaitMessage(std::wstring_view part) const {
  Search search{process_.dwProcessId, {}, kDialogClass, part, nullptr};
  Await([&] {
    EnumWindows(Compare, reinterpret_cast<LPARAM>(&search));
    return search.found != nullptr;
  });
  return search.found;
}

bool QuellixWindow::AwaitMenu() const {
  return Await([&] { return Find({}, kMenuClass) != nullptr; });
}

bool QuellixWindow::AwaitEnd() const { return AwaitExitCode() == DWORD{0}; }

bool QuellixWindow::Close() const {
  PostMessageW(main_, WM_CLOSE, 0, 0);
  return AwaitEnd();
}

namespace {

struct RowName {
  int id;
  const wchar_t* text;
};
// In the order of the list: "Cookies" and the like stand in two groups.
constexpr RowName kHeadings[] = {{lblFolderFiles, L"Folders and Files"},
                                 {lblMiscellaneous, L"Miscellaneous"},
                                 {lblInternet, L"Internet Explorer"},
                                 {lblFirefox, L"Firefox"}};
constexpr RowName kItems[] = {
    {chkRecycleBin, L"Recycle Bin"},
    {chkUnNecessaryFiles, L"Unnecessary files"},
    {chkTemp, L"Temporary files"},
    {chkEmptyFiles, L"Empty (zero-byte) files"},
    {chkDeadShortcut, L"Dead (shortcut) links"},
    {chkRunMRU, L"Windows run history"},
    {chkCookies, L"Cookies"},
    {chkCleanMozillaCookies, L"Cookies"},
};

bool IsItem(int id) { return id >= chkRecycleBin && id <= lblFirefox; }

// The heading before an item.
int HeadingOf(int id) {
  return id <= chkDeadShortcut  ? lblFolderFiles
         : id <= chkFindHistory ? lblMiscellaneous
         : id <= chkActiveX     ? lblInternet
                                : lblFirefox;
}

}  // namespace

int QuellixWindow::RowOf(int id) const {
  const HWND list = Control(lstvItems);
  const auto find = [&](std::span<const RowName> names, int wanted, int from) {
    const auto name = std::ranges::find(names, wanted, &RowName::id);
    for (int row = from; name != names.end() && row < CountRows(list); ++row) {
      if (RowText(list, row, 0) == name->text) return row;
    }
    return -1;
  };
  const int row = id >= lblFolderFiles ? find(kHeadings, id, 0)
                                       : find(kItems, id, find(kHeadings, HeadingOf(id), 0));
  EXPECT_GE(row, 0) << "no such row: " << id;
  return row;
}

int QuellixWindow::BoxOf(int id) const {
  const LRESULT state = SendMessageW(Control(lstvItems), LVM_GETITEMSTATE,
                                     static_cast<WPARAM>(RowOf(id)), LVIS_STATEIMAGEMASK);
  return static_cast<int>(state >> 12) & 15;
}

bool QuellixWindow::IsChecked(int id) const {
  if (!IsItem(id)) return SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
  return BoxOf(id) == 2 || BoxOf(id) == 5;
}

bool QuellixWindow::IsEnabled(int id) const {
  return IsItem(id) ? BoxOf(id) <= 3 : IsWindowEnabled(Control(id)) != FALSE;
}

void QuellixWindow::Select(int id) const {
  const HWND list = AwaitControl(lstvItems);
  LVITEMW item{};
  item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
  Exchange(list, LVM_SETITEMSTATE, static_cast<WPARAM>(RowOf(id)), &item, sizeof item);
  SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(RowOf(id)), FALSE);
}

void QuellixWindow::Click(int id) const {
  if (!IsItem(id)) return void(SendMessageW(AwaitControl(id), BM_CLICK, 0, 0));
  Select(id);
  PressKey(Control(lstvItems), VK_SPACE);
}

RECT QuellixWindow::PlaceOf(int id) const {
  const HWND list = Control(lstvItems);
  RECT place{LVIR_LABEL, 0, 0, 0};
  Exchange(list, LVM_GETITEMRECT, static_cast<WPARAM>(RowOf(id)), &place, sizeof place);
  MapWindowPoints(list, nullptr, reinterpret_cast<POINT*>(&place), 2);
  return place;
}

HWND QuellixWindow::AwaitControl(int id) const { return test::AwaitControl(main_, id); }

void QuellixWindow::Choose(int entry) const {
  AwaitInput(main_);
  PostAndAwait(main_, WM_COMMAND, static_cast<WPARAM>(entry), 0);
}

void QuellixWindow::PressKey(HWND control, WPARAM key) const {
  AwaitInput(control);
  PostMessageW(control, WM_KEYDOWN, key, 1);
  PostAndAwait(control, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

bool QuellixWindow::Answer(std::wstring_view part, int button) const {
  const HWND message = AwaitMessage(part);
  if (!message) return false;
  PressIn(message, button);
  return AwaitGone(message);
}

bool QuellixWindow::RightClick(int id) const {
  const HWND list = Control(lstvItems);
  Select(id);
  const RECT row = PlaceOf(id);
  DWORD_PTR result;
  return SendMessageTimeoutW(list, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list),
                             MAKELPARAM(row.left + 5, row.top + 5), SMTO_NORMAL, 2000,
                             &result) != 0;
}

std::wstring TextOf(HWND control) {
  std::wstring text(static_cast<size_t>(SendMessageW(control, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  const LRESULT length =
      SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}

std::wstring Shown(HWND window, int id) { return TextOf(GetDlgItem(window, id)); }
bool IsEnabled(HWND window, int id) { return IsWindowEnabled(GetDlgItem(window, id)) != FALSE; }
bool AwaitEnabled(HWND window, int id) {
  return Await([&] { return IsEnabled(window, id); });
}
bool AwaitText(HWND window, int id, std::wstring_view text) {
  return Await([&] { return Shown(window, id) == text; });
}
bool AwaitPart(HWND window, int id, std::wstring_view part) {
  return Await([&] { return Shown(window, id).find(part) != std::wstring::npos; });
}
void Type(HWND window, int id, const std::wstring& text) {
  SendMessageW(GetDlgItem(window, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}
void Click(HWND window, int id) { SendMessageW(AwaitControl(window, id), BM_CLICK, 0, 0); }

bool AwaitGone(HWND window) {
  return Await([&] { return !IsWindow(window); });
}

bool CloseAndAwait(HWND window) {
  SendMessageW(window, WM_CLOSE, 0, 0);
  return AwaitGone(window);
}

int CountRows(HWND list) { return static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0)); }

std::wstring RegistryText(HKEY root, const std::wstring& key, const wchar_t* name) {
  wchar_t text[600] = {};
  DWORD size = sizeof(text) - sizeof(wchar_t);
  return RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS
             ? text
             : L"<missing>";
}

void SetRegistryText(HKEY root, const std::wstring& key, const wchar_t* name,
                     const std::wstring& text) {
  RegSetKeyValueW(root, key.c_str(), name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

namespace {

bool IsOfClass(HWND control, std::wstring_view name) {
  wchar_t text[50] = {};
  GetClassNameW(control, text, 50);
  return text == name;
}

// Pages are dialogs within the window.
void CheckKeys(HWND parent, const std::set<HWND>& reached, std::set<wchar_t>& letters) {
  for (HWND at = GetWindow(parent, GW_CHILD); at; at = GetWindow(at, GW_HWNDNEXT)) {
    if (!IsWindowVisible(at)) continue;
    if (IsOfClass(at, kDialogClass)) CheckKeys(at, reached, letters);
    const std::wstring text = TextOf(at);
    SCOPED_TRACE(testing::PrintToString(text) + " " + std::to_string(GetDlgCtrlID(at)));
    const LRESULT code = SendMessageW(at, WM_GETDLGCODE, 0, 0);
    const bool is_told_of = (code & (DLGC_STATIC | DLGC_RADIOBUTTON)) != 0 ||
                            IsOfClass(at, PROGRESS_CLASSW) || IsOfClass(at, kDialogClass);
    EXPECT_TRUE(is_told_of || !IsWindowEnabled(at) || reached.contains(at));
    const size_t ampersand = text.find(L'&');
    if (ampersand == text.npos || text[ampersand + 1] == L'&') continue;
    const auto letter = static_cast<wchar_t>(towlower(text[ampersand + 1]));
    EXPECT_TRUE(letters.insert(letter).second);
  }
}

}  // namespace

size_t ExpectKeys(HWND window, std::set<wchar_t> letters) {
  SendMessageW(window, WM_NULL, 0, 0);  // taken between two steps of the window, not within one
  std::set<HWND> reached;
  for (HWND at = GetNextDlgTabItem(window, nullptr, FALSE); at && reached.insert(at).second;) {
    at = GetNextDlgTabItem(window, at, FALSE);
  }
  CheckKeys(window, reached, letters);
  return letters.size();
}

void AwaitInput(HWND control) {
  if (Await([&] { return TakesInput(control); })) return;
  ADD_FAILURE() << "cannot be used: " << testing::PrintToString(TextOf(control));
}

HWND AwaitControl(HWND window, int id) {
  HWND control = nullptr;
  if (!Await([&] { return (control = GetDlgItem(window, id)) && TakesInput(control); })) {
    ADD_FAILURE() << "cannot be used: control " << id << " of "
                  << testing::PrintToString(TextOf(window));
  }
  return control;
}

void PressIn(HWND window, int id) {
  const HWND button = GetDlgItem(window, id);
  AwaitInput(button ? button : window);
  PostAndAwait(window, WM_COMMAND, static_cast<WPARAM>(id), reinterpret_cast<LPARAM>(button));
}

void Press(HWND button) {
  AwaitInput(button);
  PostAndAwait(button, BM_CLICK, 0, 0);
}

HWND FocusOf(HWND window) {
  GUITHREADINFO thread{};
  thread.cbSize = sizeof thread;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
  return thread.hwndFocus;
}

bool AwaitFocus(HWND window, int control) {
  return Await([&] { return FocusOf(window) && FocusOf(window) == GetDlgItem(window, control); });
}

void PressKeys(HWND window, const std::vector<WORD>& keys) {
  EXPECT_TRUE(Await([&] {
    SetForegroundWindow(window);
    return GetForegroundWindow() == window && GetAncestor(FocusOf(window), GA_ROOT) == window;
  })) << "does not come to the front: "
      << testing::PrintToString(TextOf(window));
  std::vector<INPUT> strokes;
  for (const DWORD flags : {DWORD{0}, DWORD{KEYEVENTF_KEYUP}}) {
    for (const WORD key : keys) {
      INPUT stroke{};
      stroke.type = INPUT_KEYBOARD;
      stroke.ki.wVk = key;
      stroke.ki.dwFlags = flags;
      strokes.push_back(stroke);
    }
  }
  SendInput(static_cast<UINT>(strokes.size()), strokes.data(), sizeof(INPUT));
}

bool IsRowTicked(HWND list, int row) {
  const LRESULT state =
      SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK);
  return (state & LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

LRESULT QuellixWindow::Exchange(HWND control, UINT message, WPARAM wparam, void* bytes,
                                size_t size) const {
  const HANDLE process = process_.hProcess;
  void* const there =
      VirtualAllocEx(process, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
  WriteProcessMemory(process, there, bytes, size, nullptr);
  const LRESULT result = SendMessageW(control, message, wparam, reinterpret_cast<LPARAM>(there));
  ReadProcessMemory(process, there, bytes, size, nullptr);
  VirtualFreeEx(process, there, 0, MEM_RELEASE);
  return result;
}

// A list view reads the question and writes the answer in its own process.
std::wstring QuellixWindow::RowText(HWND list, int row, int column) const {
  constexpr size_t kSize = 4096;
  const HANDLE process = process_.hProcess;
  char* const there = static_cast<char*>(
      VirtualAllocEx(process, nullptr, kSize, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = reinterpret_cast<wchar_t*>(there + sizeof(item));
  item.cchTextMax = 200;
  wchar_t text[200] = {};
  WriteProcessMemory(process, there, &item, sizeof(item), nullptr);
  SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(there));
  ReadProcessMemory(process, there + sizeof(item), text, sizeof(text), nullptr);
  VirtualFreeEx(process, there, 0, MEM_RELEASE);
  return text;
}

void QuellixWindow::SelectFolder(HWND browser, const std::wstring& path) const {
  std::wstring text = path;
  Exchange(browser, BFFM_SETSELECTIONW, TRUE, text.data(), (text.size() + 1) * sizeof(wchar_t));
}

}  // namespace quellix::test
