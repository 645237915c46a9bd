#pragma once

#include <stdexcept>
#include <string>

namespace quellix {

// The one run-time error of the program. what() is a sentence a user understands, in UTF-8.
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

  Error(Kind kind, const std::string& description) : std::runtime_error(description), kind_(kind) {}

  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

// Thrown for what a machine cannot do at all, such as the clipboard of a volume nobody is logged
// on to.
class NotAvailable : public Error {
 public:
  explicit NotAvailable(const std::string& description) : Error(Kind::kNotAvailable, description) {}
};

}  // namespace quellix
