#pragma once

#include <string>

#include "trace/Trace.h"

namespace quen::reprocess {

/**
 * The timeline in the Trace Event Format, a JSON document that Perfetto and Chrome open. Times are
 * in microseconds since the collection began.
 */
std::string traceText(Trace::Contents const& contents);

}  // namespace quen::reprocess
