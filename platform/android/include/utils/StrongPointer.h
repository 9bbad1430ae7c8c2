#pragma once

// Android's header uses uintptr_t and leaves it to whoever includes it to have declared that.
#include <stdint.h>

#include_next <utils/StrongPointer.h>
