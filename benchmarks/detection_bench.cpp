#include "detection_bench.h"

#include <algorithm>
#include <stdexcept>

#include "plugins/recipe_finder.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_list.h"
#include "support/generated_list.h"

namespace quellix {

// One entry in ten finds something on a computer in use.
void MeasureDetection(TestMachine& machine, double at_most, SideBySide& table) {
  const Machine ports = machine.machine();
  const std::vector<GeneratedEntry> list = GenerateList();
  for (size_t i = 0; i < list.size(); i += 10) {
    for (const std::string& file : list[i].kept) {
      machine.MakeFile(modPlugin::ExpandPluginPath(ports, file), "1");
    }
  }
  const auto recipes = modPlugin::ParseRecipeLists({TextOf(list)});
  std::vector<double> seconds;
  for (int round = 0; round < 5; ++round) {
    std::vector<bool> is_found;
    seconds.push_back(
        SideBySide::Seconds([&] { is_found = modPlugin::FindRecipes(ports, recipes); }));
    const auto found = static_cast<size_t>(std::ranges::count(is_found, true));
    if (found < list.size() / 20 || found > list.size() / 2) throw std::runtime_error("count");
  }
  table.Report("detection of 4,067 recipes / its limit", Median(seconds), at_most, "s", 1.0);
}

}  // namespace quellix
