#include <algorithm>
#include <iostream>

#include "app/item_catalogue.h"
#include "browsers/browser_kind.h"
#include "cleaners/volume_items.h"
#include "cli/command_table.h"
#include "cli/commands.h"

namespace quellix {
namespace {

// What completes a value, by the group of its command ("" for all) and its name: files, folders, or
// what a command lists, which only reads.
constexpr struct {
  std::string_view group, value;
  const char* how;
} kSources[] = {{"", "FILE", "file=1"},
                {"", "PLACE", "file=1"},
                {"", "DIR", "folder=1"},
                {"", "ARCHIVE", "list='backup list'"},
                {"plugins", "FILE", "file=1 list='plugins list'"},
                {"plugins", "NAME", "list='plugins list'"},
                {"browsers", "NAME[:KIND]", "list='browsers list'"},
                {"windows", "NAME", "list='windows list'"}};

std::string Joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string HowToComplete(const CommandRow& command, const OptionRow& option) {
  if (!option.choices.empty()) return "words='" + Joined(option.choices) + "'";
  std::string found;
  if (option.value == "KEY") {
    std::vector<std::string> keys;
    for (const Item& item : AllItems()) keys.emplace_back(item.key);
    for (const Item& item : VolumeItems()) keys.emplace_back(item.key);
    return "words='" + Joined(keys) + "'";
  }
  for (const auto& source : kSources) {
    const bool is_meant = source.value == option.value &&
                          (source.group.empty() || command.name.starts_with(source.group));
    if (is_meant) found = source.how;
  }
  return found;
}

// The values of one option, or of the argument at a place, from 1 on.
void PrintValue(const CommandRow& command, const OptionRow& option, const std::string& place) {
  std::string places;
  for (const std::string& name : option.names)
    places += (places.empty() ? "'" : "|'") + command.name + " " + name + "'";
  if (option.names.empty()) {
    places = "'" + command.name + " " + place + "'";
    if (option.takes_several) places += "*";
  }
  std::cout << "    " << places << ") takes=" << (option.takes_several ? "several " : "one ")
            << HowToComplete(command, option) << " ;;\n";
}

void PrintCommands(const std::vector<CommandRow>& table) {
  std::cout << "_quellixctl_words() {\n  case $1 in\n";
  for (const CommandRow& command : table) {
    std::vector<std::string> names;
    for (const OptionRow& option : command.options)
      names.insert(names.end(), option.names.begin(), option.names.end());
    std::cout << "    '" << command.name << "') commands='" << Joined(command.commands)
              << "' options='" << Joined(names) << "' ;;\n";
  }
  std::cout << "    *) return 1 ;;\n  esac\n}\n\n";
}

void PrintValues(const std::vector<CommandRow>& table) {
  std::cout << "_quellixctl_value() {\n  takes= words= list= file= folder=\n  case $1 in\n";
  for (const CommandRow& command : table) {
    for (const OptionRow& option : command.options)
      if (!option.value.empty()) PrintValue(command, option, "");
    for (size_t i = 0; i < command.arguments.size(); ++i) {
      const OptionRow& argument = command.arguments[i];
      PrintValue(command, argument, argument.takes_several ? "#" : "#" + std::string(i + 1, '1'));
    }
  }
  std::cout << "  esac\n}\n\n";
}

// Bash takes ":" and "=" for words of their own. "#1", "#11" are the arguments by their places.
constexpr const char* kScript = R"sh(# Offers those of the lines it reads that begin with the word.
_quellixctl_offer() {
  local line
  while IFS= read -r line; do
    [[ -z $line || $line != "${current//\\/}"* ]] || COMPREPLY+=("$(printf %q "$line")")
  done
}

# The first column of what the program lists on the machine that the command line names.
_quellixctl_list() {
  "$program" $list "${machine[@]}" --csv 2> /dev/null < /dev/null | sed '1d
    /^"/{s/^"\(\([^"]\|""\)*\)".*/\1/;s/""/"/g;b
    }
    s/,.*//' | sort -u
}

_quellixctl() {
  local program=$1 current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command= commands options takes words list file folder option= place='#' word i
  local -a machine=()
  COMPREPLY=()
  _quellixctl_words ''
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    if [[ $word == [=:]* || ${COMP_WORDS[i - 1]} == :* ]]; then
      continue
    elif [[ $word == -* ]]; then
      _quellixctl_value "$command $word"
      option=${takes:+$word}
    elif [[ -n $option ]]; then
      case $option in
        --volume | --settings | --user) machine+=("$option" "${word//\\ / }") ;;
      esac
      _quellixctl_value "$command $option"
      [[ $takes == several ]] || option=
    elif [[ " $commands " == *" $word "* ]]; then
      command+=${command:+ }$word
      _quellixctl_words "$command"
    else
      place+=1
    fi
  done
  [[ $current != [=:]* ]] || current=
  if [[ $current == -* ]]; then
    _quellixctl_offer <<< "${options// /$'\n'}"
    return
  elif [[ $before == :* && $command == 'browsers clean' ]]; then
    words=$kinds
    _quellixctl_offer <<< "${words// /$'\n'}"
    return
  elif [[ $before == :* || ${COMP_WORDS[COMP_CWORD]} == :* ]]; then
    takes= words= list= file= folder=1
  elif [[ -n $option ]]; then
    _quellixctl_value "$command $option"
  elif [[ -n $commands ]]; then
    takes= words=$commands list= file= folder=
  else
    _quellixctl_value "$command ${place}1"
  fi
  _quellixctl_offer <<< "${words// /$'\n'}"
  [[ -z $list ]] || _quellixctl_offer < <(_quellixctl_list)
  [[ -z $file$folder ]] || compopt -o filenames 2> /dev/null
  [[ -z $file ]] || mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
  [[ -z $folder ]] || mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$current")
}

complete -F _quellixctl quellixctl
)sh";

int PrintCompletion(const CLI::App& app) {
  const std::vector<CommandRow> table = ReadCommandTable(app);
  PrintCommands(table);
  PrintValues(table);
  std::vector<std::string> kinds;
  for (const BrowserKindText& kind : kBrowserKinds) kinds.emplace_back(kind.key);
  std::string script = kScript;
  const std::string place = "$kinds";
  script.replace(script.find(place), place.size(), "'" + Joined(kinds) + "'");
  std::cout << script;
  return kDone;
}

}  // namespace

void AddCompletionCommand(ConsoleCommands& commands) {
  const CLI::App& app = commands.app();
  commands.AddPlain("completion", "Print what lets bash complete command lines, to be sourced",
                    [&app] { return PrintCompletion(app); });
}

}  // namespace quellix
