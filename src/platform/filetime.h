#pragma once

#include <cstdint>

namespace quellix {

// FILETIMEs count 100 ns steps.
inline constexpr int64_t kFiletimesADay = 864'000'000'000;

}  // namespace quellix
