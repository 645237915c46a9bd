#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "platform/error.h"

namespace quellix {

// The kind of Error an action throws, nothing when it throws none. Every Error says something.
inline std::optional<Error::Kind> KindOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error.kind();
  }
  return std::nullopt;
}

}  // namespace quellix
