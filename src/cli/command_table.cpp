#include "cli/command_table.h"

#include <algorithm>

#include "platform/text.h"

namespace quellix {
namespace {

// "TEXT:{a,b}" has choices, "DAYS:INT in [0 - 9]" a range that the parser checks, "D:=DIR" neither.
void ReadValue(const CLI::Option& option, OptionRow& row) {
  if (option.get_type_size() == 0) return;
  const std::string type = option.get_type_name();
  const size_t list = type.find(":{");
  row.value = type.substr(0, std::min(list, type.find(":INT in")));
  if (list != std::string::npos) {
    row.choices = Split(type.substr(list + 2, type.size() - list - 3), ',');
    row.value.clear();
    for (const std::string& choice : row.choices)
      row.value += (row.value.empty() ? "" : "|") + choice;
  }
  if (row.value == "TEXT" && option.get_positional()) row.value = option.get_name(true);
}

OptionRow ReadOption(const CLI::Option& option) {
  OptionRow row;
  for (const std::string& name : option.get_snames()) row.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) row.names.push_back("--" + name);
  ReadValue(option, row);
  row.what = option.get_description();
  row.heading = option.get_group();
  row.is_required = option.get_required();
  row.takes_several = option.get_allow_extra_args() && option.get_items_expected_max() > 1;
  return row;
}

void ReadOptions(const CLI::App& app, CommandRow& row) {
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
    auto& rows = option->get_positional() ? row.arguments : row.options;
    OptionRow read = ReadOption(*option);
    const bool is_there = std::ranges::any_of(  // -h of options that belong together
        rows, [&read](const OptionRow& other) {
          return !read.names.empty() && other.names == read.names;
        });
    if (!is_there) rows.push_back(std::move(read));
  }
}

void ReadCommands(const CLI::App& app, const std::string& name, std::vector<CommandRow>& table) {
  const size_t at = table.size();
  table.push_back({name, app.get_description(), {}, {}, {}});
  ReadOptions(app, table[at]);
  for (const CLI::App* const inner : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (inner->get_name().empty()) {  // options that belong together
      ReadOptions(*inner, table[at]);
      continue;
    }
    table[at].commands.push_back(inner->get_name());
    ReadCommands(*inner, name.empty() ? inner->get_name() : name + " " + inner->get_name(), table);
  }
}

}  // namespace

std::vector<CommandRow> ReadCommandTable(const CLI::App& app) {
  std::vector<CommandRow> table;
  ReadCommands(app, "", table);
  return table;
}

}  // namespace quellix
