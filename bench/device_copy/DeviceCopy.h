#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** The copy of a picture into a device buffer: into touched memory, and into a fresh buffer. */
void addDeviceCopyCases(Cases& cases);
void printDeviceCopyRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
