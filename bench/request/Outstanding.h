#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** Requests answered out of order, with few and very many outstanding. */
void addOutstandingCases(Cases& cases);
void printOutstandingRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
