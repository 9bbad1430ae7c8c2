#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/**
 * Runs every counted case a few times under an external tool that counts, see Section. Prints the
 * counts of the watch library where it is loaded, a line each as timeCases reads them, and the
 * number of operations of each case: "operations <case> <number>".
 *
 * @param filter a case, or the prefix of several up to a "/"; empty for all
 */
void countCases(std::ostream& out, Cases const& cases, std::string const& filter);

}  // namespace quenbench
