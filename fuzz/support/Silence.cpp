#include <host/log/LogControl.h>

/** libFuzzer calls it once, before the first input: what is logged of bad input is not of interest.
 */
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    return 0;
}
