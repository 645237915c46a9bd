// Every recipe that ships, carried out over the tree that its records name.
#include "platform/path.h"
#include "plugins/mod_plugin.h"
#include "plugins/plugin_check.h"
#include "plugins/recipe_detection.h"
#include "plugins/recipe_folders.h"
#include "plugins/recipe_keys.h"
#include "shipped_files.h"
#include "support/plugin_fixture.h"

namespace quellix::modPlugin {
namespace {

// What no recipe of ours may name: work that is not saved, keys and passwords, what web
// applications store, bookmarks.
constexpr const char* kNeverNamed[] = {
    "Local Storage", "IndexedDB",     "Session Storage", "WebStorage",  "File System",
    "\\Sessions",    "TabState",      "FileCache",       "Bookmarks",   "key4",
    "cert9",         "logins",        "Login Data",      "\\Backups",   "\\Cookies",
    "Web Data",      "Package Cache", "LocalHistory",    "\\Installer", "Preferences",
    "databases",     "places.",       "storage\\default"};

// A name that fits a pattern.
std::string Fitting(std::string pattern) {
  if (pattern == "*.*") return "qx.any";
  pattern = ReplaceNoCase(pattern, "*", "qx");
  return ReplaceNoCase(pattern, "?", "q");
}

// What stands in a tree for one recipe: paths of files, and keys ("root", "key", "value").
struct Tree {
  std::set<std::string> gone, kept;
  std::set<std::tuple<RegistryRoot, std::string, std::string>> gone_values, kept_values;
};

struct ShippedRecipesTest : PluginFixture {
  void AddFiles(const FileEntry& entry, Tree& tree) {
    const std::string mask(NamePart(entry.location)), name = Fitting(mask);
    for (const std::string& side :
         ExpandFolder(ports, FolderPart(entry.location), entry.both_sides)) {
      const auto pattern = ParsePattern(side);
      ASSERT_TRUE(pattern);
      std::string above = pattern->start, last;
      for (const std::string& part : pattern->names) {
        if (!last.empty()) above += "\\" + last;
        last = Fitting(part);
      }
      const std::string folder = above + "\\" + last + "\\";
      tree.gone.insert(folder + name);
      (entry.recurse ? tree.gone : tree.kept).insert(folder + "qx sub\\deep\\" + name);
      if (!mask.ends_with('*')) tree.kept.insert(folder + name + ".qx kept");
      if (!mask.starts_with('*')) tree.kept.insert(folder + "kept " + name);
      if (pattern->names.empty() || pattern->names.back() == "*") continue;
      tree.kept.insert(above + "\\kept " + last + "\\" + name);
      if (pattern->names.size() > 1) tree.kept.insert(above + "\\kept qx.kept");
    }
  }
  void AddKey(const RegistryEntry& entry, Tree& tree) {
    RegistryEntry one = entry;
    one.key = ReplaceNoCase(one.key, "\\*", "\\{qx}");
    for (const KeyPlace& place : FindAnyKeys(ports.registry, one)) {
      ASSERT_TRUE(place.root);
      const std::string value = entry.delete_subkey ? "qx" : entry.value_name;
      tree.gone_values.insert({*place.root, place.subkey, value});
      if (entry.delete_subkey) {
        tree.gone_values.insert({*place.root, place.subkey + "\\qx sub", "qx"});
        tree.kept_values.insert({*place.root, place.subkey + " kept", "qx"});
      } else {
        tree.kept_values.insert({*place.root, place.subkey, "qx kept"});
      }
    }
  }
  Tree TreeOf(const Plugin& plugin) {
    Tree tree;
    for (const FileEntry& entry : plugin.files) AddFiles(entry, tree);
    for (const RegistryEntry& entry : plugin.registry) AddKey(entry, tree);
    return tree;
  }
  void Make(const Plugin& plugin, const Tree& tree) {
    for (const auto* files : {&tree.gone, &tree.kept}) {
      for (const std::string& path : *files) machine->MakeFile(path, "1");
    }
    for (const auto* values : {&tree.gone_values, &tree.kept_values}) {
      for (const auto& [root, key, value] : *values) machine->SetText(root, key, value, "x");
    }
    for (const IniEntry& entry : plugin.ini) {
      machine->MakeFile(PathOf(entry), "[kept]\r\nk=1\r\n[" + entry.section + "]\r\n" +
                                           (entry.key.empty() ? "k" : entry.key) + "=1\r\n");
    }
  }
  std::string PathOf(const IniEntry& entry) {
    return ExpandPluginPath(ports, entry.folder + entry.file_name);
  }
  void ExpectCleaned(const Plugin& plugin, const Tree& tree) {
    for (const std::string& path : tree.gone) EXPECT_FALSE(machine->Exists(path)) << path;
    for (const std::string& path : tree.kept) EXPECT_TRUE(machine->Exists(path)) << path;
    const auto has = [&](const auto& place) {
      const auto& [root, key, value] = place;
      const Names names = machine->ValueNames(root, key);
      return std::ranges::find(names, value) != names.end();
    };
    for (const auto& place : tree.gone_values) EXPECT_FALSE(has(place)) << std::get<1>(place);
    for (const auto& place : tree.kept_values) EXPECT_TRUE(has(place)) << std::get<1>(place);
    for (const IniEntry& entry : plugin.ini) EXPECT_EQ(Read(PathOf(entry)), "[kept]\r\nk=1\r\n");
  }
  // Or the next recipe may come by them.
  void RemoveNeighbours(const Tree& tree) {
    for (const std::string& path : tree.kept) {
      ports.files.RemoveFile(path);
      std::string folder(WithoutBackslash(FolderPart(path)));
      try {
        for (; folder.find("kept ") != folder.npos || folder.find("qx sub") != folder.npos;
             folder = WithoutBackslash(FolderPart(folder))) {
          ports.files.RemoveFolder(folder);
        }
      } catch (const Error&) {  // another neighbour is still in it
      }
    }
    for (const auto& [root, key, value] : tree.kept_values)
      ports.registry.Open(root, key, RegistryAccess::kWrite)->DeleteValue(value);
  }
};

TEST_F(ShippedRecipesTest, EachRemovesAllThatItNamesAndNothingBeside) {
  std::set<std::string> groups;
  std::string all;
  machine->MakeFolder(ports.system.SystemFolder() + "\\LogFiles");  // the guard looks once
  for (const auto& [name, bytes] : kShippedPlugins) {
    SCOPED_TRACE(name);
    const Plugin plugin = ParsePlugin(bytes);
    EXPECT_EQ(FormatPlugin(plugin), bytes);
    EXPECT_FALSE(plugin.description.empty() || plugin.group.empty());
    groups.insert(plugin.group);
    for (const char* text : kNeverNamed) EXPECT_FALSE(ContainsNoCase(bytes, text)) << text;
    const Tree tree = TreeOf(plugin);
    Make(plugin, tree);
    all += bytes;
    EXPECT_TRUE(IsFound(ports, plugin));
    for (int i = 0; i < 2; ++i) {
      engine.state().RunLog.clear();
      RunRecords(context, plugin);
      EXPECT_EQ(engine.state().RunLog, "");
      ExpectCleaned(plugin, tree);
    }
    RemoveNeighbours(tree);
  }
  for (const Remark& remark : CheckPlugin(ports, all)) EXPECT_FALSE(remark.is_fault) << remark.text;
  EXPECT_GE(std::size(kShippedPlugins), 120u);
  EXPECT_LE(groups.size(), 12u) << "few enough to be looked through";
}

}  // namespace
}  // namespace quellix::modPlugin
