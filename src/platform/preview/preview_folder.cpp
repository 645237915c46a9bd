#include "platform/preview/preview_folder.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

[[noreturn]] void Fail(Error::Kind kind, const char* sentence, std::string_view path) {
  throw Error(kind, std::string(sentence).append(": ").append(path));
}

// No real volume has this number.
constexpr uint64_t kMadeHere = ~uint64_t{0};

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

// A real file that is to be overwritten: as many names, and nothing that would take time to write.
class OverwrittenFile : public MemoryFile {
 public:
  explicit OverwrittenFile(uint32_t links)
      : MemoryFile(std::make_shared<std::string>()), links_(links) {}
  uint32_t LinkCount() override { return links_; }

 private:
  uint32_t links_;
};

}  // namespace

std::vector<FileId> PreviewFolder::Above() {
  if (inner_) return inner_->Above();
  const std::unique_ptr<Folder> parent = OpenFolderOf(files_, path_);
  std::vector<FileId> above = parent->Above();
  above.insert(above.begin(), parent->Id());
  return above;
}

DiskRoom PreviewFolder::Room() {
  return inner_ ? inner_->Room() : OpenFolderOf(files_, path_)->Room();
}

PreviewFolder::Node* PreviewFolder::Find(std::string_view name) {
  const auto here = files_.nodes_.find(id_);
  if (here == files_.nodes_.end()) return nullptr;
  const auto node = here->second.find(UpCase(name));
  if (node == here->second.end()) return nullptr;
  if (node->second.kind != Node::Kind::kGone || !inner_) return &node->second;
  // On a volume another file may have the same name in another case.
  const std::optional<FileId> there = inner_->IdOf(name);
  const bool is_other =
      there && std::ranges::find(node->second.gone, *there) == node->second.gone.end();
  return is_other ? nullptr : &node->second;
}

bool PreviewFolder::IsChanged(std::string_view name, bool& is_there) {
  const Node* const node = Find(name);
  is_there = node != nullptr && node->kind != Node::Kind::kGone;
  return node != nullptr;
}

std::string PreviewFolder::RealName(std::string_view name) {
  const Node* const node = Find(name);
  return node == nullptr ? std::string(name) : node->real;
}

std::optional<FileInfo> PreviewFolder::Look(std::string_view name, Detail detail) {
  const Node* const node = Find(name);
  if (node == nullptr) return inner_ ? inner_->Look(name, detail) : std::nullopt;
  switch (node->kind) {
    case Node::Kind::kGone:
      return std::nullopt;
    case Node::Kind::kMoved:
      return inner_->Look(node->real, detail);
    default:
      return InfoOf(node->bytes.get());
  }
}

std::optional<FileId> PreviewFolder::IdOf(std::string_view name) {
  const Node* const node = Find(name);
  if (node != nullptr && node->kind == Node::Kind::kFolder) return node->folder;
  const std::string real = RealName(name);
  if (node != nullptr && node->kind == Node::Kind::kFile) return FileId{};
  return inner_ && !real.empty() ? inner_->IdOf(real) : std::nullopt;
}

void PreviewFolder::Enumerate(Detail detail, const EntryVisitor& visit) {
  const auto here = files_.nodes_.find(id_);
  if (here == files_.nodes_.end()) {
    if (inner_) inner_->Enumerate(detail, visit);
    return;
  }
  bool more = true;
  if (inner_) {
    inner_->Enumerate(detail, [&](const Entry& entry) {
      if (Find(entry.name) != nullptr) return true;
      return more = visit(entry);
    });
  }
  std::vector<std::string> added;
  for (const auto& [key, node] : here->second) {
    if (node.kind != Node::Kind::kGone) added.push_back(node.name);
  }
  std::ranges::sort(added);
  for (size_t i = 0; i < added.size() && more; ++i) {
    if (const auto info = Look(added[i], detail)) more = visit({added[i], *info});
  }
}

