#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/words.h"

namespace quellix {

// The one run-time error of the program. what() is a sentence a user understands, in UTF-8 and
// English, for reports; shown() is the same in the language of the windows. Logs choose: Logged().
class Error : public std::runtime_error {
 public:
  enum class Kind {
    kMissing,
    kDenied,
    kInUse,
    kFull,
    kNotEmpty,
    kExists,
    kNotAvailable,
    kKept,
    kOther
  };

  Error(Kind kind, const std::string& description)
      : std::runtime_error(description), shown_(description), kind_(kind) {}
  Error(Kind kind, Sentence sentence)
      : std::runtime_error(sentence.english), shown_(std::move(sentence.shown)), kind_(kind) {}

  Kind kind() const { return kind_; }
  const std::string& shown() const { return shown_; }

 private:
  std::string shown_;
  Kind kind_;
};

// Thrown for what a machine cannot do at all, such as the clipboard of a volume nobody is logged
// on to.
class NotAvailable : public Error {
 public:
  explicit NotAvailable(const std::string& description) : Error(Kind::kNotAvailable, description) {}
  explicit NotAvailable(Sentence sentence) : Error(Kind::kNotAvailable, std::move(sentence)) {}
};

}  // namespace quellix
