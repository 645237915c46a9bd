#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "platform/error.h"

namespace quellix {

// The Error an action throws, nothing when it throws none. Every Error says something.
inline std::optional<Error> ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error;
  }
  return std::nullopt;
}
inline std::optional<Error::Kind> KindOf(const std::function<void()>& action) {
  const std::optional<Error> error = ErrorOf(action);
  return error ? std::optional(error->kind()) : std::nullopt;
}
// What it says; "" when none is thrown.
inline std::string SaidBy(const std::function<void()>& action) {
  const std::optional<Error> error = ErrorOf(action);
  return error ? error->what() : "";
}

}  // namespace quellix
