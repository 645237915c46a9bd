#include "search/drive_scan.h"

#include <string>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

// The sub-folders of one folder, told apart by their ends in one text.
class SubFolders {
 public:
  struct Place {
    size_t end;
    bool is_link;
  };

  void Add(const Entry& entry) {
    names_ += entry.name;
    places_.push_back({names_.size(), entry.info.is_link});
  }
  size_t size() const { return places_.size(); }
  bool IsLink(size_t i) const { return places_[i].is_link; }
  std::string_view Name(size_t i) const {
    const size_t start = i == 0 ? 0 : places_[i - 1].end;
    return std::string_view(names_).substr(start, places_[i].end - start);
  }

 private:
  std::string names_;
  std::vector<Place> places_;
};

class Scan {
 public:
  // Without rules every file is collected.
  Scan(CleaningContext& context, std::string_view folder, std::string_view mask,
       const ScanRules* rules)
      : context_(context),
        folder_(folder),
        mask_(mask),
        every_name_(mask == "*.*"),
        rules_(rules),
        detail_(rules != nullptr && rules->test != nullptr ? rules->test->Needs() : Detail::kKind) {
  }

  // Scans folder_, which is the same again afterwards.
  void ScanHere() {
    if (Stopped()) return;
    const SubFolders folders = CollectHere();
    const size_t length = folder_.size();
    for (size_t i = 0; i < folders.size() && !Stopped(); ++i) {
      folder_.append(folders.Name(i)) += '\\';
      if (rules_ == nullptr) context_.state.PendingFolders.Append(folder_);
      if (!folders.IsLink(i) && !IsIgnoredHere()) {
        context_.view.SetStatus(status_.assign("Scanning system... ").append(folder_));
        ScanHere();
      }
      folder_.resize(length);
    }
  }

 private:
  // One enumeration serves files and sub-folders.
  SubFolders CollectHere() {
    SubFolders folders;
    context_.machine.files.Enumerate(folder_, detail_, [&](const Entry& entry) {
      if (entry.info.is_folder) {
        folders.Add(entry);
      } else if (every_name_ || MatchesMask(entry.name, mask_)) {
        Take(entry);
      }
      context_.view.Yield();
      return !context_.state.AbortRequested;
    });
    return folders;
  }

  void Take(const Entry& entry) {
    if (rules_ != nullptr) {
      upper_name_ = UpCase(entry.name);
      if (rules_->ignore.Ignores(upper_name_)) return;
      if (rules_->test != nullptr) return rules_->test->Test(folder_, entry, upper_name_);
    }
    context_.state.PendingFiles.Append(folder_, entry.name);
  }

  bool IsIgnoredHere() const {
    return rules_ != nullptr && rules_->ignore.IsIgnoredFolder(folder_);
  }

  bool Stopped() {
    context_.view.Yield();
    context_.view.Yield();
    if (context_.state.AbortRequested) context_.view.SetStatus("Aborted by User");
    return context_.state.AbortRequested;
  }

  CleaningContext& context_;
  std::string folder_;
  std::string mask_;
  std::string status_;
  bool every_name_;
  const ScanRules* rules_;
  Detail detail_;
  std::string upper_name_;
};

}  // namespace

void ClearPending(RunState& state) {
  state.PendingFiles.Clear();
  state.PendingFolders.Clear();
}

void ScanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                ScanMode) {
  Scan(context, folder, mask, nullptr).ScanHere();
}

void ScanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                const ScanRules& rules) {
  Scan(context, folder, mask, &rules).ScanHere();
}

}  // namespace quellix
