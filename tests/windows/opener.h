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
    SetRegistryText(HKEY_CLASSES_ROOT, extension, nullptr, kClass);
    SetRegistryText(HKEY_CLASSES_ROOT, std::wstring(kClass) + L"\\shell\\open\\command", nullptr,
                    command);
  }
  ~Opener() {
    if (old_class_ == L"<missing>") {
      RegDeleteTreeW(HKEY_CLASSES_ROOT, extension_.c_str());
    } else {
      SetRegistryText(HKEY_CLASSES_ROOT, extension_, nullptr, old_class_);
    }
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kClass);
  }
  Opener(const Opener&) = delete;
  Opener& operator=(const Opener&) = delete;

 private:
  static constexpr wchar_t kClass[] = L"quellix.opener";

  std::wstring extension_;
  std::wstring old_class_ = RegistryText(HKEY_CLASSES_ROOT, extension_, nullptr);
};

}  // namespace quellix::test
