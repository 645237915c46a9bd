#pragma once

#include "platform/error.h"

namespace quellix {

// Thrown where a registry hive does not hold together: its user must know, even of a tool that
// passes over whatever it cannot read.
class Damaged : public Error {
 public:
  explicit Damaged(const std::string& description) : Error(Kind::kOther, description) {}
};

}  // namespace quellix
