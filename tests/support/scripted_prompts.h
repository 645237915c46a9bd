#pragma once

#include <deque>

#include "run/views.h"
#include "support/holds.h"

namespace quellix {

// Plays the user: answers in the order they were put in, and keeps what was told and asked. Where
// no answer is left, the user cancels.
struct ScriptedPrompts : Prompts {
  std::deque<bool> yes_no;
  std::deque<std::optional<std::string>> texts, files, folders;
  std::deque<OverwriteAnswer> overwrites;

  Names informed;
  Names asked;    // questions, titles and paths, in order
  Names presets;  // of the texts asked for

  void Inform(std::string_view text) override { informed.emplace_back(text); }
  bool AskYesNo(std::string_view question) override { return Next(question, yes_no, false); }
  std::optional<std::string> AskText(std::string_view question, std::string_view preset) override {
    presets.emplace_back(preset);
    return Next(question, texts, {});
  }
  std::optional<std::string> AskFile(std::span<const FileFilter> filters,
                                     std::string_view) override {
    std::string masks;
    for (const FileFilter& filter : filters) {
      masks.append(masks.empty() ? "" : "|").append(filter.title).append("|").append(filter.masks);
    }
    return Next(masks, files, {});
  }
  std::optional<std::string> AskFolder(std::string_view title) override {
    return Next(title, folders, {});
  }
  OverwriteAnswer AskOverwrite(std::string_view path) override {
    return Next(path, overwrites, OverwriteAnswer::kCancel);
  }

  template <typename Answer>
  Answer Next(std::string_view question, std::deque<Answer>& answers, Answer otherwise) {
    asked.emplace_back(question);
    if (answers.empty()) return otherwise;
    Answer answer = std::move(answers.front());
    answers.pop_front();
    return answer;
  }
};

}  // namespace quellix
