#include "platform/preview/preview_file_system.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

[[noreturn]] void Fail(Error::Kind kind, const char* sentence, std::string_view path) {
  throw Error(kind, std::string(sentence).append(": ").append(path));
}

[[noreturn]] void FailMissing(std::string_view path) {
  Fail(Error::Kind::kMissing, "There is no such file or folder", path);
}

// Spellings of one path made one: case, doubled backslashes and those at the end.
std::string Comparable(std::string_view path) {
  std::string result = UpCase(path);
  const size_t start = result.starts_with("\\\\") ? 1 : 0;
  const auto doubled = [](char a, char b) { return a == '\\' && b == '\\'; };
  result.erase(std::unique(result.begin() + static_cast<long>(start), result.end(), doubled),
               result.end());
  if (result.ends_with('\\')) result.pop_back();
  return result;
}

FileInfo InfoOf(const std::string* bytes) {
  FileInfo info;
  info.is_folder = bytes == nullptr;
  info.attributes = info.is_folder ? kFolderAttribute : kArchive;
  info.size = bytes == nullptr ? 0 : bytes->size();
  return info;
}

// A file that is only in memory.
class MemoryFile : public RandomFile {
 public:
  explicit MemoryFile(std::shared_ptr<std::string> bytes)
      : bytes_(std::move(bytes)), size_(bytes_->size()) {}

  uint64_t Size() const override { return size_; }
  size_t Read(uint64_t offset, std::span<char> buffer) override {
    if (offset >= bytes_->size()) return 0;
    return bytes_->copy(buffer.data(), buffer.size(), offset);
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    bytes_->resize(std::max<size_t>(bytes_->size(), offset + bytes.size()));
    bytes_->replace(offset, bytes.size(), bytes);
  }
  void Resize(uint64_t size) override { bytes_->resize(size); }
  void Flush() override {}
  FileTimes Times() override { return times_; }
  uint32_t Attributes() override { return kArchive; }
  void SetTimes(const FileTimes& times) override { times_ = times; }

 private:
  std::shared_ptr<std::string> bytes_;
  uint64_t size_;
  FileTimes times_;
};

}  // namespace

PreviewFileSystem::Place PreviewFileSystem::Find(std::string_view path) const {
  if (nodes_.empty()) return {nullptr, std::string(path)};
  std::string prefix = Comparable(path);
  const auto exact = nodes_.find(prefix);
  if (exact != nodes_.end()) return {&exact->second, exact->second.real};
  for (size_t end = prefix.rfind('\\'); end != std::string::npos; end = prefix.rfind('\\')) {
    prefix.resize(end);
    if (nodes_.contains(prefix)) return {};  // below what is gone, new or a file
  }
  return {nullptr, std::string(path)};
}

void PreviewFileSystem::Put(std::string_view path, Node node) {
  const std::string key = Comparable(path);
  node.name = NamePart(WithoutBackslash(path));
  if (node.kind == Node::Kind::kGone) {
    added_.erase(key);
  } else {
    added_[key] = true;
  }
  nodes_[key] = std::move(node);
}

std::optional<FileInfo> PreviewFileSystem::Look(std::string_view path, Detail detail) {
  const Place place = Find(path);
  if (place.node != nullptr && place.node->kind == Node::Kind::kFolder) return InfoOf(nullptr);
  if (place.node != nullptr && place.node->kind == Node::Kind::kFile) {
    return InfoOf(place.node->bytes.get());
  }
  if (place.real.empty()) return std::nullopt;
  return inner_.Look(place.real, detail);
}

bool PreviewFileSystem::IsGone(std::string_view path) {
  const Place place = Find(path);
  if (place.real.empty()) return !Look(path, Detail::kKind);
  return inner_.IsGone(place.real);
}

bool PreviewFileSystem::Enumerate(std::string_view folder, Detail detail,
                                  const EntryVisitor& visit) {
  if (nodes_.empty()) return inner_.Enumerate(folder, detail, visit);
  const Place place = Find(folder);
  const std::string start = Comparable(folder) + "\\";
  const bool is_new = place.node != nullptr && place.node->kind == Node::Kind::kFolder;
  if (!is_new && (place.node != nullptr || place.real.empty())) return false;
  bool more = true;
  if (!is_new) {
    const bool listed = inner_.Enumerate(folder, detail, [&](const Entry& entry) {
      if (nodes_.contains(start + UpCase(entry.name))) return true;
      more = visit(entry);
      return more;
    });
    if (!listed) return false;
  }
  if (more) VisitAdded(start, visit);
  return true;
}

bool PreviewFileSystem::VisitAdded(const std::string& folder, const EntryVisitor& visit) {
  for (auto at = added_.lower_bound(folder); at != added_.end(); ++at) {
    if (!at->first.starts_with(folder)) break;
    if (at->first.find('\\', folder.size()) != std::string::npos) continue;
    const std::optional<FileInfo> info = Look(at->first);
    if (info && !visit({nodes_.at(at->first).name, *info})) return false;
  }
  return true;
}

FileInfo PreviewFileSystem::Need(std::string_view path, Detail detail) {
  const std::optional<FileInfo> info = Look(path, detail);
  if (!info) FailMissing(path);
  return *info;
}

