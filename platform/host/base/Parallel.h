#pragma once

#include <functional>

namespace quen::host {

/**
 * Does pieces of work on as many threads as there are processors, the caller's among them, and
 * returns when all are done. An exception of a piece ends the others early and is thrown here.
 *
 * @param count pieces
 * @param makeWorker called once a thread, on it; what it returns does one piece, given its index
 */
void inParallel(int count, std::function<std::function<void(int)>()> const& makeWorker);

}  // namespace quen::host
