#pragma once

#include <system/camera_metadata.h>

class QuenParameterUpdater {
  public:
    /** Dumps a request's metadata for debugging. `metadata` may be null. */
    static void dumpMetadata(camera_metadata* metadata, char const* stage, int frameNumber);
};
