#pragma once

#include <cstdint>

namespace quen::recorder {

/**
 * Says which device object this thread is calling, for as long as the object lives: the ISP's
 * devices are opened inside such a call. Scopes of one thread nest.
 */
class CallScope {
  public:
    explicit CallScope(uint32_t session) : mOuter(tSession) { tSession = session; }
    ~CallScope() { tSession = mOuter; }
    CallScope(CallScope const&) = delete;
    CallScope& operator=(CallScope const&) = delete;

    /** The device object's number; 0 outside of its calls. */
    static uint32_t session() { return tSession; }

  private:
    static inline thread_local uint32_t tSession = 0;

    uint32_t const mOuter;
};

}  // namespace quen::recorder
