#include "platform/preview/preview_folder.h"

#include <algorithm>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

[[noreturn]] void Fail(Error::Kind kind, const char* sentence, std::string_view path) {
  // TRANSLATORS: What is the matter, and the path of a file or folder.
  throw Error(kind, Say("%1: %2", Say(sentence), path));
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
  if (nodes_ == nullptr) {
    const auto here = files_.nodes_.find(id_);
    if (here == files_.nodes_.end()) return nullptr;
    nodes_ = &here->second;
  }
  if (looked_ != name) looked_.clear();
  upper_ = UpCase(name);
  const auto node = nodes_->find(upper_);
  if (node == nodes_->end()) return nullptr;
  return node->second.made || HasGone(node->second, name) ? &node->second : nullptr;
}

// On a volume another file may have the same name in another case.
bool PreviewFolder::HasGone(const Node& node, std::string_view name) {
  if (!inner_ || node.gone == name) return true;
  const std::optional<FileId> there = inner_->IdOf(name);
  if (!there) return true;
  const auto is_it = [&](std::string_view gone) {
    return !gone.empty() && (gone == name || inner_->IdOf(gone) == there);
  };
  return is_it(node.gone) || std::ranges::any_of(node.also_gone, is_it);
}

bool PreviewFolder::IsChanged(std::string_view name, bool& is_there) {
  const Node* const node = Find(name);
  is_there = node != nullptr && node->made;
  return node != nullptr;
}

std::string PreviewFolder::RealName(std::string_view name) {
  const Node* const node = Find(name);
  if (node == nullptr) return std::string(name);
  return node->made ? node->made->real : std::string();
}

std::optional<FileInfo> PreviewFolder::Look(std::string_view name, Detail detail) {
  looked_.clear();
  upper_.clear();
  const Node* const node = Find(name);
  if (node == nullptr) {
    const std::optional<FileInfo> info = inner_ ? inner_->Look(name, detail) : std::nullopt;
    if (info && detail != Detail::kKind) {
      looked_ = name;
      info_looked_ = *info;
      changes_looked_ = files_.changes_;
    }
    return info;
  }
  if (!node->made) return std::nullopt;
  const bool is_moved = node->made->kind == Made::Kind::kMoved;
  return is_moved ? inner_->Look(node->made->real, detail) : InfoOf(node->made->bytes.get());
}

bool PreviewFolder::IsAsLooked(std::string_view name) const {
  return !name.empty() && looked_ == name && changes_looked_ == files_.changes_;
}

std::optional<FileId> PreviewFolder::IdOf(std::string_view name) {
  const Node* const node = Find(name);
  if (node == nullptr) return inner_ ? inner_->IdOf(name) : std::nullopt;
  if (!node->made) return std::nullopt;
  return node->made->kind == Made::Kind::kMoved ? inner_->IdOf(node->made->real)
                                                : node->made->folder;
}

// What went is mostly named as it is listed, and went in that order.
Listing PreviewFolder::LeftOf(const KnownListings::Known& known) {
  const Listing& listing = *known.listing;
  Listing left, changed;
  left.Reserve(listing);
  auto gone = known.gone.begin();
  for (size_t i = 0; i < listing.size(); ++i) {
    const Entry entry = listing[i];
    gone != known.gone.end() && *gone == entry.name ? void(++gone) : left.Add(entry);
  }
  if (gone == known.gone.end()) return left;
  for (size_t i = 0; i < left.size(); ++i) {
    if (Find(left[i].name) == nullptr) changed.Add(left[i]);
  }
  return changed;
}

bool PreviewFolder::EnumerateKnown(KnownListings::Known known, const EntryVisitor& visit) {
  if (!known.gone.empty()) {
    const Listing left = LeftOf(known);
    known = {known.detail, std::make_shared<const Listing>(left)};  // no more room than it needs
    files_.listings_.Keep(id_, known);
  }
  size_t i = 0;
  while (i < known.listing->size() && visit((*known.listing)[i])) ++i;
  return i == known.listing->size();
}

bool PreviewFolder::EnumerateReal(Detail detail, const EntryVisitor& visit) {
  KnownListings::Known known = files_.listings_.Find(id_, detail);
  if (known.listing) return EnumerateKnown(std::move(known), visit);
  const uint64_t changes = files_.changes_;
  const bool has_nodes = nodes_ != nullptr || files_.nodes_.contains(id_);
  Listing listing = std::move(files_.spare_);  // for the room it has
  listing.Clear();
  bool keeps = id_.is_known(), more = true;
  inner_->Enumerate(detail, [&](const Entry& entry) {
    if (has_nodes && Find(entry.name) != nullptr) return true;
    if (keeps) listing.Add(entry);
    more = visit(entry);
    keeps = keeps && files_.changes_ == changes && files_.listings_.Takes(listing);
    return more;
  });
  if (more && keeps) files_.listings_.Keep(id_, {detail, std::make_shared<const Listing>(listing)});
  files_.spare_ = std::move(listing);
  return more;
}

