// A library for a program under test. Wine tells of every file that its user owns it, whatever was
// set; for a program that has loaded this, files and folders belong to the system, and
// administrators alone may change them.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <cstring>

namespace {

DWORD WINAPI OwnedByWindows(HANDLE, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID*, PSID*, PACL*,
                            PACL*, PSECURITY_DESCRIPTOR* security) {
  const bool is_made = ConvertStringSecurityDescriptorToSecurityDescriptorW(
                           L"O:SYG:SYD:(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x1200a9;;;BU)", SDDL_REVISION_1,
                           security, nullptr) != FALSE;
  return is_made ? ERROR_SUCCESS : GetLastError();
}

// Where the program keeps the address of that function; null where it asks for none.
ULONG_PTR* PlaceOfGetSecurityInfo() {
  auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD imports =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
  for (; library->Name != 0; ++library) {
    const auto* name = reinterpret_cast<const ULONG_PTR*>(base + library->OriginalFirstThunk);
    auto* place = reinterpret_cast<ULONG_PTR*>(base + library->FirstThunk);
    for (; *name != 0; ++name, ++place) {
      if (IMAGE_SNAP_BY_ORDINAL(*name)) continue;
      const auto* const by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *name);
      if (std::strcmp(by_name->Name, "GetSecurityInfo") == 0) return place;
    }
  }
  return nullptr;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  ULONG_PTR* const place = PlaceOfGetSecurityInfo();
  DWORD before = 0;
  if (!place || !VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before)) return FALSE;
  *place = reinterpret_cast<ULONG_PTR>(OwnedByWindows);
  return TRUE;
}
