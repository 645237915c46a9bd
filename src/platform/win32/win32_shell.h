#pragma once

#include "platform/shell.h"
#include "platform/win32/win32_com.h"

namespace quellix {

// The shell of the logged-on user.
class Win32Shell : public Shell {
 public:
  // COM must outlive this object.
  explicit Win32Shell(Win32Com& com) : com_(com) {}

  RecycleBinContent QueryRecycleBin() override;
  void EmptyRecycleBin() override;
  std::vector<std::string> RecycleBins() override;
  void ClearAddressHistory() override;
  void EmptyClipboard() override;
  // Whether this Windows keeps an address history, only clearing it tells.
  void Require(ShellFeature) override {}
  void ShowProperties(std::string_view path) override;
  void OpenFolderOf(std::string_view path) override;
  bool StartProgram(std::string_view path, std::string_view arguments) override;
  std::unique_ptr<ShortcutReader> OpenShortcuts() override;

 private:
  Win32Com& com_;
};

}  // namespace quellix
