#pragma once

#include <windows.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/win32/unique.h"

namespace quellix {

// What one of Windows' own cleaners is to do and does, on a thread of its own. Whoever waits and
// the thread share it: a thread that does not come to an end goes on with it.
struct CleanerWork {
  // Before the thread begins.
  CLSID class_id{};
  std::wstring key_name;
  UniqueKey key;                      // of its registration
  std::vector<std::wstring> volumes;  // "C:\"
  bool cleans = false;

  // Meanwhile.
  std::atomic<bool> stops = false;
  std::atomic<uint64_t> found = 0, freed = 0;  // bytes
  std::mutex status_in_use;
  std::wstring status;  // what it says it does; guarded by the former

  // After the thread's end.
  std::wstring name, description;  // "" where it gives none
  bool is_usual = false;
  bool was_the_last_time = false;  // it asks to be taken off Windows' list
  bool tells_freed = false;
  bool is_stopped = false;
  HRESULT failure = S_OK;  // the first
};

// Begins the work; null when the thread cannot be made. Throws Error when COM is not there.
UniqueHandle StartCleaner(const std::shared_ptr<CleanerWork>& work, DWORD& thread_id);

}  // namespace quellix
