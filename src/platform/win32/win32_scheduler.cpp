#include "platform/win32/win32_scheduler.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <oleauto.h>
#include <taskschd.h>

#include "platform/error.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr const char* kCannotReach = Mark("Cannot reach a scheduled task: %2");
constexpr const char* kCannotRead = Mark("Cannot read a scheduled task: %2");
constexpr const char* kCannotRemove = Mark("Cannot remove a scheduled task: %2");

LazyLibrary ole32(L"ole32.dll");
LazyLibrary oleaut32(L"oleaut32.dll");

template <typename Interface>
using UniqueCom = Unique<ComTraits<Interface>>;

class Text {
 public:
  Text() = default;
  explicit Text(std::string_view utf8) {
    static const auto make = oleaut32.Find<decltype(&SysAllocStringLen)>("SysAllocStringLen");
    const std::wstring text = Wide(utf8);
    text_ = make(text.data(), static_cast<UINT>(text.size()));
  }
  ~Text() {
    static const auto free = oleaut32.Find<decltype(&SysFreeString)>("SysFreeString");
    free(text_);
  }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  BSTR Get() const { return text_; }
  BSTR* Put() { return &text_; }

 private:
  BSTR text_ = nullptr;
};

void Require(HRESULT result, const char* cannot) {
  if (FAILED(result)) throw WindowsError(static_cast<DWORD>(result), cannot, "");
}

// Where all tasks stand that name no folder.
UniqueCom<ITaskFolder> RootFolder() {
  static const auto create = ole32.Find<decltype(&CoCreateInstance)>("CoCreateInstance");
  UniqueCom<ITaskService> service;
  Require(create(__uuidof(::TaskScheduler), nullptr, CLSCTX_INPROC_SERVER, __uuidof(ITaskService),
                 reinterpret_cast<void**>(service.Put())),
          kCannotReach);
  const VARIANT none{};
  Require(service.Get()->Connect(none, none, none, none), kCannotReach);
  UniqueCom<ITaskFolder> folder;
  const Text root("\\");
  Require(service.Get()->GetFolder(root.Get(), folder.Put()), kCannotReach);
  return folder;
}

bool IsNoTask(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ||
         result == HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
}

// Null when there is none.
UniqueCom<IRegisteredTask> TaskNamed(ITaskFolder* folder, std::string_view name) {
  const Text path(name);
  UniqueCom<IRegisteredTask> task;
  const HRESULT result = folder->GetTask(path.Get(), task.Put());
  if (!IsNoTask(result)) Require(result, kCannotRead);
  return task;
}

// A date before this century is none: a task that never ran has one.
std::optional<LocalTime> ToTime(HRESULT result, DATE date) {
  static const auto convert =
      oleaut32.Find<decltype(&VariantTimeToSystemTime)>("VariantTimeToSystemTime");
  SYSTEMTIME time{};
  if (FAILED(result) || !convert(date, &time) || time.wYear < 2001) return std::nullopt;
  return LocalTime{time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

}  // namespace

std::optional<Scheduler::Task> Win32Scheduler::Find(std::string_view name) {
  com_.Start();
  const auto folder = RootFolder();
  const auto task = TaskNamed(folder.Get(), name);
  if (!task) return std::nullopt;
  Text xml;
  Require(task.Get()->get_Xml(xml.Put()), kCannotRead);
  Task found{.description = Narrow(xml.Get() ? xml.Get() : L""),
             .next_run = {},
             .last_run = {},
             .last_result = {}};
  VARIANT_BOOL is_enabled = VARIANT_TRUE;
  found.is_enabled = FAILED(task.Get()->get_Enabled(&is_enabled)) || is_enabled != VARIANT_FALSE;
  DATE date = 0;
  found.next_run = ToTime(task.Get()->get_NextRunTime(&date), date);
  found.last_run = ToTime(task.Get()->get_LastRunTime(&date), date);
  LONG code = 0;
  if (found.last_run && SUCCEEDED(task.Get()->get_LastTaskResult(&code))) found.last_result = code;
  return found;
}

void Win32Scheduler::Register(std::string_view name, std::string_view description) {
  com_.Start();
  const auto folder = RootFolder();
  const Text path(name), xml(description);
  const VARIANT none{};
  UniqueCom<IRegisteredTask> task;
  Require(folder.Get()->RegisterTask(path.Get(), xml.Get(), TASK_CREATE_OR_UPDATE, none, none,
                                     TASK_LOGON_INTERACTIVE_TOKEN, none, task.Put()),
          "store");
}

void Win32Scheduler::Remove(std::string_view name) {
  com_.Start();
  const auto folder = RootFolder();
  const Text path(name);
  const HRESULT result = folder.Get()->DeleteTask(path.Get(), 0);
  if (!IsNoTask(result)) Require(result, kCannotRemove);
}

}  // namespace quellix
