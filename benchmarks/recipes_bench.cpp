#include "recipes_bench.h"

#include <fstream>

#include "app/preview_run.h"
#include "bench_machine.h"
#include "plugins/recipe_finder.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_list.h"
#include "plugins/recipe_run.h"
#include "run/removal.h"
#include "support/generated_list.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

// One entry in ten finds something on a computer in use.
constexpr size_t kFound = 407, kFilesAFolder = 492;

class RecipesBench : BenchMachine {
 public:
  RecipesBench(const fs::path& home, SideBySide& table) : BenchMachine(home, table) {}

  void Detection() {
    const std::vector<GeneratedEntry> list = GenerateList();
    for (size_t i = 0; i < list.size(); i += 10) {
      for (const std::string& file : list[i].kept) {
        machine_->MakeFile(modPlugin::ExpandPluginPath(ports_, file), "1");
      }
    }
    const auto recipes = modPlugin::ParseRecipeLists({TextOf(list)});
    std::vector<double> seconds;
    size_t found = 0;
    for (int round = 0; round < 5; ++round) {
      found = 0;
      seconds.push_back(SideBySide::Seconds([&] {
        for (const bool is_found : modPlugin::FindRecipes(ports_, recipes)) found += is_found;
      }));
    }
    if (found < list.size() / 20 || found > list.size() / 2) throw std::runtime_error("count");
    table_.Report("detection of 4,067 recipes / its limit", Median(seconds), 0.3, "s", 1.0);
  }

  // Each folder is named by three entries, for other files in it.
  void Preview() {
    std::string text;
    for (size_t i = 0; i < kFound; ++i) {
      MakeFolder(i);
      text += "[Qx " + std::to_string(i) + " *]\r\nDetectFile=" + folder_ + "group*\r\n";
      text += "FileKey1=" + Folder(i) + "|*.tmp;*.bak|RECURSE\r\n";
      text += "FileKey2=" + Folder(i + 1) + "|*.log|REMOVESELF\r\n";
      text += "FileKey3=" + Folder(i + 2) + "|*.*|REMOVESELF\r\n";
    }
    const auto recipes = modPlugin::ParseRecipeLists({text});
    size_t found = 0;
    table_.Compare(
        "preview of 407 recipes, 200,000 files / find", 1.5, 5, [] {},
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

 private:
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
      constexpr const char* kKinds[] = {".tmp", ".log", ".bak", ".txt"};
      std::ofstream(folder / ("file " + std::to_string(file) + kKinds[file % 4])) << "data";
    }
  }
};

}  // namespace

void MeasureRecipes(const fs::path& home, SideBySide& table) {
  RecipesBench bench(home, table);
  bench.Detection();
  bench.Preview();
}

}  // namespace quellix