void PreviewFolder::Enumerate(Detail detail, const EntryVisitor& visit) {
  bool more = !inner_ || EnumerateReal(detail, visit);
  const auto here = files_.nodes_.find(id_);
  if (here == files_.nodes_.end()) return;
  std::vector<std::string> added;
  for (const auto& [key, node] : here->second) {
    if (node.made) added.push_back(node.made->name);
  }
  std::ranges::sort(added);
  for (size_t i = 0; i < added.size() && more; ++i) {
    if (const auto info = Look(added[i], detail)) more = visit({added[i], *info});
  }
}

std::unique_ptr<PreviewFolder> PreviewFolder::OpenOne(std::string_view name) {
  const Node* const node = Find(name);
  const std::string path = PathOf(name) + "\\";
  if (node != nullptr && !node->made) return nullptr;
  if (node != nullptr && node->made->kind == Made::Kind::kFolder) {
    return std::make_unique<PreviewFolder>(files_, nullptr, node->made->folder, path);
  }
  if (node != nullptr) Fail(Error::Kind::kOther, Mark("This is a file, not a folder"), path);
  return OpenUnchanged(name, OpenFor::kWork);
}

// As the inner file system does; null as well for one that has gone here.
std::unique_ptr<PreviewFolder> PreviewFolder::OpenUnchanged(std::string_view names, OpenFor use) {
  std::unique_ptr<Folder> inner = inner_ ? inner_->OpenFolder(names, use) : nullptr;
  const FileId id = inner ? inner->Id() : FileId{};
  if (!inner || files_.gone_folders_.contains(id)) return nullptr;
  return std::make_unique<PreviewFolder>(files_, std::move(inner), id, PathOf(names) + "\\");
}

// Step by step only where something was changed on the way, or cannot be opened.
std::unique_ptr<Folder> PreviewFolder::OpenFolder(std::string_view names, OpenFor use) {
  try {
    if (auto unchanged = OpenUnchanged(names, use)) return unchanged;
  } catch (const Error&) {  // told below, unless it went
  }
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
  if (!info) Fail(Error::Kind::kMissing, Mark("There is no such file or folder"), PathOf(name));
  return *info;
}

FileInfo PreviewFolder::NeedFile(std::string_view name) {
  const FileInfo info = Need(name, Detail::kSize);
  if (info.is_folder)
    Fail(Error::Kind::kDenied, Mark("This is a folder, not a file"), PathOf(name));
  return info;
}

void PreviewFolder::Put(std::string_view name, bool is_there, std::optional<Made> made) {
  const bool is_upper_known = IsAsLooked(name) && !upper_.empty();
  if (!is_upper_known) upper_ = UpCase(name);
  if (nodes_ == nullptr) nodes_ = &files_.nodes_[id_];
  auto found = nodes_->find(upper_);
  if (found == nodes_->end()) found = nodes_->try_emplace(files_.Hold(upper_)).first;
  Node& node = found->second;
  looked_.clear();
  ++files_.changes_;
  if (is_there) {
    if (!node.gone.empty()) node.also_gone.push_back(node.gone);
    node.gone = files_.Hold(name);
    files_.listings_.NoteGone(id_, node.gone);
  }
  node.made.reset();
  if (!made) return;
  node.made = std::make_unique<Made>(std::move(*made));
  node.made->name = name;
}

void PreviewFolder::Put(std::string_view name, std::optional<Made> made) {
  Put(name, inner_ && inner_->IdOf(name), std::move(made));
}

void PreviewFolder::RemoveFile(std::string_view name) {
  const bool is_as_looked = IsAsLooked(name);
  if (is_as_looked ? info_looked_.is_folder : Need(name, Detail::kKind).is_folder) {
    Fail(Error::Kind::kDenied, Mark("This is a folder, not a file"), PathOf(name));
  }
  if (is_as_looked) {
    inner_->RequireRemovable(name);
    return Put(name, true, std::nullopt);
  }
  RequireRemovable(name);
  Put(name, std::nullopt);
}

void PreviewFolder::RequireRemovable(std::string_view name) {
  const std::string real = RealName(name);
  if (inner_ && !real.empty()) inner_->RequireRemovable(real);
}

void PreviewFolder::Recycle(std::string_view name) {
  files_.shell_.Require(ShellFeature::kRecycleBin);
  const FileInfo info = NeedFile(name);
  RemoveFile(name);
  ++files_.recycled_.items;
  files_.recycled_.bytes += info.size;
}

