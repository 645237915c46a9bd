#include "ui/plugin_pages.h"

#include "platform/win32/win32_text.h"
#include "ui/control_text.h"
#include "ui/dpi.h"
#include "ui/resource.h"
#include "ui/row_menu.h"

namespace quellix {
namespace {

std::string YesNo(bool flag) { return flag ? "Yes" : "No"; }

constexpr Column kRegistryColumns[] = {{L"Del subkey", 80},
                                       {L"Recurse delete", 100},
                                       {L"32 bit too", 70},
                                       {L"key", 220},
                                       {L"value", 100}};
constexpr Anchor kRegistryAnchors[] = {
    {lstvRegistry, 0, 0, 1, 1},
    {optClassesRoot, 0, 1, 0, 1},
    {optCurrentUser, 0, 1, 0, 1},
    {optLocalMachine, 0, 1, 0, 1},
    {optUsers, 0, 1, 0, 1},
    {optPerformanceData, 0, 1, 0, 1},
    {optCurrentConfig, 0, 1, 0, 1},
    {optDynData, 0, 1, 0, 1},
    {lblRegistrySubkey, 0, 1, 0, 1},
    {txtRegistrySubkey, 0, 1, 1, 1},
    {lblRegistryValue, 0, 1, 0, 1},
    {txtRegistryValue, 0, 1, 1, 1},
    {optEntireSubkey, 0, 1, 0, 1},
    {optDeleteValue, 0, 1, 0, 1},
    {chkDeleteAllSubkeys, 0, 1, 0, 1},
    {chkBothViews, 0, 1, 0, 1},
    {cmdGeneratesubkeys, 0, 1, 0, 1},
    {cmdGenerateValues, 0, 1, 0, 1},
    {cmdRegistryAdd, 1, 1, 1, 1},
    {cmdRegistryRemove, 1, 1, 1, 1},
};

constexpr Column kIniColumns[] = {{L"FileName", 110},
                                  {L"Section", 100},
                                  {L"Delete Section", 100},
                                  {L"Value", 100},
                                  {L"Path", 160}};
constexpr Anchor kIniAnchors[] = {
    {lstvINI, 0, 0, 1, 1},      {lblINIFileName, 0, 1, 0, 1}, {txtINIFileName, 0, 1, 1, 1},
    {cmdINIBrowse, 1, 1, 1, 1}, {lblINISections, 0, 1, 0, 1}, {cmbINISections, 0, 1, 1, 1},
    {lblINIValues, 0, 1, 0, 1}, {cmbINIValues, 0, 1, 1, 1},   {chkINIEraseSection, 0, 1, 0, 1},
    {cmdINIAdd, 1, 1, 1, 1},    {cmdINIRemove, 1, 1, 1, 1},
};

constexpr Column kFurtherColumns[] = {{L"What", 190}, {L"Where or which", 250}, {L"And", 130}};
constexpr Anchor kFurtherAnchors[] = {
    {lstvFurther, 0, 0, 1, 1},     {lblFurtherKind, 0, 1, 0, 1},  {cmbFurtherKind, 0, 1, 0, 1},
    {lblFurtherPlace, 0, 1, 0, 1}, {txtFurtherPlace, 0, 1, 1, 1}, {lblFurtherLast, 0, 1, 0, 1},
    {txtFurtherLast, 0, 1, 0, 1},  {cmdFurtherAdd, 1, 1, 1, 1},   {cmdFurtherRemove, 1, 1, 1, 1},
};

}  // namespace

std::span<const Anchor> PluginPage::Attach(HWND window) {
  window_ = window;
  list_.Attach(Control(list_id_), columns_, [this](int row, int column) {
    return Cell{Wide(TextOf(static_cast<size_t>(row), column))};
  });
  list_.SetEraser([this] { Remove(); });
  list_.SetRows(Count());
  return Init();
}

void PluginPage::OnContextMenu(Shell& shell, HWND control, POINT screen) {
  if (control != Control(list_id_)) return;
  const auto place_of = [this](size_t row) { return PlaceNamedBy(PlaceOf(row)); };
  RowMenu{list_, shell, place_of}.Show(window_, screen);
}

void PluginPage::FillLastColumn(int dpi) {
  const int last = static_cast<int>(columns_.size()) - 1;
  list_.FillWith(last, Scale(columns_[static_cast<size_t>(last)].width, dpi));
}

std::string PluginPage::Text(int id) const { return ControlText(Control(id)); }

void PluginPage::Empty(std::initializer_list<int> fields) const {
  for (const int id : fields) SetDlgItemTextW(window_, id, L"");
  SetFocus(Control(*fields.begin()));
}

void PluginPage::ShowRows() {
  list_.SetRows(Count());
  if (Count() > 0) list_.Select(static_cast<size_t>(Count()) - 1);
}

void PluginPage::RemoveSelected(void (modPlugin::PluginEditor::*remove)(size_t row)) {
  const std::vector<size_t> rows = list_.SelectedRows();
  if (rows.empty()) return;
  for (size_t i = rows.size(); i-- > 0;) (editor_.*remove)(rows[i]);
  ShowRows();
}

PluginRegistryPage::PluginRegistryPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, lstvRegistry, kRegistryColumns) {}

std::span<const Anchor> PluginRegistryPage::Init() {
  CheckDlgButton(window(), optCurrentUser, BST_CHECKED);
  CheckDlgButton(window(), optDeleteValue, BST_CHECKED);
  return kRegistryAnchors;
}

std::string PluginRegistryPage::TextOf(size_t row, int column) const {
  const modPlugin::RegistryEntry& entry = editor().plugin().registry[row];
  if (column == 0) return YesNo(entry.delete_subkey);
  if (column == 1) return YesNo(entry.recurse_delete);
  if (column == 2) return YesNo(entry.both_views);
  return column == 3 ? entry.key : entry.value_name;
}

