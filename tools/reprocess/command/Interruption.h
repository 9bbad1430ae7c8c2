#pragma once

namespace quen::reprocess {

/**
 * Holds back what would end the process at once, so that frames in work come to their end: SIGINT,
 * SIGTERM and SIGHUP, unless they are ignored. A second signal of a kind ends it as usual. One
 * object at a time in a process.
 */
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(Interruption const&) = delete;
    Interruption& operator=(Interruption const&) = delete;

    /** Whether a signal has come. Any thread. */
    static bool hasCome();

    /** Ends the process as the signal would have done; returns when none has come. */
    static void follow();
};

}  // namespace quen::reprocess
