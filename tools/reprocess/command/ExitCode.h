#pragma once

namespace quen::reprocess {

/** Exit codes of the process, as --help lists them. */
enum ExitCode {
    kAllGood = 0,
    kSomeFailed = 1,
    kUsage = 2,
    kDemoTooPoor = 3,
};

}  // namespace quen::reprocess
