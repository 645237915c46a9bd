#pragma once

#include <functional>

#include "platform/error.h"
#include "platform/shell.h"

namespace quellix {

// A real machine's shell, which notes what it was to start.
struct NotingShell : Shell {
  explicit NotingShell(Shell& shell) : shell_(shell) {}

  RecycleBinContent QueryRecycleBin() override { return shell_.QueryRecycleBin(); }
  void EmptyRecycleBin() override { shell_.EmptyRecycleBin(); }
  std::vector<std::string> RecycleBins() override { return shell_.RecycleBins(); }
  void ClearAddressHistory() override { shell_.ClearAddressHistory(); }
  void EmptyClipboard() override { shell_.EmptyClipboard(); }
  void Require(ShellFeature feature) override { shell_.Require(feature); }
  void ShowProperties(std::string_view path) override { shell_.ShowProperties(path); }
  void OpenFolderOf(std::string_view path) override { shell_.OpenFolderOf(path); }
  std::unique_ptr<ShortcutReader> OpenShortcuts() override { return shell_.OpenShortcuts(); }
  bool StartProgram(std::string_view path, std::string_view) override {
    started = path;
    if (on_start) on_start(started);
    if (refuses) throw Error(Error::Kind::kDenied, "no");
    return agrees;
  }

  std::string started;
  std::function<void(const std::string& path)> on_start;
  bool refuses = false;
  bool agrees = true;  // to the rights that it wants

 private:
  Shell& shell_;
};

}  // namespace quellix
