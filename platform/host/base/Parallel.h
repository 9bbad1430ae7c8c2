#pragma once

#include <functional>

namespace quen::host {

/**
 * Runs pieces of work on the caller's thread and on helpers that are free, and returns when all are
 * done. All calls of the process share the helpers, of which there is one fewer than processors. An
 * exception from a piece stops the others early and is rethrown here.
 *
 * @param count pieces
 * @param makeWorker called once on each thread; returns what runs the piece of an index
 */
void inParallel(int count, std::function<std::function<void(int)>()> const& makeWorker);

}  // namespace quen::host
