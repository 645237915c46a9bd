#include "platform/win32/win32_session.h"

#include <sddl.h>

#include <algorithm>

#include "platform/error.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_programs.h"
#include "platform/win32/win32_text.h"

namespace quellix {

// Names below Local\ belong to one session. One that another user's process made there may not be
// opened, but it is there.
bool Win32Session::ClaimInstance(std::string_view name) {
  const std::wstring object = L"Local\\" + Wide(name) + L" runs";
  SetLastError(ERROR_SUCCESS);
  UniqueHandle instance(CreateMutexW(nullptr, FALSE, object.c_str()));
  if (!instance) {
    if (GetLastError() == ERROR_ACCESS_DENIED) return false;
    ThrowLastError(Mark("Cannot make the sign that %1 runs: %2"), name);
  }
  if (GetLastError() == ERROR_ALREADY_EXISTS) return false;
  instance_ = std::move(instance);
  return true;
}

void Win32Session::EnablePrivilege(std::string_view name) {
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token_.Put())) {
    ThrowLastError(Mark("Cannot open the program's own rights: %2"), "");
  }
  TOKEN_PRIVILEGES wanted{}, previous{};
  wanted.PrivilegeCount = 1;
  wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
  if (!LookupPrivilegeValueW(L"", Wide(name).c_str(), &wanted.Privileges[0].Luid)) {
    ThrowLastError(Mark("Cannot find the privilege %1: %2"), name);
  }
  DWORD size = 0;
  if (!AdjustTokenPrivileges(token_.Get(), FALSE, &wanted, sizeof(previous), &previous, &size)) {
    ThrowLastError(Mark("Cannot enable the privilege %1: %2"), name);
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

std::string Win32Session::UserId() {
  UniqueHandle token;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put())) return {};
  alignas(TOKEN_USER) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  wchar_t* text = nullptr;
  if (!GetTokenInformation(token.Get(), TokenUser, user, sizeof(user), &size) ||
      !ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user)->User.Sid, &text)) {
    return {};
  }
  const std::string id = Narrow(text);
  LocalFree(text);
  return id;
}

// Without those named twice, as the processes of a browser are.
std::vector<std::string> Win32Session::ProgramsUsing(const std::string& path) {
  std::vector<std::string> names;
  for (const ProcessUsing& process : ProcessesUsing(path)) {
    if (std::ranges::count(names, process.name) == 0) names.push_back(process.name);
  }
  return names;
}

std::unique_ptr<ClosingPrograms> Win32Session::AskToClose(const ProgramUse& use) {
  return AskProgramsToClose(use);
}

void Win32Session::Exit(uint32_t flags, uint32_t reason) {
  if (!ExitWindowsEx(flags, reason)) ThrowLastError(Mark("Cannot end the session: %2"), "");
}

}  // namespace quellix
