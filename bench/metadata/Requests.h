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

/** How the entries of a client's metadata lie. */
enum class Order { Sorted, Shuffled };

/** What a client's metadata is made of. */
struct RequestShape {
    size_t entries;  ///< without the tuning data
    Order order = Order::Sorted;
    bool tuningBytes = false;  ///< with kTuningBytes bytes of tuning data
    bool threeABuffer = true;  ///< with the index of a 3A buffer
};

/**
 * A request as a client makes it: what the library reads of a capture, filled up to the number of
 * entries with tags of the phone maker's: bytes, int32 lists, rectangles, floats and int64, of 16
 * to 32 bytes, and single numbers, in the same share at every size.
 */
ClientMetadata makeRequest(RequestShape const& shape);

/** The platform's tags, and the types of those that requests are filled up with. */
NSCam::IMetadataTagSet const& benchTagSet();

/** Entries for an ISP's answer, the half of which the request has, too. */
NSCam::IMetadata makeResult(size_t entries);

}  // namespace quenbench
