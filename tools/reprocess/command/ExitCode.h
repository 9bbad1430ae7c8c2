#pragma once

namespace quen::reprocess {

/** What the process ends with; --help says the same. */
enum ExitCode {
    kAllGood = 0,
    kSomeFailed = 1,
    kUsage = 2,
    kDemoTooPoor = 3,
};

}  // namespace quen::reprocess
