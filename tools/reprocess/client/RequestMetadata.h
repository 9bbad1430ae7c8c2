#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <system/camera_metadata.h>

#include "client/RequestOptions.h"

namespace quen::reprocess {

/** The tags that this client writes or reads. */
enum RequestTag : uint32_t {
    kTagJpegOrientation = ANDROID_JPEG_ORIENTATION,
    kTagJpegQuality = ANDROID_JPEG_QUALITY,
    kTagCurrentMode = 0xc0030014,
    kTagEngineerMode = 0xc0030022,
    kTagFusion = 0xc0030092,
    kTagCameraId = 0xc0030099,
    kTagRequestNumber = 0xc00300a2,
    kTagCurrentUiMode = 0xc0080001,
    kTagSceneMode = 0xc0090002,
    kTagThreeAIndex = 0xc00c0018,
};

/** The metadata of one request, and of the session that it is made in. */
class RequestMetadata {
  public:
    /**
     * Sets what a camera client sends with every request, then the assignments of the command
     * line in their order.
     *
     * @param orientation degrees clockwise
     * @throws Failure when an assignment is wrong
     */
    RequestMetadata(RequestOptions const& options, int orientation, int32_t frameNumber);

    camera_metadata* get() const { return mData.get(); }

    /**
     * The metadata of the session: the camera and the UI mode, so that the first configuration
     * suits the request. Nothing else: a refused configuration ends the process, a refused request
     * fails only itself.
     */
    RequestMetadata sessionMetadata() const;

    /**
     * Sets a tag; replaces its previous items.
     *
     * @param items packed as the tag's type says
     * @throws Failure for a tag whose type is not known
     */
    void set(uint32_t tag, void const* items, size_t count);
    void setInt32(uint32_t tag, int32_t value) { set(tag, &value, 1); }

    /** The first item of a tag; none when it is absent or not int32. */
    std::optional<int32_t> int32At(uint32_t tag) const;

  private:
    RequestMetadata();

    struct Free {
        void operator()(camera_metadata* data) const { free_camera_metadata(data); }
    };

    std::unique_ptr<camera_metadata, Free> mData;
};

/** The first item of an int32 tag in any metadata; none when it is absent or of another type. */
std::optional<int32_t> findInt32(camera_metadata const* metadata, uint32_t tag);

}  // namespace quen::reprocess
