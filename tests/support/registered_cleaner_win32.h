#pragma once

#include "support/embedded_win32.h"

namespace quellix {

// The tests' own cleaner, registered with Windows' disk cleanup for as long as this lives.
class RegisteredCleaner {
 public:
  // `folder`, with "\" at its end, holds the files that it takes. The old kind knows the first
  // interface alone, and has its name from the registry.
  RegisteredCleaner(const std::wstring& name, const std::wstring& folder,
                    const std::wstring& behaviour = {}, bool is_old = false)
      : key_(kHandlers + name) {
    const std::wstring class_id =
        std::wstring(L"{51E11A01-7E57-4C1E-A001-51E11A01000") + (is_old ? L"2}" : L"1}");
    class_key_ = L"Software\\Classes\\CLSID\\" + class_id;
    const std::wstring library = L"C:\\quellix-tests\\cleanup_handler.dll";
    std::filesystem::create_directories(L"C:\\quellix-tests");
    if (!std::filesystem::exists(library)) Unpack(L"cleanup_handler", library);
    Set(class_key_ + L"\\InprocServer32", nullptr, library);
    Set(class_key_ + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    Set(key_, nullptr, class_id);
    Set(key_, L"Folder", folder);
    Set(key_, L"Behaviour", behaviour);
    if (!is_old) return;
    Set(key_, L"Display", L"Qx, as it is registered");
    Set(key_, L"Description", L"@C:\\no-such.dll,-1");
  }
  ~RegisteredCleaner() {
    for (const std::wstring& key : {key_, class_key_})
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
  }
  RegisteredCleaner(const RegisteredCleaner&) = delete;
  RegisteredCleaner& operator=(const RegisteredCleaner&) = delete;

  void Set(const wchar_t* value, const std::wstring& text) const { Set(key_, value, text); }

 private:
  static constexpr const wchar_t* kHandlers =
      L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\VolumeCaches\\";

  static void Set(const std::wstring& key, const wchar_t* value, const std::wstring& text) {
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), value, REG_SZ, text.c_str(),
                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) != ERROR_SUCCESS)
      throw std::runtime_error("cannot register a cleaner");
  }

  std::wstring key_, class_key_;
};

}  // namespace quellix
