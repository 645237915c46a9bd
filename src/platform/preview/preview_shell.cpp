#include "platform/preview/preview_shell.h"

#include <utility>

#include "platform/error.h"

namespace quellix {

RecycleBinContent PreviewShell::QueryRecycleBin() {
  const RecycleBinContent there = is_emptied_ ? RecycleBinContent() : inner_.QueryRecycleBin();
  const RecycleBinContent& recycled = files_.recycled();
  return {there.items + recycled.items, there.bytes + recycled.bytes};
}

void PreviewShell::EmptyRecycleBin() {
  const RecycleBinContent content = QueryRecycleBin();
  is_emptied_ = true;
  files_.ForgetRecycled();
  if (content.items == 0) return;
  const std::string items =
      std::to_string(content.items) + (content.items == 1 ? " item" : " items");
  log_.push_back({ChangeKind::kEmptyRecycleBin, "", items, content.bytes});
}

void PreviewShell::ClearAddressHistory() {
  inner_.Require(ShellFeature::kAddressHistory);
  log_.push_back({ChangeKind::kClearAddressHistory, "", "", 0});
}

void PreviewShell::EmptyClipboard() {
  inner_.Require(ShellFeature::kClipboard);
  log_.push_back({ChangeKind::kEmptyClipboard, "", "", 0});
}

std::unique_ptr<ShortcutReader> PreviewShell::OpenShortcuts() { return inner_.OpenShortcuts(); }

void PreviewUrlCache::Enumerate(const UrlCacheVisitor& visit) {
  inner_.Enumerate([&](const UrlCacheEntry& entry) {
    local_files_[entry.source] = entry.local_file;
    return gone_.contains(entry.source) || visit(entry);
  });
}

bool PreviewUrlCache::Delete(std::string_view source) {
  const std::string name(source);
  if (local_files_.empty()) Entries();
  if (!local_files_.contains(name) || !gone_.insert(name).second) return false;
  const std::string& file = local_files_[name];
  const std::optional<FileInfo> info = file.empty() ? std::nullopt : files_.Look(file);
  log_.push_back({ChangeKind::kDeleteCacheEntry, name, "", info ? info->size : 0});
  if (info) files_.Forget(file);
  return true;
}

}  // namespace quellix
