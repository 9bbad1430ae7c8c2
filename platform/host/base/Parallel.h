#pragma once

#include <functional>

namespace quen::host {

/**
 * Runs pieces of work on as many threads as there are processors, the caller's included, and
 * returns when all are done. An exception from a piece stops the others early and is rethrown here.
 *
 * @param count pieces
 * @param makeWorker called once on each thread; returns what runs the piece of an index
 */
void inParallel(int count, std::function<std::function<void(int)>()> const& makeWorker);

}  // namespace quen::host
