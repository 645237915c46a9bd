#include "platform/win32/win32_session.h"

#include <restartmanager.h>

#include <algorithm>
#include <span>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary restart_manager(L"rstrtmgr.dll");

template <typename Function>
Function FindRm(const char* name) {
  return restart_manager.Find<Function>(name);
}

// Without those named twice, as the processes of a browser are.
std::vector<std::string> NamesOf(std::span<const RM_PROCESS_INFO> programs) {
  std::vector<std::string> names;
  for (const RM_PROCESS_INFO& program : programs) {
    std::string name = Narrow(program.strAppName);
    if (std::ranges::count(names, name) == 0) names.push_back(std::move(name));
  }
  return names;
}

std::vector<std::string> AskRestartManager(const std::wstring& path) {
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
  return code == ERROR_SUCCESS ? NamesOf({programs.data(), count}) : std::vector<std::string>();
}

}  // namespace

// Names below Local\ belong to one session. One that another user's process made there may not be
// opened, but it is there.
bool Win32Session::ClaimInstance(std::string_view name) {
  const std::wstring object = L"Local\\" + Wide(name) + L" runs";
  SetLastError(ERROR_SUCCESS);
  UniqueHandle instance(CreateMutexW(nullptr, FALSE, object.c_str()));
  if (!instance) {
    if (GetLastError() == ERROR_ACCESS_DENIED) return false;
    ThrowLastError("make", "the sign that " + std::string(name) + " runs");
  }
  if (GetLastError() == ERROR_ALREADY_EXISTS) return false;
  instance_ = std::move(instance);
  return true;
}

void Win32Session::EnablePrivilege(std::string_view name) {
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token_.Put())) {
    ThrowLastError("open", "the program's own rights");
  }
  TOKEN_PRIVILEGES wanted{}, previous{};
  wanted.PrivilegeCount = 1;
  wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
  if (!LookupPrivilegeValueW(L"", Wide(name).c_str(), &wanted.Privileges[0].Luid)) {
    ThrowLastError("find", "the privilege " + std::string(name));
  }
  DWORD size = 0;
  if (!AdjustTokenPrivileges(token_.Get(), FALSE, &wanted, sizeof(previous), &previous, &size)) {
    ThrowLastError("enable", "the privilege " + std::string(name));
  }
}

// The group that a program started without rights holds for denials only does not count.
bool Win32Session::HasAdministratorRights() {
  BYTE administrators[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(administrators);
  BOOL is_member = FALSE;
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) &&
         CheckTokenMembership(nullptr, administrators, &is_member) && is_member;
}

std::vector<std::string> Win32Session::ProgramsUsing(const std::string& path) {
  try {
    return AskRestartManager(Wide(path));
  } catch (const Error&) {  // a Windows without it
    return {};
  }
}

void Win32Session::Exit(uint32_t flags, uint32_t reason) {
  if (!ExitWindowsEx(flags, reason)) ThrowLastError("end", "the session");
}

}  // namespace quellix
