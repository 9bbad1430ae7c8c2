#pragma once

#include <cstdint>

#include "inputs/Capture.h"

namespace quen::reprocess {

/** Sets a capture's size to the even part of a picture's, and notes what is left out. */
void setEvenSize(uint32_t width, uint32_t height, Capture& capture);

}  // namespace quen::reprocess
