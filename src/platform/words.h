#pragma once

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

// The words of the windows in the language of their user. Texts stand in the code in English, and
// English is their name in the catalogues (GNU gettext), from which they are gathered by the
// functions below: each is called with a literal. A text that must stay English whatever the
// language (reports, settings, what scripts read) is not given to them.
namespace quellix {

// One language's catalogue: what msgfmt makes of a .po file, in UTF-8
// (the gettext manual, "The Format of GNU MO Files").
class Catalogue {
 public:
  Catalogue() = default;  // English
  // Throws Error for bytes that are no such catalogue.
  explicit Catalogue(std::string mo);

  // The text in this language; as it stands where the catalogue has none.
  std::string_view Of(std::string_view english) const;
  // In the form that the language has for so many.
  std::string_view Of(std::string_view one, std::string_view many, uint64_t count) const;
  // A field of its head, such as "Language"; empty where it has none, as in English.
  std::string_view Field(std::string_view name) const;

 private:
  uint32_t NumberAt(size_t at) const;
  std::string_view TextAt(size_t table, size_t index) const;
  std::string_view Find(std::string_view name) const;

  std::string mo_;
  size_t count_ = 0, names_ = 0, texts_ = 0;  // how many; where their two tables begin
  std::string plural_;                        // the expression that chooses a form by `n`
};

// What every window speaks from now on; English until then. To be called before any text is asked
// for, and again only while no other thread asks: they hold no lock.
void Speak(Catalogue words);
const Catalogue& Spoken();

// `pattern` with %1 to %9 replaced by the values, in whatever order. Any other percent sign is one,
// and so is a place that has no value.
std::string Fill(std::string_view pattern, std::initializer_list<std::string_view> values);
// The same in a text that keeps the room it has: for what is told of each of many files.
void FillInto(std::string& text, std::string_view pattern,
              std::initializer_list<std::string_view> values);

// A text in the language of the windows, its places filled.
template <typename... Values>
std::string Tr(std::string_view english, const Values&... values) {
  return Fill(Spoken().Of(english), {std::string_view(values)...});
}
// In the form for so many. The number itself is one of the values, written as its user writes it.
template <typename... Values>
std::string TrN(std::string_view one, std::string_view many, uint64_t count,
                const Values&... values) {
  return Fill(Spoken().Of(one, many, count), {std::string_view(values)...});
}

// Names a text for the catalogues where it cannot be translated yet (a table, a constant); Tr is
// called with it later.
constexpr const char* Mark(const char* english) { return english; }

// A sentence that goes both into English files and onto the screen.
struct Sentence {
  std::string english, shown;

  bool empty() const { return english.empty(); }
};

inline std::string_view EnglishOf(const Sentence& sentence) { return sentence.english; }
inline std::string_view EnglishOf(std::string_view name) { return name; }
inline std::string_view ShownOf(const Sentence& sentence) { return sentence.shown; }
inline std::string_view ShownOf(std::string_view name) { return name; }

// Its places are filled with names (paths, numbers) and with other sentences.
template <typename... Values>
Sentence Say(std::string_view english, const Values&... values) {
  return {Fill(english, {EnglishOf(values)...}), Fill(Spoken().Of(english), {ShownOf(values)...})};
}
template <typename... Values>
Sentence SayN(std::string_view one, std::string_view many, uint64_t count,
              const Values&... values) {
  return {Fill(count == 1 ? one : many, {EnglishOf(values)...}),
          Fill(Spoken().Of(one, many, count), {ShownOf(values)...})};
}

// What the user of a window reads of an error; what() is for English files.
std::string Shown(const std::exception& error);
// Both of them.
Sentence SentenceOf(const std::exception& error);

// Whether the logs of runs are written in the language of the windows from now on; in English until
// then, and wherever no language is spoken. Any thread may call it.
void SpeakInLogs(bool does);
// What they are written in.
const Catalogue& SpokenInLogs();

// A sentence, or an error's, as logs have it.
const std::string& Logged(const Sentence& sentence);
std::string Logged(const std::exception& error);

inline std::string_view LoggedOf(const Sentence& sentence) { return Logged(sentence); }
inline std::string_view LoggedOf(std::string_view name) { return name; }

// A text of a log, its places filled.
template <typename... Values>
std::string Log(std::string_view english, const Values&... values) {
  return Fill(SpokenInLogs().Of(english), {LoggedOf(values)...});
}

}  // namespace quellix
