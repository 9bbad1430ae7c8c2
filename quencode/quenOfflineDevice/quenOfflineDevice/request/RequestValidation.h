#pragma once

#include "quenOfflineDevice/ClientRecords.h"

namespace quen {

/**
 * Checks whether a request can be served: a missing buffer, a size below 1, a buffer
 * smaller than its picture. The hardened build refuses such requests before anything is allocated.
 *
 * @param waits no callback: the JPEG is copied into the client's buffer
 * @return what is wrong and what is wanted instead; null when nothing is
 */
char const* findRequestFault(PostProcessParams const& params, bool waits);

}  // namespace quen
