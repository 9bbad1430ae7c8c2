#pragma once

#include <cstddef>
#include <cstdint>

#include <hidl/HidlSupport.h>
#include <nscam/IMetadata.h>
#include <nscam/IMetadataTagSet.h>
#include <system/camera_metadata.h>
#include <utils/RefBase.h>

namespace NSCam {

/** `camera_metadata` to `IMetadata` and back. Any thread. */
class IMetadataConverter : public virtual android::RefBase {
  public:
    /** @param tagSet consulted for the types of tags; must outlive the converter */
    static android::sp<IMetadataConverter> createInstance(IMetadataTagSet const& tagSet);

    /**
     * Leaves out what a `camera_metadata` cannot hold: entries of tags that are neither Android's
     * nor a vendor's, of another type than the tag's, or of a type that it lacks. Logs each such
     * tag once, at debug level.
     *
     * @param buffer receives a new buffer, which the caller frees with `free_camera_metadata`;
     *        unchanged on failure
     * @param size receives its length in bytes when not null
     * @return false when there is no memory
     */
    virtual bool convert(IMetadata const& metadata, camera_metadata*& buffer,
                         size_t* size) const = 0;

    /**
     * As above, into a vector that points at the new buffer without owning it: the caller frees the
     * buffer with `free_camera_metadata`.
     */
    virtual bool convert(IMetadata const& metadata,
                         android::hardware::hidl_vec<uint8_t>& buffer) const = 0;

    /**
     * @param buffer not changed; of two entries of one tag the later counts
     * @param metadata receives the entries, in place of those with the same tags
     * @return false for a null buffer
     */
    virtual bool convert(camera_metadata const* buffer, IMetadata& metadata) const = 0;
};

}  // namespace NSCam
