#pragma once

#include <string>

#include "Recording.h"

namespace quen::replay {

/**
 * Refuses a recording that no recorder writes, and that the library must not be given: calls that
 * do not fit together, records that are malformed, sizes that contradict each other or that no
 * buffer has.
 *
 * @param path of the file, for the text
 * @throws Unreadable names the first such crossing and what is wrong with it
 */
void checkSound(std::string const& path, Recording const& recording);

}  // namespace quen::replay