std::unique_ptr<PreviewFolder> PreviewFolder::OpenOne(std::string_view name) {
  const Node* const node = Find(name);
  const std::string path = PathOf(name) + "\\";
  if (node != nullptr && node->kind == Node::Kind::kFolder) {
    return std::make_unique<PreviewFolder>(files_, nullptr, node->folder, path);
  }
  if (node != nullptr && node->kind == Node::Kind::kGone) return nullptr;
  if (node != nullptr) Fail(Error::Kind::kOther, "This is a file, not a folder", path);
  std::unique_ptr<Folder> inner = inner_ ? inner_->OpenFolder(name) : nullptr;
  if (!inner) return nullptr;
  const FileId id = inner->Id();
  return std::make_unique<PreviewFolder>(files_, std::move(inner), id, path);
}

std::unique_ptr<Folder> PreviewFolder::OpenFolder(std::string_view names, OpenFor) {
  std::unique_ptr<PreviewFolder> folder;
  PreviewFolder* from = this;
  for (const std::string& name : Split(names, '\\')) {
    std::unique_ptr<PreviewFolder> next = from->OpenOne(name);
    if (!next) return nullptr;
    folder = std::move(next);
    from = folder.get();
  }
  return folder;
}

FileInfo PreviewFolder::Need(std::string_view name, Detail detail) {
  const std::optional<FileInfo> info = Look(name, detail);
  if (!info) Fail(Error::Kind::kMissing, "There is no such file or folder", PathOf(name));
  return *info;
}

FileInfo PreviewFolder::NeedFile(std::string_view name) {
  const FileInfo info = Need(name, Detail::kSize);
  if (info.is_folder) Fail(Error::Kind::kDenied, "This is a folder, not a file", PathOf(name));
  return info;
}

PreviewFolder::Node& PreviewFolder::Put(std::string_view name, Node node) {
  Node& slot = files_.nodes_[id_][UpCase(name)];
  std::vector<FileId> gone = std::move(slot.gone);
  if (const auto there = inner_ ? inner_->IdOf(name) : std::nullopt) gone.push_back(*there);
  slot = std::move(node);
  slot.name = name;
  slot.gone = std::move(gone);
  return slot;
}

void PreviewFolder::Record(ChangeKind kind, std::string_view name, uint64_t bytes) {
  files_.log_.push_back({kind, PathOf(name), "", bytes});
}

void PreviewFolder::Take(std::string_view name, std::optional<ChangeKind> kind) {
  const FileInfo info = NeedFile(name);
  const std::string real = RealName(name);
  if (inner_ && !real.empty()) inner_->RequireRemovable(real);
  // One renamed before is told by the name it has on the disk; one made here leaves no trace.
  if (!real.empty()) {
    if (kind) Record(*kind, real, info.size);
  } else if (const auto old = inner_ ? inner_->Look(name, Detail::kSize) : std::nullopt;
             old && !old->is_folder && kind) {
    Record(*kind, name, old->size);
  }
  Put(name, {});
}

void PreviewFolder::RequireRemovable(std::string_view name) {
  const std::string real = RealName(name);
  if (inner_ && !real.empty()) inner_->RequireRemovable(real);
}

void PreviewFolder::Recycle(std::string_view name) {
  files_.shell_.Require(ShellFeature::kRecycleBin);
  const FileInfo info = NeedFile(name);
  Take(name, ChangeKind::kRecycleFile);
  ++files_.recycled_.items;
  files_.recycled_.bytes += info.size;
}

void PreviewFolder::RemoveFolder(std::string_view name) {
  const FileInfo info = Need(name, Detail::kKind);
  if (!info.is_folder) Fail(Error::Kind::kDenied, "This is a file, not a folder", PathOf(name));
  bool is_empty = true;
  if (!info.is_link) {
    const std::unique_ptr<PreviewFolder> folder = OpenOne(name);
    if (folder) folder->Enumerate(Detail::kKind, [&](const Entry&) { return is_empty = false; });
  }
  if (!is_empty) Fail(Error::Kind::kNotEmpty, "The folder is not empty", PathOf(name));
  if (const auto there = inner_ ? inner_->IdOf(name) : std::nullopt) {
    inner_->RequireRemovable(name);
    Record(ChangeKind::kRemoveFolder, name);
    if (!info.is_link) files_.gone_folders_.insert(*there);
  }
  Put(name, {});
}

