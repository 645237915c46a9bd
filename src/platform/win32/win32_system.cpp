#include "platform/win32/win32_system.h"

#include <windows.h>

#include "platform/path.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_file_time.h"
#include "platform/win32/win32_programs.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

std::string LocaleText(LCTYPE what, const std::string& otherwise) {
  wchar_t text[128];
  const int size = GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, what, text, ARRAYSIZE(text));
  return size > 0 ? Narrow(text) : otherwise;
}

// Not CP_ACP: with the program's manifest that is UTF-8, while the user's old files are not. Wine's
// GetLocaleInfoEx knows no default of the system.
UINT AnsiCodePage() {
  DWORD page = 0;
  GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                 reinterpret_cast<wchar_t*>(&page), sizeof page / sizeof(wchar_t));
  return page ? page : CP_ACP;
}

using UniqueService = Unique<NullHandleTraits<SC_HANDLE, CloseServiceHandle>>;

DriveType ToDriveType(UINT type) {
  switch (type) {
    case DRIVE_NO_ROOT_DIR:
      return DriveType::kNoRoot;
    case DRIVE_REMOVABLE:
      return DriveType::kRemovable;
    case DRIVE_FIXED:
      return DriveType::kFixed;
    case DRIVE_REMOTE:
      return DriveType::kRemote;
    case DRIVE_CDROM:
      return DriveType::kCdRom;
    case DRIVE_RAMDISK:
      return DriveType::kRamDisk;
    default:
      return DriveType::kUnknown;
  }
}

LocalTime ToLocal(const SYSTEMTIME& time) {
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

}  // namespace

std::string Win32System::WindowsFolder() {
  return std::string(WithoutBackslash(Narrow(GrowingText(GetSystemWindowsDirectoryW))));
}

std::string Win32System::SystemFolder() {
  return std::string(WithoutBackslash(Narrow(GrowingText(GetSystemDirectoryW))));
}

std::string Win32System::TempFolder() {
  return WithBackslash(
      Narrow(GrowingText([](wchar_t* text, uint32_t size) { return GetTempPathW(size, text); })));
}

std::optional<std::string> Win32System::Environment(std::string_view name) {
  const std::wstring wide = Wide(name);
  SetLastError(ERROR_SUCCESS);
  const std::wstring value = GrowingText([&](wchar_t* text, uint32_t size) {
    return GetEnvironmentVariableW(wide.c_str(), text, size);
  });
  if (value.empty() && GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
  return Narrow(value);
}

// GetVersionEx tells the version the manifest claims to know.
WindowsVersion Win32System::Version() {
  using Function = LONG(WINAPI*)(OSVERSIONINFOW*);
  const auto get = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  OSVERSIONINFOW info{};
  info.dwOSVersionInfoSize = sizeof info;
  if (get) get(&info);
  return {2, static_cast<int>(info.dwMajorVersion), static_cast<int>(info.dwMinorVersion)};
}

bool Win32System::IsServiceRunning(std::string_view name) {
  const UniqueService manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager) return false;
  const UniqueService service(
      OpenServiceW(manager.Get(), Wide(name).c_str(), SERVICE_QUERY_STATUS));
  SERVICE_STATUS status;
  return service && QueryServiceStatus(service.Get(), &status) &&
         status.dwCurrentState == SERVICE_RUNNING;
}

bool Win32System::IsProgramRunning(std::string_view name) { return !ProcessesNamed(name).empty(); }

std::vector<Drive> Win32System::Drives() {
  std::vector<Drive> drives;
  const DWORD present = GetLogicalDrives();
  for (int i = 0; i < 26; ++i) {
    if (!(present >> i & 1)) continue;
    const wchar_t root[] = {static_cast<wchar_t>(L'A' + i), L':', L'\\', 0};
    drives.push_back({static_cast<char>('A' + i), ToDriveType(GetDriveTypeW(root))});
  }
  return drives;
}

LocalTime Win32System::Now() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return ToLocal(now);
}

int64_t Win32System::UtcNow() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return static_cast<int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

LocalTime Win32System::ToLocalTime(int64_t filetime) {
  const FILETIME time = ToFileTime(filetime);
  SYSTEMTIME universal, local;
  if (!FileTimeToSystemTime(&time, &universal)) return {};
  if (!SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local)) return ToLocal(universal);
  return ToLocal(local);
}

Locale Win32System::UserLocale() {
  Locale locale;
  locale.short_date = LocaleText(LOCALE_SSHORTDATE, locale.short_date);
  locale.time_format = LocaleText(LOCALE_STIMEFORMAT, locale.time_format);
  locale.am = LocaleText(LOCALE_S1159, locale.am);
  locale.pm = LocaleText(LOCALE_S2359, locale.pm);
  locale.decimal = LocaleText(LOCALE_SDECIMAL, locale.decimal);
  locale.thousand = LocaleText(LOCALE_STHOUSAND, locale.thousand);
  locale.grouping = LocaleText(LOCALE_SGROUPING, locale.grouping);
  locale.leading_zero = LocaleText(LOCALE_ILZERO, "1") != "0";
  return locale;
}

std::string Win32System::FromAnsi(std::string_view bytes) {
  const UINT page = AnsiCodePage();
  const int size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(page, 0, bytes.data(), size, nullptr, 0);
  std::wstring text(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(page, 0, bytes.data(), size, text.data(), length);
  return Narrow(text);
}

}  // namespace quellix
