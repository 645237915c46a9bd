#pragma once

#include <string_view>

#include "platform/error.h"

namespace quellix {

// Throws the Error for an errno value: a sentence that names `path`.
[[noreturn]] void ThrowErrno(int code, std::string_view path);

}  // namespace quellix
