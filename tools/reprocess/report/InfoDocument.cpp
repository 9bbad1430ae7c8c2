#include "report/InfoDocument.h"

#include <cstdio>

namespace quen::reprocess {

void InfoDocument::add(std::string const& inputObject) {
    std::fprintf(stdout, "%s%s", mHasInputs ? ",\n" : "{\"inputs\":[\n", inputObject.c_str());
    mHasInputs = true;
}

void InfoDocument::finish(RunSummary const& summary) {
    std::fprintf(stdout, "%s\n],\"summary\":%s}\n", mHasInputs ? "" : "{\"inputs\":[",
                 summaryJson(summary).c_str());
    std::fflush(stdout);
}

}  // namespace quen::reprocess
