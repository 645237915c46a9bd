#include "ui/frm_about.h"

#include "platform/words.h"
#include "ui/looks.h"

#include "platform/win32/win32_text.h"
#include "ui/dpi.h"
#include "version.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {
    {lblOwnFolderPath, 0, 0, 1, 0}, {txtLicences, 0, 0, 1, 1}, {IDCANCEL, 1, 1, 1, 1}};

// The file that also ships beside the program.
std::string Licences() {
  const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(txtLicences), RT_RCDATA);
  const HGLOBAL loaded = found ? LoadResource(nullptr, found) : nullptr;
  if (!loaded) return "";
  return {static_cast<const char*>(LockResource(loaded)), SizeofResource(nullptr, found)};
}

}  // namespace

void FrmAbout::OnInit() {
  layout().Add(kAnchors);
  SetText(lblVersion, Tr("Version %1", QUELLIX_VERSION));
  SetText(lblBuild, Tr("Build %1, for 64-bit Windows", QUELLIX_BUILD));
  SetText(lblOwnFolderPath, own_folder_);
  SetText(txtLicences, Licences());
}

void FrmAbout::OnResolution() {
  picture_ = LoadProgramIcon(icoQuellix, Scale(32, dpi()), Scale(32, dpi()));
  InvalidateRect(Control(imgAbout), nullptr, TRUE);
}

void FrmAbout::OnDrawItem(const DRAWITEMSTRUCT& item) {
  FillRect(item.hDC, &item.rcItem, BrushOf(Paint::kFace));
  DrawIconEx(item.hDC, 0, 0, picture_.Get(), 0, 0, 0, nullptr, DI_NORMAL);
}

void FrmAbout::OnCommand(int id, int code) {
  if (id == IDCANCEL && code == BN_CLICKED) OnClose();
}

}  // namespace quellix
