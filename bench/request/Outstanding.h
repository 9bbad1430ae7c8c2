#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/** Requests that are answered in another order than they came, few at a time and very many. */
void addOutstandingCases(Cases& cases);
void printOutstandingRows(std::ostream& out, Figures const& figures);

}  // namespace quenbench