void PreviewFolder::SetAttributes(std::string_view name, uint32_t) {
  Need(name, Detail::kKind);
  Record(ChangeKind::kSetAttributes, name);
}

void PreviewFolder::Rename(std::string_view from, std::string_view to, IfThere if_there) {
  const FileInfo info = Need(from, Detail::kKind);
  if (info.is_folder) throw NotAvailable("A preview renames no folders.");
  const std::optional<FileInfo> there =
      EqualsNoCase(from, to) ? std::nullopt : Look(to, Detail::kKind);
  if (there && (if_there == IfThere::kFail || there->is_folder)) {
    Fail(Error::Kind::kExists, "There is already a file or folder of this name", PathOf(to));
  }
  const Node* const node = Find(from);
  Node moved{.kind = Node::Kind::kMoved, .real = RealName(from)};
  if (node != nullptr && node->kind == Node::Kind::kFile) moved = *node;
  if (there) Record(ChangeKind::kWriteFile, to);
  Put(from, {});
  Put(to, std::move(moved));
}

std::unique_ptr<RandomFile> PreviewFolder::Open(std::string_view name, OpenMode mode) {
  const std::optional<FileInfo> info = Look(name, Detail::kKind);
  if (info && mode == OpenMode::kCreateNew) {
    Fail(Error::Kind::kExists, "There is already a file or folder of this name", PathOf(name));
  }
  if (!info && (mode == OpenMode::kRead || mode == OpenMode::kWrite)) Need(name, Detail::kKind);
  if (info && info->is_folder) {
    Fail(Error::Kind::kDenied, "This is a folder, not a file", PathOf(name));
  }
  if (info && info->is_link) {
    Fail(Error::Kind::kDenied, "The path leads through a link, which is not followed",
         PathOf(name));
  }
  const std::string real = RealName(name);
  const bool is_real = info && inner_ && !real.empty();
  if (mode == OpenMode::kWrite) {
    const uint32_t links = is_real ? inner_->Open(real, OpenMode::kRead)->LinkCount() : 1;
    return std::make_unique<OverwrittenFile>(links);
  }
  if (mode == OpenMode::kRead && is_real) return inner_->Open(real, mode);
  if (!info || is_real) Write(name, info ? Read(name, ~uint64_t{0}) : "");
  return std::make_unique<MemoryFile>(Find(name)->bytes);
}

void PreviewFolder::CreateFolder(std::string_view name) {
  if (const std::optional<FileInfo> info = Look(name, Detail::kKind)) {
    if (info->is_folder) return;
    Fail(Error::Kind::kExists, "There is already a file or folder of this name", PathOf(name));
  }
  Record(ChangeKind::kMakeFolder, name);
  Put(name, {.kind = Node::Kind::kFolder}).folder = {kMadeHere, {++files_.folders_made_, 0}};
}

std::string PreviewFolder::Read(std::string_view name, uint64_t limit) {
  NeedFile(name);
  const Node* const node = Find(name);
  if (node != nullptr && node->bytes) {
    if (node->bytes->size() > limit)
      Fail(Error::Kind::kOther, "The file is too large", PathOf(name));
    return *node->bytes;
  }
  const std::unique_ptr<RandomFile> file = inner_->Open(RealName(name), OpenMode::kRead);
  if (file->Size() > limit) Fail(Error::Kind::kOther, "The file is too large", PathOf(name));
  std::string bytes(file->Size(), '\0');
  bytes.resize(file->Read(0, bytes));
  return bytes;
}

void PreviewFolder::Write(std::string_view name, std::string_view bytes) {
  const std::optional<FileInfo> info = Look(name, Detail::kKind);
  if (info && (info->is_folder || info->is_link)) {
    Fail(Error::Kind::kDenied, "This is no file that can be written", PathOf(name));
  }
  Record(ChangeKind::kWriteFile, name, bytes.size());
  Put(name, {.kind = Node::Kind::kFile, .bytes = std::make_shared<std::string>(bytes)});
}

}  // namespace quellix