void PreviewFolder::RemoveFolder(std::string_view name) {
  const FileInfo info = Need(name, Detail::kKind);
  if (!info.is_folder)
    Fail(Error::Kind::kDenied, Mark("This is a file, not a folder"), PathOf(name));
  bool is_empty = true;
  if (!info.is_link) {
    const std::unique_ptr<PreviewFolder> folder = OpenOne(name);
    if (folder) folder->Enumerate(Detail::kKind, [&](const Entry&) { return is_empty = false; });
  }
  if (!is_empty) Fail(Error::Kind::kNotEmpty, Mark("The folder is not empty"), PathOf(name));
  const auto there = inner_ ? inner_->IdOf(name) : std::nullopt;
  if (there) {
    inner_->RequireRemovable(name);
    if (!info.is_link) files_.gone_folders_.insert(*there);
  }
  Put(name, there.has_value(), std::nullopt);
}

void PreviewFolder::SetAttributes(std::string_view name, uint32_t) { Need(name, Detail::kKind); }

void PreviewFolder::Rename(std::string_view from, std::string_view to, IfThere if_there) {
  const FileInfo info = Need(from, Detail::kKind);
  if (info.is_folder) throw NotAvailable(Say("A preview renames no folders."));
  const std::optional<FileInfo> there =
      EqualsNoCase(from, to) ? std::nullopt : Look(to, Detail::kKind);
  if (there && (if_there == IfThere::kFail || there->is_folder)) {
    Fail(Error::Kind::kExists, Mark("There is already a file or folder of this name"), PathOf(to));
  }
  const Node* const node = Find(from);
  Made moved{.kind = Made::Kind::kMoved, .real = RealName(from)};
  if (node != nullptr && node->made->kind == Made::Kind::kFile) moved = *node->made;
  Put(from, std::nullopt);
  Put(to, std::move(moved));
}

std::unique_ptr<RandomFile> PreviewFolder::Open(std::string_view name, OpenMode mode) {
  const std::optional<FileInfo> info = Look(name, Detail::kKind);
  if (info && mode == OpenMode::kCreateNew) {
    Fail(Error::Kind::kExists, Mark("There is already a file or folder of this name"),
         PathOf(name));
  }
  const bool only_reads = mode == OpenMode::kRead || mode == OpenMode::kReadKept;
  if (!info && (only_reads || mode == OpenMode::kWrite)) Need(name, Detail::kKind);
  if (info && info->is_folder) {
    Fail(Error::Kind::kDenied, Mark("This is a folder, not a file"), PathOf(name));
  }
  if (info && info->is_link) {
    Fail(Error::Kind::kDenied, Mark("The path leads through a link, which is not followed"),
         PathOf(name));
  }
  const std::string real = RealName(name);
  const bool is_real = info && inner_ && !real.empty();
  if (mode == OpenMode::kWrite) {
    const uint32_t links = is_real ? inner_->Open(real, OpenMode::kRead)->LinkCount() : 1;
    return std::make_unique<OverwrittenFile>(links);
  }
  if (only_reads && is_real) return inner_->Open(real, mode);
  if (!info || is_real) Write(name, info ? Read(name, ~uint64_t{0}) : "");
  return std::make_unique<MemoryFile>(Find(name)->made->bytes);
}

void PreviewFolder::CreateFolder(std::string_view name) {
  if (const std::optional<FileInfo> info = Look(name, Detail::kKind)) {
    if (info->is_folder) return;
    Fail(Error::Kind::kExists, Mark("There is already a file or folder of this name"),
         PathOf(name));
  }
  Put(name, Made{.kind = Made::Kind::kFolder, .folder = {kMadeHere, {++files_.folders_made_, 0}}});
}

std::string PreviewFolder::Read(std::string_view name, uint64_t limit) {
  NeedFile(name);
  const Node* const node = Find(name);
  if (node != nullptr && node->made->bytes) {
    if (node->made->bytes->size() > limit)
      Fail(Error::Kind::kOther, Mark("The file is too large"), PathOf(name));
    return *node->made->bytes;
  }
  const std::unique_ptr<RandomFile> file = inner_->Open(RealName(name), OpenMode::kRead);
  if (file->Size() > limit) Fail(Error::Kind::kOther, Mark("The file is too large"), PathOf(name));
  std::string bytes(file->Size(), '\0');
  bytes.resize(file->Read(0, bytes));
  return bytes;
}

void PreviewFolder::Write(std::string_view name, std::string_view bytes) {
  const std::optional<FileInfo> info = Look(name, Detail::kKind);
  if (info && (info->is_folder || info->is_link)) {
    Fail(Error::Kind::kDenied, Mark("This is no file that can be written"), PathOf(name));
  }
  Put(name, Made{.kind = Made::Kind::kFile, .bytes = std::make_shared<std::string>(bytes)});
}

}  // namespace quellix
