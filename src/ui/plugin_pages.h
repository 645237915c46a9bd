#pragma once

#include <optional>
#include <span>
#include <vector>

#include "plugins/file_picker.h"
#include "plugins/plugin_editor.h"
#include "ui/frm_keygen.h"
#include "ui/layout.h"
#include "ui/list_view.h"

namespace quellix {

// One page of the editor's window: a list of records, and the controls that add to it or change it.
// A page answers the commands of its own controls and lets the others pass.
class PluginPage {
 public:
  // Its list, and the buttons that act on its selected row.
  struct Controls {
    int list, change, remove;
  };
  PluginPage(modPlugin::PluginEditor& editor, const Controls& controls,
             std::span<const Column> columns)
      : editor_(editor), controls_(controls), columns_(columns) {}
  virtual ~PluginPage() = default;
  PluginPage(const PluginPage&) = delete;
  PluginPage& operator=(const PluginPage&) = delete;

  // Fills the controls of a new window; returns their anchors.
  std::span<const Anchor> Attach(HWND window, const Locale& locale);
  void OnCommand(int id, int code);
  // Enter in a field of the page.
  virtual void OnEnter() = 0;
  // True when the notification was that of its list; `result` is then what to return.
  bool OnNotify(NMHDR& header, LRESULT& result);
  void OnContextMenu(Shell& shell, HWND control, POINT screen);
  ListView& list() { return list_; }
  void SetResolution(int dpi) { list_.SetResolution(dpi, columns_, {}); }
  void FillLastColumn(int dpi);

 protected:
  virtual std::span<const Anchor> Init() = 0;
  // A command of a control that only this page has.
  virtual void OnOwnCommand(int id, int code) = 0;
  virtual void Remove() = 0;
  // Brings a record into the fields, and what stands in them into its place; false where that is
  // refused.
  virtual void ShowForm(size_t row) = 0;
  virtual bool Change(size_t row) = 0;
  virtual int Count() const = 0;
  virtual std::string TextOf(size_t row, int column) const = 0;
  // What the record names, a path or a key.
  virtual std::string PlaceOf(size_t row) const = 0;

  HWND window() const { return window_; }
  HWND Control(int id) const { return GetDlgItem(window_, id); }
  std::string Text(int id) const;
  // Empties fields and puts the focus into the first of them.
  void Empty(std::initializer_list<int> fields) const;
  // Shows the records, the last one selected.
  void ShowRows();
  void RemoveSelected(void (modPlugin::PluginEditor::*remove)(size_t row));
  void Tick(int id, bool ticked) const {
    CheckDlgButton(window_, id, ticked ? BST_CHECKED : BST_UNCHECKED);
  }
  void SetText(int id, const std::string& text) const;
  modPlugin::PluginEditor& editor() const { return editor_; }

 private:
  // The only row that is selected.
  std::optional<size_t> OnlyRow() const;
  void FollowSelection();

  modPlugin::PluginEditor& editor_;
  Controls controls_;
  std::span<const Column> columns_;
  HWND window_ = nullptr;
  ListView list_;
};

class PluginFilesPage : public PluginPage {
 public:
  PluginFilesPage(const Machine& machine, modPlugin::PluginEditor& editor, Prompts& prompts);
  void OnEnter() override;

 protected:
  std::span<const Anchor> Init() override;
  void OnOwnCommand(int id, int code) override;
  void ShowForm(size_t row) override;
  bool Change(size_t row) override;
  void Remove() override { RemoveSelected(&modPlugin::PluginEditor::RemoveFile); }
  int Count() const override { return static_cast<int>(editor().plugin().files.size()); }
  std::string TextOf(size_t row, int column) const override;
  std::string PlaceOf(size_t row) const override { return editor().plugin().files[row].location; }

 private:
  modPlugin::FilesForm Form() const;
  void Browse();
  void Add();
  void AddChosen();
  void OpenFolder();
  void ChooseDrive();
  void ShowPicker();

  Machine machine_;
  Prompts& prompts_;
  std::optional<modPlugin::FilePicker> picker_;
};

class PluginRegistryPage : public PluginPage {
 public:
  explicit PluginRegistryPage(modPlugin::PluginEditor& editor);
  void OnEnter() override { Add(); }

 protected:
  std::span<const Anchor> Init() override;
  void OnOwnCommand(int id, int code) override;
  void ShowForm(size_t row) override;
  bool Change(size_t row) override;
  void Remove() override { RemoveSelected(&modPlugin::PluginEditor::RemoveKey); }
  int Count() const override { return static_cast<int>(editor().plugin().registry.size()); }
  std::string TextOf(size_t row, int column) const override;
  std::string PlaceOf(size_t row) const override { return editor().plugin().registry[row].key; }

 private:
  modPlugin::RegistryForm Form() const;
  void Add();
  void Generate(modPlugin::Generated what);

  FrmKeygen generator_;
};

class PluginIniPage : public PluginPage {
 public:
  explicit PluginIniPage(modPlugin::PluginEditor& editor);
  void OnEnter() override { Add(); }

 protected:
  std::span<const Anchor> Init() override;
  void OnOwnCommand(int id, int code) override;
  void ShowForm(size_t row) override;
  bool Change(size_t row) override;
  void Remove() override { RemoveSelected(&modPlugin::PluginEditor::RemoveIni); }
  int Count() const override { return static_cast<int>(editor().plugin().ini.size()); }
  std::string TextOf(size_t row, int column) const override;
  std::string PlaceOf(size_t row) const override {
    const modPlugin::IniEntry& entry = editor().plugin().ini[row];
    return entry.folder + "\\" + entry.file_name;
  }

 private:
  modPlugin::IniForm Form() const;
  void Browse();
  void ChooseSection();
  void Add();

  std::vector<modPlugin::IniSection> sections_;
};

// What stays, what must be there, what it costs, and the programs to close first.
class PluginFurtherPage : public PluginPage {
 public:
  explicit PluginFurtherPage(modPlugin::PluginEditor& editor);
  void OnEnter() override { Add(); }

 protected:
  std::span<const Anchor> Init() override;
  void OnOwnCommand(int id, int code) override;
  void ShowForm(size_t row) override;
  bool Change(size_t row) override;
  void Remove() override { RemoveSelected(&modPlugin::PluginEditor::RemoveFurther); }
  int Count() const override { return static_cast<int>(editor().further_count()); }
  std::string TextOf(size_t row, int column) const override;
  std::string PlaceOf(size_t row) const override { return TextOf(row, 1); }

 private:
  size_t Kind() const;
  modPlugin::FurtherForm Form() const;
  void ShowKind();
  void Add();
};

}  // namespace quellix
