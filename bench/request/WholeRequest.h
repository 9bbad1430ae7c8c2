#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** A whole request, from the client's call to the client's answer, on an ISP that takes no time. */
void addWholeRequestCases(Cases& cases);
void printWholeRequestRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
