// A list of recipes as large and as various as the one that people use, carried out entry by entry.
#include "support/generated_list.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_judgement.h"
#include "plugins/recipe_run.h"
#include "run/working_folder.h"
#include "support/plugin_fixture.h"

namespace quellix::modPlugin {
namespace {

constexpr size_t kEntries = 4067;
#ifdef __SANITIZE_ADDRESS__
constexpr size_t kJudged = 11, kStep = 209;
#else
// One of so many entries is judged, and one carried out, as each writes the volume's hive. 1 and 1
// take all.
constexpr size_t kJudged = 1, kStep = 19;
#endif

struct GeneratedListTest : PluginFixture {
  std::string Path(const std::string& text) {
    const size_t end = text.find('%', 1) + 1;
    std::string& folder = folders[text.substr(0, end)];
    if (folder.empty()) folder = ExpandPluginPath(ports, text.substr(0, end));
    return folder + text.substr(end);
  }
  struct Value {
    RegistryRoot root;
    std::string key, name;
  };
  static Value ValueOf(const std::string& text) {
    const size_t end = text.find('|');
    const bool is_machine = text.starts_with("HKLM\\");
    return {is_machine ? kMachine : kUser, text.substr(5, end - 5), text.substr(end + 1)};
  }
  void Make(const std::vector<GeneratedEntry>& list) {
    for (size_t i = 0; i < list.size(); i += kStep) {
      const GeneratedEntry& entry = list[i];
      for (const Names* files : {&entry.gone, &entry.kept}) {
        for (const std::string& file : *files) machine->MakeFile(Path(file), "1");
      }
      for (const Names* values : {&entry.gone_values, &entry.kept_values}) {
        for (const std::string& text : *values) {
          const Value value = ValueOf(text);
          ports.registry.Create(value.root, value.key)->SetValue(value.name, {kRegSz, {}});
        }
      }
    }
  }
  // What is not as it should be; "" when all is.
  std::string Differences(const GeneratedEntry& entry) {
    std::string text;
    const auto look = [&](const Names& paths, bool should_be) {
      for (const std::string& path : paths) {
        if (machine->Exists(Path(path)) != should_be) text += path + "\n";
      }
    };
    look(entry.gone, false);
    look(entry.kept, true);
    look(entry.gone_folders, false);
    look(entry.left_folders, true);
    const auto has = [&](const Value& value) {
      const auto key = ports.registry.Open(value.root, value.key, RegistryAccess::kRead);
      return key && key->QueryValue(value.name).has_value();
    };
    for (const std::string& value : entry.gone_values) text += has(ValueOf(value)) ? value : "";
    for (const std::string& value : entry.kept_values) text += has(ValueOf(value)) ? "" : value;
    return text.empty() ? "" : entry.text + "differs:\n" + text;
  }
  std::map<std::string, std::string> folders;  // by variable
};

TEST_F(GeneratedListTest, EachEntryRemovesAllThatItNamesAndNothingBeside) {
  const std::vector<GeneratedEntry> list = GenerateList();
  Make(list);
  WriteOwn("Winapp2.ini", TextOf(list));
  const RecipeLists lists = LoadRecipeLists(ports);
  ASSERT_EQ(lists.recipes.size(), kEntries);
  std::map<Standing, size_t> standings;
  size_t files = 0, keys = 0, exclusions = 0;
  {
    ProtectedPlaces places = LoadPlaces(ports);
    for (size_t i = 0; i < kEntries; ++i) {
      const ListedRecipe& recipe = lists.recipes[i];
      files += recipe.plugin.files.size();
      keys += recipe.plugin.registry.size();
      exclusions += recipe.plugin.exclusions.size();
      if (i % kJudged != 0 && !list[i].is_refused) continue;
      const Judgement judged = Judge(ports, places, recipe);
      ++standings[judged.standing];
      const std::string first = judged.remarks.empty() ? "" : judged.remarks[0];
      EXPECT_EQ(first.empty(), !list[i].is_refused) << first;
    }
  }
  EXPECT_GE(standings[Standing::kWhole], kEntries / kJudged - 3);
  EXPECT_EQ(standings.size(), 2u);
  EXPECT_EQ(standings[Standing::kRefused], 3u);
  EXPECT_EQ(files, 17681u + 2);
  EXPECT_EQ(keys, 3677u + 1);
  EXPECT_EQ(exclusions, 86u);
  for (int run = 0; run < 2; ++run) {
    for (size_t i = 0; i < kEntries; i += kStep) EXPECT_TRUE(RunListed(context, lists.recipes[i]));
    size_t exact = 0;
    std::string first;
    for (size_t i = 0; i < kEntries; i += kStep) {
      const std::string differences = Differences(list[i]);
      exact += differences.empty();
      if (first.empty()) first = differences;
    }
    EXPECT_EQ(exact, (kEntries + kStep - 1) / kStep) << first;
  }
}

}  // namespace
}  // namespace quellix::modPlugin
