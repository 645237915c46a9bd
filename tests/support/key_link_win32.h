#pragma once

#include <windows.h>

#include <string>

namespace quellix {

// Makes a key, of the user or below another root, a link to another by its true name; its removal
// needs the system's own call.
class KeyLink {
 public:
  KeyLink(const std::wstring& path, const std::wstring& target, HKEY root = HKEY_CURRENT_USER) {
    RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS, nullptr,
                    &key_, nullptr);
    status_ = RegSetValueExW(key_, L"SymbolicLinkValue", 0, REG_LINK,
                             reinterpret_cast<const BYTE*>(target.data()),
                             static_cast<DWORD>(target.size() * sizeof(wchar_t)));
  }
  ~KeyLink() {
    const auto remove = reinterpret_cast<LONG(NTAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey")));
    remove(key_);
    RegCloseKey(key_);
  }
  KeyLink(const KeyLink&) = delete;
  KeyLink& operator=(const KeyLink&) = delete;
  bool made() const { return status_ == ERROR_SUCCESS; }

 private:
  HKEY key_ = nullptr;
  LSTATUS status_ = ERROR_GEN_FAILURE;
};

}  // namespace quellix
