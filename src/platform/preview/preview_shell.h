#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "platform/preview/preview_file_system.h"
#include "platform/shell.h"
#include "platform/url_cache.h"

namespace quellix {

// The shell of another machine, every change remembered instead of made.
class PreviewShell : public Shell {
 public:
  PreviewShell(Shell& inner, PreviewFileSystem& files) : inner_(inner), files_(files) {}

  RecycleBinContent QueryRecycleBin() override;
  void EmptyRecycleBin() override;
  std::vector<std::string> RecycleBins() override { return inner_.RecycleBins(); }
  void ClearAddressHistory() override;
  void EmptyClipboard() override;
  void Require(ShellFeature feature) override { inner_.Require(feature); }
  void ShowProperties(std::string_view path) override { inner_.ShowProperties(path); }
  void OpenFolderOf(std::string_view path) override { inner_.OpenFolderOf(path); }
  bool StartProgram(std::string_view path, std::string_view arguments) override;
  std::unique_ptr<ShortcutReader> OpenShortcuts() override;

 private:
  Shell& inner_;
  PreviewFileSystem& files_;
  bool is_emptied_ = false;
};

// The browser cache of another machine, likewise.
class PreviewUrlCache : public UrlCache {
 public:
  PreviewUrlCache(UrlCache& inner, PreviewFileSystem& files) : inner_(inner), files_(files) {}

  void Enumerate(const UrlCacheVisitor& visit) override;
  bool Delete(std::string_view source) override;

 private:
  UrlCache& inner_;
  PreviewFileSystem& files_;
  std::unordered_map<std::string, std::string> local_files_;  // by source, as listed last
  std::unordered_set<std::string> gone_;
};

}  // namespace quellix