modPlugin::RegistryForm PluginRegistryPage::Form() const {
  modPlugin::RegistryForm form;
  for (int id = optClassesRoot; id <= optDynData; ++id) {
    if (IsTicked(window(), id)) form.root = static_cast<size_t>(id - optClassesRoot);
  }
  form.subkey = Text(txtRegistrySubkey);
  form.value = Text(txtRegistryValue);
  form.entire_subkey = IsTicked(window(), optEntireSubkey);
  form.all_subkeys = IsTicked(window(), chkDeleteAllSubkeys);
  form.both_views = IsTicked(window(), chkBothViews);
  return form;
}

void PluginRegistryPage::OnCommand(int id, int /*code*/) {
  if (id == cmdRegistryAdd) Add();
  if (id == cmdRegistryRemove) Remove();
  if (id == cmdGeneratesubkeys) Generate(modPlugin::Generated::kSubkeys);
  if (id == cmdGenerateValues) Generate(modPlugin::Generated::kValues);
}

void PluginRegistryPage::Add() {
  if (!editor().AddKey(Form())) return;
  ShowRows();
  SetFocus(Control(txtRegistrySubkey));
}

void PluginRegistryPage::Generate(modPlugin::Generated what) {
  const modPlugin::RegistryForm form = Form();
  if (!editor().CanGenerate(form, what)) return;
  generator_.Show(window(), [this, form, what](const modPlugin::NumberRange& range) {
    const bool added = editor().AddGenerated(form, what, range);
    if (added) ShowRows();
    return added;
  });
}

PluginIniPage::PluginIniPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, lstvINI, kIniColumns) {}

std::span<const Anchor> PluginIniPage::Init() {
  sections_.clear();
  return kIniAnchors;
}

std::string PluginIniPage::TextOf(size_t row, int column) const {
  const modPlugin::IniEntry& entry = editor().plugin().ini[row];
  switch (column) {
    case 0:
      return entry.file_name;
    case 1:
      return entry.section;
    case 2:
      return YesNo(entry.delete_section);
    case 3:
      return entry.key;
    default:
      return entry.folder;
  }
}

void PluginIniPage::OnCommand(int id, int code) {
  if (id == cmdINIBrowse) Browse();
  if (id == cmbINISections && code == CBN_SELCHANGE) ChooseSection();
  if (id == cmdINIAdd) Add();
  if (id == cmdINIRemove) Remove();
}

void PluginIniPage::Browse() {
  const std::string file = editor().AskIniFile();
  if (file.empty()) return;
  SetDlgItemTextW(window(), txtINIFileName, Wide(file).c_str());
  sections_ = editor().ReadIni(file);
  std::vector<std::string> names;
  for (const modPlugin::IniSection& section : sections_) names.push_back(section.name);
  FillCombo(Control(cmbINISections), names);
  FillCombo(Control(cmbINIValues), {});
}

void PluginIniPage::ChooseSection() {
  const LRESULT row = SendMessageW(Control(cmbINISections), CB_GETCURSEL, 0, 0);
  if (row < 0 || row >= static_cast<LRESULT>(sections_.size())) return;
  FillCombo(Control(cmbINIValues), sections_[static_cast<size_t>(row)].keys);
}

void PluginIniPage::Add() {
  const modPlugin::IniForm form{Text(txtINIFileName), Text(cmbINISections), Text(cmbINIValues),
                                IsTicked(window(), chkINIEraseSection)};
  if (editor().AddIni(form)) ShowRows();
}

PluginFurtherPage::PluginFurtherPage(modPlugin::PluginEditor& editor)
    : PluginPage(editor, lstvFurther, kFurtherColumns) {}

std::span<const Anchor> PluginFurtherPage::Init() {
  std::vector<std::string> kinds;
  for (const modPlugin::FurtherKind& kind : modPlugin::FurtherKinds()) {
    kinds.emplace_back(kind.caption);
  }
  FillCombo(Control(cmbFurtherKind), kinds);
  SendMessageW(Control(cmbFurtherKind), CB_SETCURSEL, 0, 0);
  ShowKind();
  return kFurtherAnchors;
}

std::string PluginFurtherPage::TextOf(size_t row, int column) const {
  const auto [what, place, last] = editor().Further(row);
  return column == 0 ? what : column == 1 ? place : last;
}

size_t PluginFurtherPage::Kind() const {
  const LRESULT kind = SendMessageW(Control(cmbFurtherKind), CB_GETCURSEL, 0, 0);
  return kind < 0 ? 0 : static_cast<size_t>(kind);
}

void PluginFurtherPage::ShowKind() {
  const modPlugin::FurtherKind& kind = modPlugin::FurtherKinds()[Kind()];
  SetDlgItemTextW(window(), lblFurtherPlace, Wide(kind.place).c_str());
  SetDlgItemTextW(window(), lblFurtherLast, kind.last == nullptr ? L"" : Wide(kind.last).c_str());
  if (kind.last == nullptr) SetDlgItemTextW(window(), txtFurtherLast, L"");
  EnableWindow(Control(txtFurtherLast), kind.last != nullptr);
}

void PluginFurtherPage::OnCommand(int id, int code) {
  if (id == cmbFurtherKind && code == CBN_SELCHANGE) ShowKind();
  if (id == cmdFurtherAdd) Add();
  if (id == cmdFurtherRemove) Remove();
}

void PluginFurtherPage::Add() {
  if (!editor().AddFurther({Kind(), Text(txtFurtherPlace), Text(txtFurtherLast)})) return;
  ShowRows();
  Empty({txtFurtherPlace, txtFurtherLast});
}

}  // namespace quellix
