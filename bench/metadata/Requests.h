#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <nscam/IMetadata.h>
#include <nscam/IMetadataTagSet.h>
#include <system/camera_metadata.h>

namespace quenbench {

/** Bytes of the tuning data that a request may carry in its metadata. */
inline constexpr size_t kTuningBytes = 0x1fa400;

using ClientMetadata = std::unique_ptr<camera_metadata, decltype(&free_camera_metadata)>;

/** The order of the entries of a client's metadata. */
enum class Order { Sorted, Shuffled };

/** The contents of a client's metadata. */
struct RequestShape {
    size_t entries;  ///< without the tuning data
    Order order = Order::Sorted;
    bool tuningBytes = false;  ///< with kTuningBytes bytes of tuning data
    bool threeABuffer = true;  ///< with the index of a 3A buffer
};

/**
 * A request of a client: the tags that the library reads, filled up to the number of entries with
 * tags of the phone maker: bytes, int32 lists, rectangles, floats and int64, of 16 to 32 bytes, and
 * single numbers, in the same proportion at every size.
 */
ClientMetadata makeRequest(RequestShape const& shape);

/** The tags of the platform, and of those that fill requests up. */
NSCam::IMetadataTagSet const& benchTagSet();

/** Entries of an ISP's result, half of which the request has as well. */
NSCam::IMetadata makeResult(size_t entries);

}  // namespace quenbench
