#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** The stages of a request's metadata, to the ISP and back. */
void addMetadataCases(Cases& cases);
void printMetadataRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
