#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** A whole request, from the client's call to its result, on an ISP that answers at once. */
void addWholeRequestCases(Cases& cases);
void printWholeRequestRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
