#include "platform/win32/win32_programs.h"

#include <restartmanager.h>
#include <tlhelp32.h>

#include <algorithm>
#include <span>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary restart_manager(L"rstrtmgr.dll");

template <typename Function>
Function FindRm(const char* name) {
  return restart_manager.Find<Function>(name);
}

std::vector<ProcessUsing> AskRestartManager(const std::wstring& path) {
  const auto start = FindRm<decltype(&RmStartSession)>("RmStartSession");
  const auto add = FindRm<decltype(&RmRegisterResources)>("RmRegisterResources");
  const auto list = FindRm<decltype(&RmGetList)>("RmGetList");
  const auto end = FindRm<decltype(&RmEndSession)>("RmEndSession");
  DWORD session = 0;
  WCHAR key[CCH_RM_SESSION_KEY + 1] = {};
  if (start(&session, 0, key) != ERROR_SUCCESS) return {};
  std::vector<RM_PROCESS_INFO> programs(10);
  LPCWSTR file = path.c_str();
  UINT needed = 0, count = 0;
  DWORD code = add(session, 1, &file, 0, nullptr, 0, nullptr), reasons = 0;
  for (int tries = 0; tries < 3 && (tries == 0 || code == ERROR_MORE_DATA); ++tries) {
    programs.resize(std::max<size_t>(programs.size(), needed));
    count = static_cast<UINT>(programs.size());
    if (code == ERROR_SUCCESS || code == ERROR_MORE_DATA)
      code = list(session, &needed, &count, programs.data(), &reasons);
  }
  end(session);
  std::vector<ProcessUsing> found;
  if (code != ERROR_SUCCESS) return found;
  for (const RM_PROCESS_INFO& program : std::span(programs.data(), count)) {
    found.push_back({program.Process.dwProcessId, Narrow(program.strAppName)});
  }
  return found;
}

std::vector<DWORD> ProcessesOf(const ProgramUse& use) {
  std::vector<DWORD> ids = ProcessesNamed(use.file_name);
  if (use.file_name.empty()) {
    for (const ProcessUsing& process : ProcessesUsing(std::string(use.held))) {
      ids.push_back(process.id);
    }
  }
  std::erase(ids, GetCurrentProcessId());
  return ids;
}

// Processes whose windows are asked to close. One that has none is awaited as well: it may be a
// part of the program.
class Closing : public ClosingPrograms {
 public:
  explicit Closing(std::vector<DWORD> ids) : ids_(std::move(ids)) {
    for (const DWORD id : ids_) processes_.emplace_back(OpenProcess(SYNCHRONIZE, FALSE, id));
    EnumWindows(AskWindow, reinterpret_cast<LPARAM>(this));
  }
  bool has_asked() const { return has_asked_; }

  bool Await() override {
    const ULONGLONG until = GetTickCount64() + kMilliseconds;
    return std::ranges::all_of(processes_, [until](const UniqueHandle& process) {
      const ULONGLONG now = GetTickCount64();
      const auto left = static_cast<DWORD>(now < until ? until - now : 0);
      return !process || WaitForSingleObject(process.Get(), left) == WAIT_OBJECT_0;
    });
  }

 private:
  static constexpr ULONGLONG kMilliseconds = 50;

  // What a person could close: a window that waits for a dialog of its own is left alone.
  static BOOL CALLBACK AskWindow(HWND window, LPARAM self) {
    if (IsWindowVisible(window) && IsWindowEnabled(window) && !GetWindow(window, GW_OWNER))
      reinterpret_cast<Closing*>(self)->Ask(window);
    return TRUE;
  }

  void Ask(HWND window) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    if (std::ranges::count(ids_, id) == 0) return;
    if (PostMessageW(window, WM_CLOSE, 0, 0)) has_asked_ = true;
  }

  std::vector<DWORD> ids_;
  std::vector<UniqueHandle> processes_;  // those that can be awaited
  bool has_asked_ = false;
};

}  // namespace

std::vector<DWORD> ProcessesNamed(std::string_view file_name, Sessions sessions) {
  const std::wstring wide = Wide(file_name);
  DWORD session = 0;
  ProcessIdToSessionId(GetCurrentProcessId(), &session);
  const UniqueFile processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  std::vector<DWORD> ids;
  PROCESSENTRY32W process{};
  process.dwSize = sizeof process;
  for (BOOL more = Process32FirstW(processes.Get(), &process); more;
       more = Process32NextW(processes.Get(), &process)) {
    if (lstrcmpiW(process.szExeFile, wide.c_str()) != 0) continue;
    DWORD its_session = session;  // one that is not told may be this one
    ProcessIdToSessionId(process.th32ProcessID, &its_session);
    if (sessions == Sessions::kAll || its_session == session) ids.push_back(process.th32ProcessID);
  }
  return ids;
}

std::vector<ProcessUsing> ProcessesUsing(const std::string& path) {
  try {
    return AskRestartManager(Wide(path));
  } catch (const Error&) {  // a Windows without it
    return {};
  }
}

std::unique_ptr<ClosingPrograms> AskProgramsToClose(const ProgramUse& use) {
  auto closing = std::make_unique<Closing>(ProcessesOf(use));
  return closing->has_asked() ? std::move(closing) : nullptr;
}

}  // namespace quellix
