#pragma once

#include "platform/shell.h"
#include "platform/win32/win32_anchor.h"

namespace quellix {

// The shell of the logged-on user.
class Win32Shell : public Shell {
 public:
  // The anchor holds for recycling, too; it must outlive this object.
  explicit Win32Shell(Win32Anchor& anchor) : anchor_(anchor) {}
  ~Win32Shell() override;

  void Recycle(std::string_view path) override;
  RecycleBinContent QueryRecycleBin() override;
  void EmptyRecycleBin() override;
  void ClearAddressHistory() override;
  void EmptyClipboard() override;
  // Whether this Windows keeps an address history, only clearing it tells.
  void Require(ShellFeature) override {}
  void ShowProperties(std::string_view path) override;
  void OpenFolderOf(std::string_view path) override;
  std::unique_ptr<ShortcutReader> OpenShortcuts() override;

 private:
  void StartCom();

  Win32Anchor& anchor_;
  bool com_started_ = false;
};

}  // namespace quellix
