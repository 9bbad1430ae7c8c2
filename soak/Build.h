#pragma once

#include "quenCommon/Hardened.h"

namespace quensoak {

/** Which of the library's two builds is under test: they promise different things. */
inline constexpr bool kHardened = quen::kHardened;

}  // namespace quensoak
