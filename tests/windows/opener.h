#pragma once

#include <filesystem>
#include <string>

#include "quellix_window.h"

namespace quellix::test {

// The program that opens the files of an extension, for as long as the object lives. Wine does not
// look for it among the classes of the user.
class Opener {
 public:
  // `command` names the file as "%1".
  Opener(const std::wstring& extension, const std::wstring& command) : extension_(extension) {
    DWORD size = sizeof old_class_;
    if (RegGetValueW(HKEY_CLASSES_ROOT, extension.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                     old_class_, &size) != ERROR_SUCCESS) {
      old_class_[0] = L'\0';
    }
    Set(extension, kClass);
    Set(std::wstring(kClass) + L"\\shell\\open\\command", command);
  }
  ~Opener() {
    if (old_class_[0] == L'\0') {
      RegDeleteTreeW(HKEY_CLASSES_ROOT, extension_.c_str());
    } else {
      Set(extension_, old_class_);
    }
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kClass);
  }
  Opener(const Opener&) = delete;
  Opener& operator=(const Opener&) = delete;

 private:
  static constexpr wchar_t kClass[] = L"quellix.opener";

  static void Set(const std::wstring& key, const std::wstring& text) {
    RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }

  std::wstring extension_;
  wchar_t old_class_[200] = {};
};

}  // namespace quellix::test
