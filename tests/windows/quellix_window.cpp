#include "quellix_window.h"

#include <algorithm>
#include <span>

#include <commctrl.h>
#include <shlobj.h>

#include "platform/win32/win32_text.h"
#include "platform/words.h"

namespace quellix::test {
namespace {

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";

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

// What the program shows of an English text; tests that have it speak another language do so too.
std::wstring InLanguage(std::wstring_view english) { return Wide(Tr(Narrow(english))); }

// A window that works tells in its title how far it is.
bool IsTitled(HWND window, const std::wstring& title) {
  const std::wstring text = TextOf(window);
  return title.empty() || text == title || text.ends_with(L" % - " + title);
}

BOOL CALLBACK Compare(HWND window, LPARAM parameter) {
  Search& search = *reinterpret_cast<Search*>(parameter);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process != search.process || !IsWindowVisible(window)) return TRUE;
  if (!search.window_class.empty() && !IsOfClass(window, search.window_class)) return TRUE;
  if (!IsTitled(window, InLanguage(search.title))) return TRUE;
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

}  // namespace

QuellixProcess::QuellixProcess(std::wstring_view arguments, DWORD flags, HANDLE token) {
  const std::wstring program = ProgramFolder() / L"quellix.exe";
  std::wstring line = L"\"" + program + L"\" " + std::wstring(arguments);
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  if (copies == 0 && !Await([] { return !IsACopyThere(); })) {
    throw std::runtime_error("a copy of quellix.exe does not end");
  }
  if (!Await([&] {
        if (token) {
          return CreateProcessAsUserW(token, program.c_str(), line.data(), nullptr, nullptr, FALSE,
                                      flags, nullptr, nullptr, &start, &process_) != FALSE;
        }
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

// The system's libraries lie at the same places in every program.
void QuellixProcess::Load(const fs::path& library) const {
  const std::wstring path = library.wstring();
  const size_t size = (path.size() + 1) * sizeof(wchar_t);
  void* const there =
      VirtualAllocEx(process_.hProcess, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
  WriteProcessMemory(process_.hProcess, there, path.c_str(), size, nullptr);
  const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW")));
  const HANDLE thread = CreateRemoteThread(process_.hProcess, nullptr, 0, load, there, 0, nullptr);
  DWORD loaded = 0;
  WaitForSingleObject(thread, INFINITE);
  GetExitCodeThread(thread, &loaded);
  CloseHandle(thread);
  VirtualFreeEx(process_.hProcess, there, 0, MEM_RELEASE);
  if (loaded == 0) throw std::runtime_error("quellix.exe does not load " + library.string());
}

HWND QuellixProcess::AnyWindow() const {
  Search search{process_.dwProcessId, {}, {}, {}, nullptr};
  EnumWindows(Compare, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

QuellixWindow::QuellixWindow(std::wstring_view arguments, HANDLE token)
    : QuellixProcess(arguments, 0, token) {
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

bool QuellixWindow::HasMenu() const { return Find({}, kMenuClass) != nullptr; }

bool QuellixWindow::AwaitMenu() const {
  return Await([&] { return HasMenu(); });
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
constexpr RowName kItems[] = {{chkRecycleBin, L"Recycle Bin"},
                              {chkUnNecessaryFiles, L"Unnecessary files"},
                              {chkTemp, L"Temporary files"},
                              {chkEmptyFiles, L"Empty (zero-byte) files"},
                              {chkDeadShortcut, L"Dead (shortcut) links"},
                              {chkDump, L"Memory dump files"},
                              {chkRunMRU, L"Windows run history"},
                              {chkCookies, L"Cookies"},
                              {chkCleanMozillaCookies, L"Cookies"}};

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
      if (RowText(list, row, 0) == InLanguage(name->text)) return row;
    }
    return -1;
  };
  const int row = id >= lblFolderFiles ? find(kHeadings, id, 0)
                                       : find(kItems, id, find(kHeadings, HeadingOf(id), 0));
  EXPECT_GE(row, 0) << "no such row: " << id;
  return row;
}

int QuellixWindow::BoxOf(int id) const { return test::BoxOf(Control(lstvItems), RowOf(id)); }

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

HWND QuellixWindow::Open(int entry, std::wstring_view title) const {
  Choose(entry);
  return AwaitWindow(title);
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

int QuellixWindow::ImageOf(HWND list, int row) const {
  LVITEMW item{};
  item.mask = LVIF_IMAGE;
  item.iItem = row;
  Exchange(list, LVM_GETITEMW, 0, &item, sizeof(item));
  return item.iImage;
}

int QuellixWindow::ArrowOf(HWND list, int column) const {
  HDITEMW item{};
  item.mask = HDI_FORMAT;
  Exchange(reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0)), HDM_GETITEMW,
           static_cast<WPARAM>(column), &item, sizeof(item));
  return (item.fmt & HDF_SORTUP) ? 1 : (item.fmt & HDF_SORTDOWN) ? -1 : 0;
}

std::vector<int> QuellixWindow::ColumnsOf(HWND list) const {
  const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
  std::vector<int> columns(static_cast<size_t>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0)));
  Exchange(list, LVM_GETCOLUMNORDERARRAY, columns.size(), columns.data(),
           columns.size() * sizeof(int));
  return columns;
}

void QuellixWindow::SetColumnsOf(HWND list, std::vector<int> columns) const {
  Exchange(list, LVM_SETCOLUMNORDERARRAY, columns.size(), columns.data(),
           columns.size() * sizeof(int));
}

void QuellixWindow::SelectFolder(HWND browser, const std::wstring& path) const {
  std::wstring text = path;
  Exchange(browser, BFFM_SETSELECTIONW, TRUE, text.data(), (text.size() + 1) * sizeof(wchar_t));
}

}  // namespace quellix::test
