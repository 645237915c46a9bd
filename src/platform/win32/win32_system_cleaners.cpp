#include "platform/win32/win32_system_cleaners.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <objbase.h>
#include <shlwapi.h>

#include <algorithm>
#include <utility>

#include "platform/text.h"
#include "platform/win32/cleaner_work.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

LazyLibrary ole32(L"ole32.dll");
LazyLibrary shlwapi(L"shlwapi.dll");

constexpr const wchar_t* kHandlers =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\VolumeCaches";
constexpr DWORD kMillisecondsPerLook = 50;

UniqueKey OpenKey(HKEY above, const std::wstring& name, REGSAM access) {
  UniqueKey key;
  RegOpenKeyExW(above, name.c_str(), 0, access | KEY_WOW64_64KEY, key.Put());
  return key;
}

// With its variables expanded; "" when it is missing or no text.
std::wstring Value(const UniqueKey& key, const wchar_t* name) {
  std::wstring text(1024, L'\0');
  DWORD bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) !=
      ERROR_SUCCESS)
    return {};
  text.resize(wcsnlen(text.c_str(), bytes / sizeof(wchar_t)));
  return text;
}

// "@shell32.dll,-123" names a text in a library, in the user's language.
std::string Meant(const std::wstring& text) {
  if (!text.starts_with(L'@')) return Narrow(text);
  static const auto load = shlwapi.Find<decltype(&SHLoadIndirectString)>("SHLoadIndirectString");
  wchar_t meant[1024] = {};
  if (FAILED(load(text.c_str(), meant, ARRAYSIZE(meant), nullptr))) return {};
  return Narrow(meant);
}

SystemCleaner Registered(const std::wstring& name, const UniqueKey& key) {
  SystemCleaner cleaner{.key = Narrow(name),
                        .name = Meant(Value(key, L"Display")),
                        .description = Meant(Value(key, L"Description"))};
  if (cleaner.name.empty()) cleaner.name = cleaner.key;
  return cleaner;
}

std::vector<std::wstring> FixedVolumes() {
  std::vector<std::wstring> volumes;
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
    const wchar_t root[] = {letter, L':', L'\\', L'\0'};
    if (GetDriveTypeW(root) == DRIVE_FIXED) volumes.emplace_back(root);
  }
  return volumes;
}

// A window of the thread that waits for somebody; null for none.
HWND WindowOf(DWORD thread) {
  HWND found = nullptr;
  EnumThreadWindows(
      thread,
      [](HWND window, LPARAM to) -> BOOL {
        if (!IsWindowVisible(window)) return TRUE;
        *reinterpret_cast<HWND*>(to) = window;
        return FALSE;
      },
      reinterpret_cast<LPARAM>(&found));
  return found;
}

// One that is at work, for whoever waits for it.
class RunningCleaner {
 public:
  RunningCleaner(std::shared_ptr<CleanerWork> work, std::string name)
      : work_(std::move(work)), name_(std::move(name)), thread_(StartCleaner(work_, thread_id_)) {
    if (!thread_) ThrowLastError(Cannot::kStart, name_);
  }

  // Throws Error when it does not come to an end.
  void Await(bool is_attended, uint32_t patience, const Pause& pause) {
    ULONGLONG stopped_at = 0;
    while (WaitForSingleObject(thread_.Get(), kMillisecondsPerLook) == WAIT_TIMEOUT) {
      const HWND window = WindowOf(thread_id_);
      const bool asks_nobody = window != nullptr && !is_attended;
      if (asks_nobody) PostMessageW(window, WM_CLOSE, 0, 0);
      asked_nobody_ = asked_nobody_ || asks_nobody;
      const bool stops = Tell(window != nullptr, pause) || asks_nobody;
      if (stops && !work_->stops.exchange(true)) stopped_at = GetTickCount64();
      if (work_->stops && GetTickCount64() - stopped_at > patience) GiveUp();
    }
    if (asked_nobody_)
      throw Error(Error::Kind::kOther, Say("%1 asked something, and nobody was there.", name_));
  }

