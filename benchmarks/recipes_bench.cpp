#include "recipes_bench.h"

#include <fstream>
#include <functional>

#include "app/preview_run.h"
#include "bench_machine.h"
#include "detection_bench.h"
#include "plugins/recipe_list.h"
#include "plugins/recipe_run.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr size_t kFound = 407, kFilesAFolder = 492;

class RecipesBench : BenchMachine {
 public:
  RecipesBench(const fs::path& home, SideBySide& table) : BenchMachine(home, table) {}

  void Detection() { MeasureDetection(*machine_, 0.3, table_); }

  void Previews() {
    for (size_t i = 0; i < kFound; ++i) MakeFolder(i);
    Preview("preview of 407 recipes, 200,000 files / find", [this](size_t entry) {
      return "FileKey1=" + Folder(entry) + "|*.a*;*.b*|RECURSE\r\nFileKey2=" + Folder(entry + 1) +
             "|*.c*|REMOVESELF\r\nFileKey3=" + Folder(entry + 2) + "|*.*|REMOVESELF\r\n";
    });
    Preview("the same where twelve recipes name each folder / find", [this](size_t entry) {
      std::string keys;
      for (size_t i = 0; i < kKinds; ++i) {
        keys += "FileKey" + std::to_string(i + 1) + "=" + Folder(entry + i) + "|*" + Kind(i) +
                "|RECURSE\r\n";
      }
      return keys;
    });
  }

 private:
  static constexpr size_t kKinds = 12;

  // Of entries that take all the files, some of those in a folder each.
  void Preview(const char* row, const std::function<std::string(size_t entry)>& keys_of) {
    std::string text;
    for (size_t i = 0; i < kFound; ++i) {
      text += "[Qx " + std::to_string(i) + " *]\r\nDetectFile=" + folder_ + "group*\r\n";
      text += keys_of(i);
    }
    const auto recipes = modPlugin::ParseRecipeLists({text});
    size_t found = 0;
    table_.Compare(
        row, 1.5, 5, [] {},
        [&] {
          PreviewRun preview(ports_, view_);
          preview.RunByHand([&](CleaningContext& context) {
            for (const auto& recipe : recipes) modPlugin::RunListed(context, recipe);
          });
          found = static_cast<size_t>(preview.state().FilesDeleted);
        },
        [this] { RunShell("find '" + Tree().string() + "' -printf '%s %T@ %p\\n' > /dev/null"); });
    if (found != kFound * kFilesAFolder) throw std::runtime_error("count");
  }
  // ".aa", ".bb", ".cc", ".dd", ".ae" and so on.
  static std::string Kind(size_t file) {
    return {'.', static_cast<char>('a' + file % 4), static_cast<char>('a' + file % kKinds)};
  }
  static std::string Name(size_t number) {
    number %= kFound;
    return "group " + std::to_string(number / 100) + "/folder " + std::to_string(number);
  }
  std::string Folder(size_t number) const {
    std::string name = Name(number);
    std::replace(name.begin(), name.end(), '/', '\\');
    return folder_ + name;
  }
  void MakeFolder(size_t number) const {
    const fs::path folder = Tree() / Name(number);
    fs::create_directories(folder);
    for (size_t file = 0; file < kFilesAFolder; ++file) {
      std::ofstream(folder / ("file " + std::to_string(file) + Kind(file))) << "data";
    }
  }
};

}  // namespace

void MeasureRecipes(const fs::path& home, SideBySide& table) {
  RecipesBench bench(home, table);
  bench.Detection();
  bench.Previews();
}

}  // namespace quellix
