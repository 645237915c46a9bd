#include "ui/frm_about.h"

#include "platform/win32/win32_text.h"
#include "ui/dpi.h"
#include "version.h"

namespace quellix {
namespace {

constexpr Anchor kAnchors[] = {{txtLicences, 0, 0, 1, 1}, {IDCANCEL, 1, 1, 1, 1}};

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
  SetText(lblVersion, "Version " QUELLIX_VERSION);
  SetText(lblBuild, "Build " QUELLIX_BUILD ", for 64-bit Windows");
  SetText(txtLicences, Licences());
}

void FrmAbout::OnResolution() {
  const int side = Scale(32, dpi());
  UniqueIcon picture = LoadProgramIcon(icoQuellix, side, side);
  SendDlgItemMessageW(window(), imgAbout, STM_SETICON, reinterpret_cast<WPARAM>(picture.Get()), 0);
  picture_ = std::move(picture);
}

void FrmAbout::OnCommand(int id, int code) {
  if (id == IDCANCEL && code == BN_CLICKED) OnClose();
}

}  // namespace quellix
