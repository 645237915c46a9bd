#include "ui/shield.h"

#include <shellapi.h>
#include <shlobj.h>

#include <cwchar>
#include <vector>

#include "platform/win32/lazy_library.h"

namespace quellix {
namespace {

LazyLibrary& Shell32() {
  static LazyLibrary shell32(L"shell32.dll");
  return shell32;
}

bool FindStockIcon(SHSTOCKICONID id, SHSTOCKICONINFO& info) {
  static const auto find = Shell32().Find<decltype(&SHGetStockIconInfo)>("SHGetStockIconInfo");
  info.cbSize = sizeof(info);
  return SUCCEEDED(find(id, SHGSI_ICONLOCATION, &info));
}

// Wine has one place for whatever is asked for: that of a document.
bool FindShield(SHSTOCKICONINFO& shield) {
  SHSTOCKICONINFO document{};
  return FindStockIcon(SIID_SHIELD, shield) &&
         !(FindStockIcon(SIID_DOCNOASSOC, document) && shield.iIcon == document.iIcon &&
           std::wcscmp(shield.szPath, document.szPath) == 0);
}

// The library of the controls is that of the program's manifest, which mingw-w64's list of imports
// lacks this function of.
HICON LoadOldShield(int side) {
  using Load = HRESULT(WINAPI*)(HINSTANCE, PCWSTR, int, int, HICON*);
  static const auto load = reinterpret_cast<Load>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"comctl32.dll"), "LoadIconWithScaleDown")));
  HICON icon = nullptr;
  if (load) load(nullptr, IDI_SHIELD, side, side, &icon);
  return icon;
}

// Nothing but room: rows without any image would begin elsewhere.
UniqueIcon MakeEmptyIcon(int side) {
  const size_t bytes = static_cast<size_t>((side + 15) / 16 * 2 * side);
  const std::vector<BYTE> through(bytes, 0xFF), black(bytes, 0);
  return UniqueIcon(CreateIcon(nullptr, side, side, 1, 1, through.data(), black.data()));
}

}  // namespace

UniqueIcon LoadShield(int side) {
  static const auto extract = Shell32().Find<decltype(&SHDefExtractIconW)>("SHDefExtractIconW");
  UniqueIcon icon;
  SHSTOCKICONINFO shield{};
  const auto size = static_cast<UINT>(MAKELONG(side, 0));
  if (FindShield(shield) &&
      extract(shield.szPath, shield.iIcon, 0, icon.Put(), nullptr, size) == S_OK) {
    return icon;
  }
  return UniqueIcon(LoadOldShield(side));
}

UniqueImages MakeShieldImages(int side) {
  const UniqueIcon shield = LoadShield(side);
  if (!shield) return {};
  UniqueImages images(ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, 2, 0));
  ImageList_AddIcon(images.Get(), shield.Get());
  ImageList_AddIcon(images.Get(), MakeEmptyIcon(side).Get());
  return images;
}

}  // namespace quellix
