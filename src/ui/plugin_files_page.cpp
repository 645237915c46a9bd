#include "platform/win32/win32_text.h"
#include "platform/words.h"
#include "ui/control_text.h"
#include "ui/plugin_pages.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr Column kColumns[] = {{Mark("Recurse"), 70},
                               {Mark("Delete Subfolders"), 110},
                               {Mark("Itself"), 55},
                               {Mark("32 and 64 bit"), 90},
                               {Mark("Location"), 245}};

constexpr Anchor kAnchors[] = {
    {lstvFiles, 0, 0, 1, 0.6},          {lblFilePath, 0, 0.6, 0, 0.6},
    {txtFilePath, 0, 0.6, 1, 0.6},      {cmdFileBrowse, 1, 0.6, 1, 0.6},
    {lblFileExt, 1, 0.6, 1, 0.6},       {txtFileExt, 1, 0.6, 1, 0.6},
    {chkFileRecurse, 0, 0.6, 0, 0.6},   {chkFileDeletesubFolders, 0, 0.6, 0, 0.6},
    {chkFileSelf, 0, 0.6, 0, 0.6},      {chkFileBothSides, 0, 0.6, 0, 0.6},
    {cmdFilesAdd, 1, 0.6, 1, 0.6},      {cmdFileChange, 1, 0.6, 1, 0.6},
    {cmdFileRemove, 1, 0.6, 1, 0.6},    {lblFileAlternate, 0, 0.6, 0, 0.6},
    {drvFileAlternate, 0, 0.6, 0, 0.6}, {dirFileAlternate, 0, 0.6, 0.5, 1},
    {flFileAlternate, 0.5, 0.6, 1, 1},  {cmdFileAddAlternate, 1, 0.6, 1, 0.6},
};

}  // namespace

PluginFilesPage::PluginFilesPage(const Machine& machine, modPlugin::PluginEditor& editor,
                                 Prompts& prompts)
    : PluginPage(editor, {lstvFiles, cmdFileChange, cmdFileRemove}, kColumns),
      machine_(machine),
      prompts_(prompts) {}

std::span<const Anchor> PluginFilesPage::Init() {
  SetDlgItemTextW(window(), txtFileExt, L"*.*");
  picker_.emplace(machine_);
  FillCombo(Control(drvFileAlternate), picker_->drives());
  SendMessageW(Control(drvFileAlternate), CB_SETCURSEL, picker_->drive(), 0);
  ShowPicker();
  return kAnchors;
}

std::string PluginFilesPage::TextOf(size_t row, int column) const {
  const modPlugin::FileEntry& entry = editor().plugin().files[row];
  const bool flags[] = {entry.recurse, entry.delete_subfolders, entry.remove_self,
                        entry.both_sides};
  if (column == 4) return entry.location;
  return flags[column] ? Tr("Yes") : Tr("No");
}

modPlugin::FilesForm PluginFilesPage::Form() const {
  return {Text(txtFilePath),
          Text(txtFileExt),
          IsTicked(window(), chkFileRecurse),
          IsTicked(window(), chkFileDeletesubFolders),
          IsTicked(window(), chkFileSelf),
          IsTicked(window(), chkFileBothSides)};
}

void PluginFilesPage::ShowForm(size_t row) {
  const modPlugin::FilesForm form = editor().FilesFormOf(row);
  SetText(txtFilePath, form.path);
  SetText(txtFileExt, form.file);
  Tick(chkFileRecurse, form.recurse);
  Tick(chkFileDeletesubFolders, form.delete_subfolders);
  Tick(chkFileSelf, form.remove_self);
  Tick(chkFileBothSides, form.both_sides);
}

bool PluginFilesPage::Change(size_t row) {
  modPlugin::FilesForm form = Form();
  return editor().ChangeFile(row, form);
}

void PluginFilesPage::OnOwnCommand(int id, int code) {
  switch (id) {
    case cmdFileBrowse:
      return Browse();
    case cmdFilesAdd:
      return Add();
    case cmdFileAddAlternate:
      return AddChosen();
    case drvFileAlternate:
      return code == CBN_SELCHANGE ? ChooseDrive() : void();
    case dirFileAlternate:
      return code == LBN_DBLCLK ? OpenFolder() : void();
    case flFileAlternate:
      return code == LBN_DBLCLK ? AddChosen() : void();
  }
}

void PluginFilesPage::Browse() {
  const auto folder = prompts_.AskFolder(Tr("The folder whose files go:"));
  if (folder) SetDlgItemTextW(window(), txtFilePath, Wide(*folder).c_str());
}

void PluginFilesPage::Add() {
  modPlugin::FilesForm form = Form();
  const bool added = editor().AddFiles(form);
  CheckDlgButton(window(), chkFileDeletesubFolders,
                 form.delete_subfolders ? BST_CHECKED : BST_UNCHECKED);
  if (!added) return;
  ShowRows();
  Empty({txtFilePath, txtFileExt});
}

void PluginFilesPage::AddChosen() {
  const HWND list = Control(flFileAlternate);
  std::vector<int> rows(picker_->files().size());
  const LRESULT count =
      SendMessageW(list, LB_GETSELITEMS, rows.size(), reinterpret_cast<LPARAM>(rows.data()));
  std::vector<std::string> chosen;
  for (LRESULT i = 0; i < count; ++i) {
    chosen.push_back(picker_->files()[static_cast<size_t>(rows[static_cast<size_t>(i)])]);
  }
  modPlugin::FilesForm form = Form();
  form.path = picker_->Folder();
  if (!editor().AddChosenFiles(form, picker_->files().size(), chosen)) return;
  SendMessageW(list, LB_SETSEL, FALSE, -1);
  ShowRows();
}

void PluginFilesPage::OnEnter() {
  if (GetFocus() == Control(dirFileAlternate)) return OpenFolder();
  if (GetFocus() == Control(flFileAlternate)) return AddChosen();
  Add();
}

void PluginFilesPage::ChooseDrive() {
  const LRESULT row = SendMessageW(Control(drvFileAlternate), CB_GETCURSEL, 0, 0);
  picker_->ChooseDrive(static_cast<size_t>(row));
  ShowPicker();
}

void PluginFilesPage::OpenFolder() {
  const LRESULT row = SendMessageW(Control(dirFileAlternate), LB_GETCURSEL, 0, 0);
  picker_->OpenFolder(static_cast<size_t>(row));
  ShowPicker();
}

void PluginFilesPage::ShowPicker() {
  std::vector<std::string> rows;
  for (const auto& row : picker_->folders()) {
    rows.push_back(std::string(3 * row.depth, ' ') + row.name);
  }
  FillList(Control(dirFileAlternate), rows);
  SendMessageW(Control(dirFileAlternate), LB_SETCURSEL, picker_->open_row(), 0);
  FillList(Control(flFileAlternate), picker_->files());
}

}  // namespace quellix
