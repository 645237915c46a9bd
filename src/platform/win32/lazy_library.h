#pragma once

#include <windows.h>

namespace quellix {

// To be called first of all: from then on libraries named without a path, by whichever library, are
// looked for in the system folder only. Nothing on a Windows 7 that never was updated.
void SearchSystemFolderOnly();

// A library of Windows that is loaded when a function of it is first asked for: with its own
// dependencies it would take a good part of the program's start, and most runs never need it. It
// stays loaded, since unloading it while its threads run is not safe. Only the system folder is
// searched, so that no file beside the program can take its place.
class LazyLibrary {
 public:
  constexpr explicit LazyLibrary(const wchar_t* name) : name_(name) {}

  // The exported function `name`, of the type it is declared with. Throws Error.
  template <typename Function>
  Function Find(const char* name) {
    return reinterpret_cast<Function>(FindAddress(name));
  }

 private:
  void* FindAddress(const char* name);

  const wchar_t* name_;
  HMODULE library_ = nullptr;
};

}  // namespace quellix