 private:
  bool Tell(bool has_window, const Pause& pause) const {
    std::string status = name_;
    {
      const std::scoped_lock lock(work_->status_in_use);
      if (!work_->status.empty()) status += ": " + Narrow(work_->status);
    }
    if (has_window) status = Tr("%1 waits for an answer in a window of its own", name_);
    return pause({.done = work_->cleans ? work_->freed : work_->found,
                  .total = work_->cleans ? work_->found.load() : 0,
                  .path = status,
                  .work = work_->cleans ? Mark("Cleaning") : Mark("Looking")});
  }

  [[noreturn]] void GiveUp() const {
    throw Error(Error::Kind::kOther,
                Say("%1 was stopped and did not come to an end. It may still be at work.", name_));
  }

  std::shared_ptr<CleanerWork> work_;
  std::string name_;
  DWORD thread_id_ = 0;
  UniqueHandle thread_;
  bool asked_nobody_ = false;
};

// One that asks for it is taken off the list, once it has cleaned; a look changes nothing.
bool TakeOffTheList(const CleanerWork& work, const UniqueKey& handlers) {
  const bool is_done = work.cleans && !work.is_stopped && SUCCEEDED(work.failure);
  return is_done && work.was_the_last_time && !work.key_name.empty() &&
         RegDeleteKeyW(handlers.Get(), work.key_name.c_str()) == ERROR_SUCCESS;
}

CleanerFind FindOf(const CleanerWork& work, SystemCleaner registered) {
  CleanerFind find{.cleaner = std::move(registered), .bytes = work.found};
  if (!work.name.empty()) find.cleaner.name = Narrow(work.name);
  if (!work.description.empty()) find.cleaner.description = Narrow(work.description);
  find.cleaner.is_usual = work.is_usual;
  if (work.tells_freed) find.freed = work.freed;
  find.is_stopped = work.is_stopped;
  return find;
}

}  // namespace

std::vector<SystemCleaner> Win32SystemCleaners::List() {
  std::vector<SystemCleaner> cleaners;
  const UniqueKey handlers = OpenKey(HKEY_LOCAL_MACHINE, kHandlers, KEY_READ);
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = ARRAYSIZE(name);
    if (!handlers || RegEnumKeyExW(handlers.Get(), i, name, &length, nullptr, nullptr, nullptr,
                                   nullptr) != ERROR_SUCCESS)
      break;
    cleaners.push_back(Registered(name, OpenKey(handlers.Get(), name, KEY_READ)));
  }
  std::ranges::sort(cleaners, [](const SystemCleaner& a, const SystemCleaner& b) {
    return CompareNoCase(a.name, b.name) < 0;
  });
  return cleaners;
}

CleanerFind Win32SystemCleaners::Use(std::string_view key, CleanerUse use, bool is_attended,
                                     const Pause& pause) {
  auto work = std::make_shared<CleanerWork>();
  work->key_name = Wide(key);
  const UniqueKey handlers = OpenKey(HKEY_LOCAL_MACHINE, kHandlers, KEY_READ);
  if (handlers) work->key = OpenKey(handlers.Get(), work->key_name, MAXIMUM_ALLOWED);
  if (!work->key)
    throw Error(Error::Kind::kMissing, Say("%1 is not registered with Windows.", key));
  const SystemCleaner registered = Registered(work->key_name, work->key);
  static const auto parse = ole32.Find<decltype(&CLSIDFromString)>("CLSIDFromString");
  if (FAILED(parse(Value(work->key, nullptr).c_str(), &work->class_id)))
    throw Error(Error::Kind::kOther, Say("%1 names no program that could do it.", registered.name));
  work->volumes = FixedVolumes();
  work->cleans = use == CleanerUse::kClean;
  RunningCleaner(work, registered.name).Await(is_attended, patience_, pause);
  if (FAILED(work->failure) && !work->is_stopped)
    throw WindowsError(static_cast<DWORD>(work->failure), Mark("Cannot finish %1: %2"),
                       registered.name);
  CleanerFind find = FindOf(*work, registered);
  find.is_off_the_list = TakeOffTheList(*work, handlers);
  return find;
}

}  // namespace quellix
