#pragma once

#include <windows.h>

#include <utility>

namespace quellix {

// A handle that closes itself. Traits name its type, the value that means "none" and how it is
// closed; another kind of handle is one more line of them (see below).
template <typename Traits>
class Unique {
 public:
  using Handle = typename Traits::Handle;

  Unique() = default;
  explicit Unique(Handle handle) : handle_(handle) {}
  Unique(Unique&& other) noexcept : handle_(other.Release()) {}
  Unique& operator=(Unique&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~Unique() { Reset(); }

  explicit operator bool() const { return handle_ != Traits::None(); }
  Handle Get() const { return handle_; }
  Handle Release() { return std::exchange(handle_, Traits::None()); }

  // Closes the old handle.
  void Reset(Handle handle = Traits::None()) {
    Handle old = std::exchange(handle_, handle);
    if (old != Traits::None() && old != handle) Traits::Close(old);
  }

  // For calls that store a new handle through a pointer; the old one is closed first.
  Handle* Put() {
    Reset();
    return &handle_;
  }

 private:
  Handle handle_ = Traits::None();
};

// Most handles: null means none, and one function closes them.
template <typename H, auto CloseFunction>
struct NullHandleTraits {
  using Handle = H;
  static Handle None() { return nullptr; }
  static void Close(Handle handle) { CloseFunction(handle); }
};

// Files and searches: INVALID_HANDLE_VALUE means none.
template <auto CloseFunction>
struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle None() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { CloseFunction(handle); }
};

// A COM object, released.
template <typename Interface>
struct ComTraits {
  using Handle = Interface*;
  static Handle None() { return nullptr; }
  static void Close(Handle object) { object->Release(); }
};

using UniqueFile = Unique<FileHandleTraits<CloseHandle>>;
using UniqueFind = Unique<FileHandleTraits<FindClose>>;
using UniqueHandle = Unique<NullHandleTraits<HANDLE, CloseHandle>>;
using UniqueKey = Unique<NullHandleTraits<HKEY, RegCloseKey>>;

}  // namespace quellix
