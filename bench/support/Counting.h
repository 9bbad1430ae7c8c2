#pragma once

#include <ostream>

#include "support/Cases.h"

namespace quenbench {

/**
 * Runs every counted case a few times for a tool that counts from outside, see Section. Prints what
 * the watch library counted, if it is there, a line a count as timeCases reads them, and always how
 * many operations each case was counted for: "operations <case> <number>".
 *
 * @param filter a case's name, or the beginning of several up to a "/"; empty: all of them
 */
void countCases(std::ostream& out, Cases const& cases, std::string const& filter);

}  // namespace quenbench
