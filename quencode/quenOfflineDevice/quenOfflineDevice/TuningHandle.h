#pragma once

#include <vector>

#include <cutils/native_handle.h>

/**
 * Frees the native handles that are built around 3A descriptors.
 *
 * Such a handle reaches the request's records without ownership: what copies it clones it, and
 * closing it would close the descriptor slot, which holds no descriptor of ours. A scope lives as
 * long as the request's local records do and then frees the handles made meanwhile, their
 * descriptors untouched. Scopes nest; each belongs to one thread.
 */
class TuningHandleScope {
  public:
    TuningHandleScope();
    ~TuningHandleScope();

    TuningHandleScope(TuningHandleScope const&) = delete;
    TuningHandleScope& operator=(TuningHandleScope const&) = delete;

    /**
     * Builds a handle around a 3A descriptor: one descriptor slot holding 0, then two integers, the
     * descriptor (where the result side looks for it) and 0.
     *
     * Call within a scope of the same thread, which frees the handle.
     */
    static native_handle_t* wrap(int descriptor);

  private:
    std::vector<native_handle_t*> mHandles;
    TuningHandleScope* const mOuter;
};
