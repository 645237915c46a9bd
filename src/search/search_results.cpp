#include "search/search_results.h"

#include <algorithm>
#include <numeric>

#include "platform/locale.h"
#include "platform/text.h"
#include "platform/words.h"
#include "run/removal.h"
#include "run/run_log.h"
#include "search/search_options.h"

namespace quellix {
namespace {

size_t PlaceOf(JunkKind kind) { return static_cast<size_t>(kind) - 1; }

constexpr const char* kLogCaptions[] = {
    Mark("Unnecessary files...."), Mark("Empty (zero-byte) files...."),
    Mark("Dead (shortcut) links...."), Mark("Empty folders....")};

}  // namespace

void SearchResults::Add(ResultRow row) {
  // Finds come folder by folder.
  if (folders_.empty() || folders_[folders_.size() - 1] != row.path) folders_.Append(row.path);
  names_.Append(row.name);
  finds_.push_back({.bytes = row.bytes,
                    .last_write = row.last_write,
                    .folder = static_cast<uint32_t>(folders_.size() - 1),
                    .attributes = row.attribute_bits,
                    .kind = row.kind,
                    .ticked = false});
  ++left_;
  folder_finds_ += row.kind == JunkKind::kEmptyFolders ? 1 : 0;
}

bool SearchResults::TakeNew() {
  const size_t shown = view_.size();
  for (; taken_ < finds_.size(); ++taken_) {
    if (PassesFilter(static_cast<Index>(taken_))) view_.push_back(static_cast<Index>(taken_));
  }
  if (view_.size() == shown) return false;
  if (order_) SortView(shown);
  return true;
}

void SearchResults::EndSearch() {
  searching_ = false;
  TakeNew();
}

void SearchResults::Abort() {
  if (searching_ || deleting_) context_.state.AbortRequested = true;
}

std::string_view SearchResults::Extension(Index find) const {
  const std::string_view name = names_[find];
  const size_t dot = name.rfind('.');
  return dot == name.npos ? std::string_view() : name.substr(dot + 1);
}

std::string SearchResults::Text(size_t row, ResultColumn column) const {
  const Index index = view_[row];
  const Find& find = finds_[index];
  switch (column) {
    case ResultColumn::kName:
      return std::string(names_[index]);
    case ResultColumn::kBytes:
      return std::to_string(find.bytes);
    case ResultColumn::kDateTime:
      return FormatFileTime(context_.machine.system, find.last_write);
    case ResultColumn::kAttribute:
      return AttributeLetters(find.attributes);
    case ResultColumn::kPath:
      return std::string(Folder(index));
    case ResultColumn::kFileType:
      return UpCase(Extension(index));
    case ResultColumn::kCategory:
      break;
  }
  return Tr(CategoryText(find.kind));
}

std::string SearchResults::PathOf(size_t row) const {
  return std::string(Folder(view_[row])).append(names_[view_[row]]);
}

void SearchResults::SetTicked(size_t row, bool ticked) { finds_[view_[row]].ticked = ticked; }

void SearchResults::TickAll(bool ticked) {
  for (const Index find : view_) finds_[find].ticked = ticked;
}

std::string SearchResults::FailureReason(size_t row) const {
  const auto failure = failures_.find(view_[row]);
  return failure == failures_.end() ? std::string() : failure->second;
}

int SearchResults::Compare(Index a, Index b) const {
  const Find &x = finds_[a], &y = finds_[b];
  switch (order_->column) {
    case ResultColumn::kName:
      return CompareNoCase(names_[a], names_[b]);
    case ResultColumn::kBytes:
      return CompareNumbers(x.bytes, y.bytes);
    case ResultColumn::kDateTime:
      return CompareNumbers(x.last_write, y.last_write);
    case ResultColumn::kAttribute:
      return AttributeLetters(x.attributes).compare(AttributeLetters(y.attributes));
    case ResultColumn::kPath:
      return CompareNumbers(folder_ranks_[x.folder], folder_ranks_[y.folder]);
    case ResultColumn::kFileType:
      return CompareNoCase(Extension(a), Extension(b));
    case ResultColumn::kCategory:
      break;
  }
  return CategoryText(x.kind).compare(CategoryText(y.kind));
}

void SearchResults::Sort(ResultColumn column) {
  TurnOrder(order_, column);
  SortView(0);
}

void SearchResults::SortView(size_t sorted) {
  RankFolders();
  SortRows(view_, sorted, order_->descending, [this](Index a, Index b) { return Compare(a, b); });
}

// Many finds share a folder, so paths are compared once for each folder.
void SearchResults::RankFolders() {
  if (order_->column != ResultColumn::kPath || folder_ranks_.size() == folders_.size()) return;
  std::vector<uint32_t> folders(folders_.size());
  std::iota(folders.begin(), folders.end(), 0);
  std::ranges::sort(folders, [this](uint32_t a, uint32_t b) {
    return CompareNoCase(folders_[a], folders_[b]) < 0;
  });
  folder_ranks_.resize(folders.size());
  uint32_t rank = 0;
  for (size_t i = 0; i < folders.size(); ++i) {
    if (i > 0 && CompareNoCase(folders_[folders[i - 1]], folders_[folders[i]]) != 0) ++rank;
    folder_ranks_[folders[i]] = rank;
  }
}

bool SearchResults::PassesFilter(Index find) {
  if (filter_.empty()) return true;
  upper_path_.assign(Folder(find)).append(names_[find]);
  return UpCase(upper_path_).find(filter_) != std::string::npos;
}

// The order is that of the finds unless a column sorts: rows that were hidden come back to where
// they would be.
void SearchResults::SetFilter(std::string_view text) {
  filter_ = UpCase(text);
  view_.clear();
  for (Index find = 0; find < taken_; ++find) {
    const bool is_gone = find < gone_.size() && gone_[find];
    if (!is_gone && PassesFilter(find)) view_.push_back(find);
  }
  if (order_) SortView(0);
}

std::vector<SearchResults::Index> SearchResults::Ticked() const {
  std::vector<Index> finds;
  std::ranges::copy_if(view_, std::back_inserter(finds),
                       [this](Index find) { return finds_[find].ticked; });
  return finds;
}

std::vector<SearchResults::Index> SearchResults::FindsOf(const std::vector<size_t>& rows) const {
  std::vector<Index> finds;
  for (const size_t row : rows) finds.push_back(view_[row]);
  return finds;
}

std::string SearchResults::QuestionForTicked() const { return QuestionFor(Ticked()); }
std::string SearchResults::QuestionForAll() const { return QuestionFor(view_); }
std::string SearchResults::QuestionForRows(const std::vector<size_t>& rows) const {
  return QuestionFor(FindsOf(rows));
}

std::string SearchResults::QuestionFor(const std::vector<Index>& finds) const {
  if (finds.empty() || !context_.settings.Load().ask) return {};
  const Locale& locale = context_.machine.system.UserLocale();
  const size_t number = finds.size();
  const std::string count = FormatCount(number, locale);
  if (HasFoldersAlone())
    return TrN("Delete %1 empty folder?", "Delete %1 empty folders?", number, count);
  const std::string size = FormatSize(BytesOf(finds), 2, true, locale);
  switch (context_.state.RemovalMode) {
    case kRecycle:
      return TrN("Recycle %1 file (%2)?", "Recycle %1 files (%2)?", number, count, size);
    case kWipe:
      return TrN("Wipe %1 file (%2) for good?", "Wipe %1 files (%2) for good?", number, count,
                 size);
    case kBackUp:
      return TrN("Remove %1 file (%2) after a backup?", "Remove %1 files (%2) after a backup?",
                 number, count, size);
    default:
      return TrN("Delete %1 file (%2) for good?", "Delete %1 files (%2) for good?", number, count,
                 size);
  }
}

void SearchResults::DeleteTicked() { Delete(Ticked()); }

void SearchResults::DeleteRows(const std::vector<size_t>& rows) {
  if (searching_ || deleting_) return;
  for (const size_t row : rows) SetTicked(row, true);
  Delete(FindsOf(rows));
}

void SearchResults::DeleteAll() {
  if (searching_ || deleting_) return;
  TickAll(true);
  DeleteTicked();
}

void SearchResults::Delete(const std::vector<Index>& finds) {
  if (searching_ || deleting_) return;
  deleting_ = true;
  context_.state.AbortRequested = false;
  some_failed_ = false;
  gone_.resize(finds_.size());
  DeleteEach(DeepestFirst(finds));
  std::erase_if(view_, [this](Index find) { return gone_[find]; });
  left_ = finds_.size() - static_cast<size_t>(std::ranges::count(gone_, true));
  // The stop was meant for the deletion alone.
  context_.state.AbortRequested = false;
  context_.view.SetStatus("");
  has_deleted_ = true;
  deleting_ = false;
}

// A folder is empty when those in it have gone.
std::vector<SearchResults::Index> SearchResults::DeepestFirst(std::vector<Index> finds) const {
  if (folder_finds_ == 0) return finds;
  std::ranges::stable_sort(finds, [this](Index a, Index b) { return DepthOf(b) < DepthOf(a); });
  return finds;
}

size_t SearchResults::DepthOf(Index find) const {
  if (finds_[find].kind != JunkKind::kEmptyFolders) return 0;
  return static_cast<size_t>(std::ranges::count(Folder(find), '\\'));
}

double SearchResults::BytesOf(const std::vector<Index>& finds) const {
  double bytes = 0;
  for (const Index find : finds) bytes += static_cast<double>(finds_[find].bytes);
  return bytes;
}

void SearchResults::DeleteEach(const std::vector<Index>& finds) {
  RunState& state = context_.state;
  const bool by_bytes = state.RemovalMode == kWipe || state.RemovalMode == kBackUp;
  const double before = state.RunSpaceGained;
  state.Files = {.total = finds.size(), .all_bytes = by_bytes ? BytesOf(finds) : 0};
  uint64_t gone = 0;
  stopped_.clear();
  for (const Index find : finds) {
    context_.view.ShowFiles(state.Files);
    if (StopsRun(context_)) break;
    if (finds_[find].ticked) gone_[find] = DeleteOne(find);
    gone += gone_[find] ? 1 : 0;
    ++state.Files.done;
    state.Files.bytes = state.RunSpaceGained - before;
  }
  if (state.AbortRequested) {
    const Locale& locale = context_.machine.system.UserLocale();
    // TRANSLATORS: "Stopped: 120 of 30,000 deleted, 3.4 MB."
    stopped_ = Tr("Stopped: %1 of %2 deleted, %3.", FormatCount(gone, locale),
                  FormatCount(finds.size(), locale),
                  FormatSize(state.RunSpaceGained - before, 1, true, locale));
  }
  state.Files = {};
  context_.view.ShowFiles({});
}

// True when the file is gone; a failure is noted.
bool SearchResults::DeleteOne(Index index) {
  Find& find = finds_[index];
  const std::string path = std::string(Folder(index)).append(names_[index]);
  const bool is_folder = find.kind == JunkKind::kEmptyFolders;
  context_.view.SetStatus(is_folder ? Tr("Deleting folder: %1", path)
                                    : Tr("Deleting file: %1", path));
  const Removal removal = RemoveFind(context_, path, find.kind);
  if (removal.outcome == Removal::kStays) {
    if (context_.state.AbortRequested) return false;  // stopped within a file: nothing failed
    find.ticked = false;
    failures_[index] = removal.reason.shown;
    some_failed_ = true;
    return false;
  }
  failures_.erase(index);
  if (removal.outcome == Removal::kVanished) return true;
  Total& total = totals_[PlaceOf(find.kind)];
  ++total.files;
  total.bytes += static_cast<double>(removal.bytes);
  return true;
}

std::string SearchResults::CountLine() const {
  const std::string left = std::to_string(left_);
  if (HasFoldersAlone())
    return has_deleted_ ? Tr("Folders Found: %1", left) : Tr("Total Folders: %1", left);
  return has_deleted_ ? Tr("Files Found: %1", left) : Tr("Total Files: %1", left);
}

std::string SearchResults::WhyEmpty() const {
  if (searching_) return Tr("Searching...");
  if (left_ > 0) return Tr("No file has this in its path. Empty the filter to see them all.");
  if (has_deleted_) return Tr("Nothing is left of what was found.");
  return Tr(
      "Nothing was found. What is searched for, and on which drives, stands on the pages Search "
      "and Unnecessary files of the options.");
}

std::string SearchResults::LogLines() const {
  std::string lines;
  constexpr size_t kFolders = std::size(kLogCaptions) - 1;
  for (size_t i = 0; i < kFolders; ++i) {
    lines += FilesText(kLogCaptions[i], totals_[i].files, totals_[i].bytes,
                       context_.machine.system.UserLocale()) +
             "\r\n";
  }
  if (folder_finds_ > 0)
    // TRANSLATORS: %1 is "Empty folders....".
    lines += Log("%1Folders Deleted: %2", Log(kLogCaptions[kFolders]),
                 std::to_string(totals_[kFolders].files)) +
             "\r\n";
  return lines;
}

size_t SearchResults::MemoryHeld() const {
  return folders_.MemoryHeld() + names_.MemoryHeld() + finds_.capacity() * sizeof(Find) +
         (view_.capacity() + folder_ranks_.capacity()) * sizeof(Index);
}

}  // namespace quellix