void PreviewFileSystem::NeedFolderOf(std::string_view path) {
  const std::string_view folder = FolderPart(WithoutBackslash(path));
  const std::optional<FileInfo> info = Look(folder, Detail::kKind);
  if (!info || !info->is_folder) FailMissing(path);
}

void PreviewFileSystem::SetAttributes(std::string_view path, uint32_t) {
  Need(path, Detail::kKind);
  log_.push_back({ChangeKind::kSetAttributes, std::string(path), "", 0});
}

void PreviewFileSystem::Take(std::string_view path, ChangeKind kind) {
  const FileInfo info = Need(path, Detail::kSize);
  if (info.is_folder) Fail(Error::Kind::kDenied, "This is a folder, not a file", path);
  const Place place = Find(path);
  // One renamed before is told by the name it has on the disk; one made here leaves no trace.
  if (place.node == nullptr || !place.real.empty()) {
    log_.push_back({kind, place.real, "", info.size});
  } else if (const auto old = inner_.Look(path, Detail::kSize); old && !old->is_folder) {
    log_.push_back({kind, std::string(path), "", old->size});
  }
  Put(path, {});
}

void PreviewFileSystem::RemoveFile(std::string_view path) { Take(path, ChangeKind::kRemoveFile); }

void PreviewFileSystem::RemoveFolder(std::string_view path) {
  const FileInfo info = Need(path, Detail::kKind);
  if (!info.is_folder) Fail(Error::Kind::kDenied, "This is a file, not a folder", path);
  bool is_empty = true;
  const auto see = [&is_empty](const Entry&) { return is_empty = false; };
  if (!info.is_link && !Enumerate(path, Detail::kKind, see)) {
    Fail(Error::Kind::kDenied, "Access is denied", path);
  }
  if (!is_empty) Fail(Error::Kind::kNotEmpty, "The folder is not empty", path);
  const bool was_there = inner_.Look(path, Detail::kKind).has_value();
  if (was_there) {
    log_.push_back({ChangeKind::kRemoveFolder, std::string(WithoutBackslash(path)), "", 0});
  }
  Put(path, {});
}

void PreviewFileSystem::Rename(std::string_view from, std::string_view to) {
  const FileInfo info = Need(from, Detail::kKind);
  if (info.is_folder) throw NotAvailable("A preview renames no folders.");
  NeedFolderOf(to);
  const bool is_same = Comparable(from) == Comparable(to);
  if (!is_same && Look(to, Detail::kKind)) {
    Fail(Error::Kind::kOther, "There is already a file or folder of this name", to);
  }
  const Place place = Find(from);
  Node node{Node::Kind::kMoved, "", place.real, nullptr};
  if (place.real.empty()) node = *place.node;
  Put(from, {});
  Put(to, std::move(node));
}

std::unique_ptr<RandomFile> PreviewFileSystem::Open(std::string_view path, OpenMode mode) {
  const std::optional<FileInfo> info = Look(path, Detail::kKind);
  if (!info && mode != OpenMode::kReadAndCreate) FailMissing(path);
  if (info && info->is_folder) Fail(Error::Kind::kDenied, "This is a folder, not a file", path);
  if (info && info->is_link) {
    Fail(Error::Kind::kDenied, "The path leads through a link, which is not followed", path);
  }
  if (mode == OpenMode::kWrite)
    return std::make_unique<MemoryFile>(std::make_shared<std::string>());
  const Place place = Find(path);
  if (mode == OpenMode::kRead && !place.real.empty()) return inner_.Open(place.real, mode);
  if (place.node == nullptr || place.node->bytes == nullptr) {
    WriteWholeFile(path, ReadWholeFile(path).value_or(""));
  }
  return std::make_unique<MemoryFile>(Find(path).node->bytes);
}

void PreviewFileSystem::CreateFolder(std::string_view path) {
  if (const std::optional<FileInfo> info = Look(path, Detail::kKind)) {
    if (info->is_folder) return;
    Fail(Error::Kind::kOther, "There is already a file or folder of this name", path);
  }
  NeedFolderOf(path);
  log_.push_back({ChangeKind::kMakeFolder, std::string(path), "", 0});
  Put(path, {Node::Kind::kFolder, "", "", nullptr});
}

std::optional<std::string> PreviewFileSystem::ReadWholeFile(std::string_view path, uint64_t limit) {
  const Place place = Find(path);
  if (!place.real.empty()) return inner_.ReadWholeFile(place.real, limit);
  if (place.node == nullptr || place.node->kind == Node::Kind::kGone) return std::nullopt;
  if (place.node->bytes == nullptr) {
    Fail(Error::Kind::kDenied, "This is a folder, not a file", path);
  }
  if (place.node->bytes->size() > limit) {
    Fail(Error::Kind::kOther, "The file is too large", path);
  }
  return *place.node->bytes;
}

void PreviewFileSystem::WriteWholeFile(std::string_view path, std::string_view bytes) {
  if (const std::optional<FileInfo> info = Look(path, Detail::kKind)) {
    if (info->is_folder || info->is_link) {
      Fail(Error::Kind::kDenied, "This is no file that can be written", path);
    }
  } else {
    NeedFolderOf(path);
  }
  log_.push_back({ChangeKind::kWriteFile, std::string(path), "", bytes.size()});
  Put(path, {Node::Kind::kFile, "", "", std::make_shared<std::string>(bytes)});
}

}  // namespace quellix
