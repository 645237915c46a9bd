#pragma once

#include <windows.h>

#include <cstdint>

namespace quellix {

inline int64_t FromFileTime(const FILETIME& time) {
  return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

inline FILETIME ToFileTime(int64_t time) {
  return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

}  // namespace quellix
