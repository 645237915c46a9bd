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
  is_emptied_ = true;
  files_.ForgetRecycled();
}

void PreviewShell::ClearAddressHistory() { inner_.Require(ShellFeature::kAddressHistory); }

void PreviewShell::EmptyClipboard() { inner_.Require(ShellFeature::kClipboard); }

bool PreviewShell::StartProgram(std::string_view, std::string_view) {
  throw NotAvailable(Say("What a program does cannot be previewed."));
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
  if (!file.empty() && files_.Look(file)) files_.RemoveFile(file);
  return true;
}

}  // namespace quellix
