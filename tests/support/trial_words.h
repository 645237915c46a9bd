// Languages that tests make up.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/words.h"
#include "support/jump_list_bytes.h"

namespace quellix {

// A catalogue as msgfmt lays it out; the texts sorted by name.
inline std::string MoOf(const std::vector<std::pair<std::string, std::string>>& texts) {
  const size_t count = texts.size(), names = 28, values = names + 8 * count;
  std::string head = Little(0x950412de, 4) + Little(0, 4) + Little(count, 4) + Little(names, 4) +
                     Little(values, 4) + Little(0, 4) + Little(0, 4);
  std::string name_table, value_table, strings;
  const auto add = [&](std::string& table, const std::string& text) {
    table += Little(text.size(), 4) + Little(values + 8 * count + strings.size(), 4);
    strings += text + '\0';
  };
  for (const auto& [name, text] : texts) add(name_table, name);
  for (const auto& [name, text] : texts) add(value_table, text);
  return head + name_table + value_table + strings;
}

inline std::string Head(const std::string& plural) {
  return "Content-Type: text/plain; charset=UTF-8\nPlural-Forms: nplurals=3; plural=" + plural +
         ";\n";
}

// Each text between marks, by which it is told from one that was not taken from the catalogue.
inline Catalogue Marked(std::span<const char* const> texts) {
  std::vector<std::pair<std::string, std::string>> rows = {{"", Head("n != 1")}};
  for (const std::string text : texts) rows.emplace_back(text, "{" + text + "}");
  std::ranges::sort(rows);
  return Catalogue(MoOf(rows));
}

struct InEnglishAgain {
  ~InEnglishAgain() {
    Speak(Catalogue());
    SpeakInLogs(false);
  }
};

}  // namespace quellix
