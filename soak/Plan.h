#pragma once

#include <cstdint>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

namespace quensoak {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;

/** What becomes of a request at the ISP. */
enum class Fate : uint8_t {
    Answered,      ///< by a thread of the ISP
    AtOnce,        ///< within the submission: a call without a callback does not wait yet
    Held,          ///< not before the session lets go of it
    Dropped,       ///< never
    Refused,       ///< the submission's status is an error
    NeverReached,  ///< the submission's transport fails on its way there
    ReplyLost,     ///< the submission's transport fails on its way back; answered like any other
};
inline constexpr int kFates = 7;

/** What goes wrong with the graphic buffers of a request. */
enum class BufferFault : uint8_t {
    None,
    AllocateInput,
    AllocateJpeg,
    AllocateTuning,
    ImportInput,
    ImportInputOnce,  ///< the second attempt succeeds
    ImportJpegFirst,  ///< every attempt of the first import; the JPEG's size is unknown
    ImportJpegSecond,
    ImportTuning,  ///< on the ISP's thread
    LockInput,
    LockJpegFirst,
    LockJpegSecond,
    LockTuning,
    LostDescriptor,  ///< transports: the operation is done, its reply fails
    LostFree,
    MapInput,  ///< the client's own buffers have a descriptor that cannot be mapped
    MapJpeg,
};
inline constexpr int kBufferFaults = 17;

/** What the ISP leaves at the end of a JPEG buffer. */
enum class Trailer : uint8_t { Right, WrongId, TooLarge, Negative };

/** What the 3A store answers for a request's output. */
enum class ThreeA : uint8_t { Given, None, TooSmall };

/** What a client passes to `process`. */
enum class Call : uint8_t {
    Good,
    NullParams,
    NullInput,
    NoOutputs,
    NullOutput,
    SizeBelowOne,
    BufferTooSmall,
};

/** Bytes of a client's JPEG buffer. */
inline constexpr uint32_t kBlobBytes = 4096;

/** The two ways of a picture. */
enum class Stage : uint8_t { RawToYuv, YuvToJpeg };

/** The pictures' sizes. */
struct Size {
    int width;
    int height;
};
inline constexpr Size kSizes[] = {{64, 48}, {48, 32}, {96, 64}, {32, 32}};

/** What is asked of a configuration: a request that differs from the last one reconfigures. */
struct Configuration {
    Stage stage;
    bool passThrough;  ///< YuvToJpeg: an input format that is not copied into a device buffer
    int width;
    int height;

    bool operator==(Configuration const& other) const {
        return stage == other.stage && passThrough == other.passThrough && width == other.width &&
               height == other.height;
    }
};

/**
 * One request, and everything that will befall it. Made before the request is, so that what must
 * come of it follows from the plan and not from what the library says.
 */
struct Plan {
    Configuration configuration;
    Call call = Call::Good;
    bool waits = false;  ///< no callback: `process` waits for the result
    bool reusesLastNumber = false;
    bool twoOutputs = false;
    bool realBuffers = false;  ///< the host's allocator and mapper
    uint8_t settings = 0;      ///< which of the client's metadata

    Fate fate = Fate::Answered;
    uint8_t copies = 1;           ///< how often it is answered
    bool copiesTogether = false;  ///< at the same moment on several threads
    bool earlyResult = false;
    bool moduleDies = false;   ///< while the request is outstanding
    bool strayResult = false;  ///< an answer for a number that nobody knows comes along
    isphal::Status status = isphal::Status::OK;
    uint8_t metadata = 0;  ///< which of the ISP's answers
    uint16_t delayMicroseconds = 0;

    ThreeA threeA = ThreeA::Given;
    BufferFault buffers = BufferFault::None;
    Trailer trailer = Trailer::Right;
    uint16_t jpegBytes = 0;

    uint32_t slowMicroseconds = 0;  ///< the client's callback takes that long
    bool listenerLost = false;      ///< the transport of the client's callback fails
};

}  // namespace quensoak
