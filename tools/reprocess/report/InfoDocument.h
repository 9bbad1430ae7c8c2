#pragma once

#include <string>

#include "report/FrameInfo.h"

namespace quen::reprocess {

/**
 * Prints the one JSON document of --info=json to standard output: the objects of the inputs as they
 * end, so that a batch of any length keeps none of them. Not thread-safe.
 */
class InfoDocument {
  public:
    void add(std::string const& inputObject);

    /** Ends the document. */
    void finish(RunSummary const& summary);

  private:
    bool mHasInputs = false;
};

}  // namespace quen::reprocess
