// The host's graphic buffers: properties as bytes, the descriptions and handles that neighbours
// hand in, and any order of calls on what comes of them.

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include <host/gralloc/MemfdAllocator.h>
#include <host/gralloc/MemfdMapper.h>
#include <quenGralloc/YCbCrLayout.h>

#include "support/DescriptorWatch.h"
#include "support/Require.h"

namespace gralloc4 = android::gralloc4;

using aidl::android::hardware::graphics::common::PlaneLayout;
using aidl::android::hardware::graphics::common::StandardMetadataType;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::graphics::common::V1_2::PixelFormat;
using android::hardware::graphics::mapper::V4_0::Error;
using android::hardware::graphics::mapper::V4_0::IMapper;
using quen::host::Layout;
using quen::host::MemfdAllocator;
using quen::host::MemfdMapper;
using quenfuzz::require;

namespace {

/** Decodes a property; what is decoded, encoded again, gives the same bytes. */
template <typename Value, typename Decode, typename Encode>
bool decodes(hidl_vec<uint8_t> const& bytes, Decode decode, Encode encode, Value& value) {
    if (decode(bytes, &value) != android::OK) {
        return false;
    }
    hidl_vec<uint8_t> encoded;
    require(encode(value, &encoded) == android::OK, "what was decoded can be encoded");
    require(encoded == bytes, "a property has one encoding");
    return true;
}

void decodeProperties(hidl_vec<uint8_t> const& bytes) {
    uint64_t number = 0;
    PixelFormat format{};
    std::string name;
    std::vector<PlaneLayout> planes;
    int const meanings =
            decodes(bytes, gralloc4::decodeBufferId, gralloc4::encodeBufferId, number) +
            decodes(bytes, gralloc4::decodeWidth, gralloc4::encodeWidth, number) +
            decodes(bytes, gralloc4::decodeHeight, gralloc4::encodeHeight, number) +
            decodes(bytes, gralloc4::decodeLayerCount, gralloc4::encodeLayerCount, number) +
            decodes(bytes, gralloc4::decodeUsage, gralloc4::encodeUsage, number) +
            decodes(bytes, gralloc4::decodeAllocationSize, gralloc4::encodeAllocationSize, number) +
            decodes(bytes, gralloc4::decodePixelFormatRequested,
                    gralloc4::encodePixelFormatRequested, format) +
            decodes(bytes, gralloc4::decodeName, gralloc4::encodeName, name);
    bool const arePlanes =
            decodes(bytes, gralloc4::decodePlaneLayouts, gralloc4::encodePlaneLayouts, planes);
    require(meanings + arePlanes <= 1, "bytes are one property at most");
    if (arePlanes) {
        uint8_t memory[64];
        android_ycbcr layout;
        quen::describeYCbCr(planes, nullptr, layout);
        quen::describeYCbCr(planes, memory, layout);
    }
}

/** Descriptors that handles are made of. None of them is one to wait for, as a fence, for long. */
std::array<int, 4> const gDescriptors = {-1, 1 << 20, eventfd(1, EFD_CLOEXEC),
                                         memfd_create("fuzz", MFD_CLOEXEC)};

/** A native handle of any contents; its descriptors stay the fuzzer's. */
class AnyHandle {
  public:
    /** @param sample may be null; else the handle may become one like it, but for one integer */
    AnyHandle(FuzzedDataProvider& input, native_handle_t const* sample) {
        native_handle_t& handle = *get();
        handle.version = sizeof(native_handle_t);
        if (sample != nullptr && input.ConsumeBool()) {
            handle.numFds = sample->numFds;
            handle.numInts = sample->numInts;
            int const slots = sample->numFds + sample->numInts;
            memcpy(handle.data, sample->data, static_cast<size_t>(slots) * sizeof(int));
            handle.data[input.ConsumeIntegralInRange<int>(1, slots - 1)] ^=
                    input.ConsumeIntegral<int>();
        } else {
            handle.numFds = input.ConsumeIntegralInRange<int>(-1, 3);
            handle.numInts = input.ConsumeIntegralInRange<int>(-1, 12);
            input.ConsumeData(handle.data, kSlots * sizeof(int));
            handle.data[0] = input.PickValueInArray(gDescriptors);
        }
        if (input.ConsumeIntegralInRange<int>(0, 15) == 0) {
            handle.version = input.ConsumeIntegral<int>();
        }
    }

    native_handle_t* get() { return reinterpret_cast<native_handle_t*>(mStorage); }

  private:
    static constexpr size_t kSlots = 16;

    alignas(native_handle_t) char mStorage[sizeof(native_handle_t) + kSlots * sizeof(int)] = {};
};

/** A mapper, an allocator and what an input has made of them. */
class Session {
  public:
    /** One call. The buffers it names need not exist. */
    void call(FuzzedDataProvider& input) {
        enum { kDescribe, kAllocate, kImport, kFree, kLock, kUnlock, kGet, kOthers, kCalls };
        switch (input.ConsumeIntegralInRange<int>(0, kCalls - 1)) {
            case kDescribe:
                return describe(input);
            case kAllocate:
                return allocate(input);
            case kImport:
                return import(input);
            case kFree:
                gMapper->freeBuffer(takeBuffer(input)).isOk();
                return;
            case kLock:
                return lock(input);
            case kUnlock:
                gMapper->setReleaseFences(input.ConsumeBool());
                gMapper->unlock(takeBuffer(input), [](Error, hidl_handle const&) {}).isOk();
                return;
            case kGet:
                return get(input);
            default:
                return callOthers(input);
        }
    }

    /** Gives back whatever is left. */
    ~Session() {
        for (void* const buffer : mImported) {
            bool locked = true;
            while (locked) {
                gMapper->unlock(buffer, [&](Error error,
                                            hidl_handle const&) { locked = error == Error::NONE; })
                        .isOk();
            }
            gMapper->freeBuffer(buffer).isOk();
        }
        auto const counts = gMapper->counts();
        require(counts.imports == 0 && counts.locks == 0, "nothing stays imported");
    }

  private:
    static constexpr uint32_t kLargestSide = 300;
    static constexpr size_t kMostBuffers = 4;

    static inline android::sp<MemfdAllocator> const gAllocator = new MemfdAllocator;
    static inline android::sp<MemfdMapper> const gMapper = new MemfdMapper;

    /** Of sizes that are quickly mapped, or of any: those are not locked then. */
    static IMapper::BufferDescriptorInfo takeDescription(FuzzedDataProvider& input) {
        constexpr PixelFormat kFormats[] = {PixelFormat::RGBA_8888,
                                            PixelFormat::YCRCB_420_SP,
                                            PixelFormat::RAW16,
                                            PixelFormat::BLOB,
                                            PixelFormat::YCBCR_420_888,
                                            PixelFormat::RAW10,
                                            PixelFormat::RAW12,
                                            PixelFormat::YV12,
                                            PixelFormat::IMPLEMENTATION_DEFINED};
        IMapper::BufferDescriptorInfo info{};
        info.name = input.ConsumeRandomLengthString(4);
        info.layerCount = 1;
        info.format = input.PickValueInArray(kFormats);
        info.width = input.ConsumeIntegralInRange<uint32_t>(0, kLargestSide);
        info.height = input.ConsumeIntegralInRange<uint32_t>(0, kLargestSide);
        if (input.ConsumeIntegralInRange<int>(0, 7) == 0) {
            info.width = input.ConsumeIntegral<uint32_t>();
            info.height = input.ConsumeIntegral<uint32_t>();
            info.layerCount = input.ConsumeIntegral<uint32_t>();
            info.format = static_cast<PixelFormat>(input.ConsumeIntegral<int32_t>());
            info.reservedSize = input.ConsumeIntegral<uint64_t>();
        }
        info.usage = input.ConsumeIntegral<uint64_t>();
        return info;
    }

    void* takeBuffer(FuzzedDataProvider& input) {
        size_t const index = input.ConsumeIntegralInRange<size_t>(0, kMostBuffers);
        if (index < mImported.size()) {
            return mImported[index];
        }
        return reinterpret_cast<void*>(input.ConsumeIntegral<uintptr_t>());
    }

    void describe(FuzzedDataProvider& input) {
        gMapper->createDescriptor(takeDescription(input),
                                  [&](Error error, auto const& descriptor) {
                                      require((error == Error::NONE) == (descriptor.size() != 0),
                                              "a descriptor comes with success");
                                      mDescriptor = descriptor;
                                  })
                .isOk();
    }

    void allocate(FuzzedDataProvider& input) {
        if (input.ConsumeIntegralInRange<int>(0, 3) == 0) {
            auto const bytes = input.ConsumeBytes<uint8_t>(input.ConsumeIntegral<uint8_t>());
            mDescriptor = bytes;
        }
        constexpr Layout kLayouts[] = {Layout::Nv12, Layout::Nv21, Layout::I420, Layout::Yv12};
        gAllocator->setLayout(PixelFormat::YCBCR_420_888, input.PickValueInArray(kLayouts));
        uint32_t const count = input.ConsumeIntegralInRange<uint32_t>(0, 2);
        gAllocator
                ->allocate(mDescriptor, count,
                           [&](Error error, uint32_t, auto const& buffers) {
                               require(buffers.size() == (error == Error::NONE ? count : 0),
                                       "all buffers or none");
                               if (buffers.size() != 0) {
                                   mRaw = buffers[0];
                               }
                           })
                .isOk();
    }

    void import(FuzzedDataProvider& input) {
        bool const asItIs = input.ConsumeBool();
        AnyHandle any(input, mRaw.getNativeHandle());
        hidl_handle handle;
        handle.setTo(asItIs ? const_cast<native_handle_t*>(mRaw.getNativeHandle()) : any.get());
        if (mImported.size() == kMostBuffers) {
            return;
        }
        gMapper->importBuffer(handle,
                              [&](Error error, void* buffer) {
                                  require((error == Error::NONE) == (buffer != nullptr),
                                          "a buffer comes with success");
                                  if (buffer != nullptr) {
                                      mImported.push_back(buffer);
                                  }
                              })
                .isOk();
    }

    void lock(FuzzedDataProvider& input) {
        void* const buffer = takeBuffer(input);
        if (sizeOf(buffer) > kLargestSide * kLargestSide * 4) {
            return;
        }
        IMapper::Rect area = {};
        input.ConsumeData(&area, sizeof(area));
        bool const whole = input.ConsumeBool();
        AnyHandle fence(input, nullptr);
        hidl_handle acquire;
        if (input.ConsumeBool()) {
            acquire.setTo(fence.get());
        }
        uint64_t const usage = input.ConsumeIntegralInRange<uint64_t>(0, 0x3f);
        gMapper->lock(buffer, usage, whole ? IMapper::Rect{} : area, acquire,
                      [&](Error error, void* data) {
                          require((error == Error::NONE) == (data != nullptr),
                                  "an address comes with success");
                          if (data != nullptr) {
                              auto* const bytes = static_cast<uint8_t*>(data);
                              bytes[0] = bytes[sizeOf(buffer) - 1] = 1;
                          }
                      })
                .isOk();
    }

    static uint64_t sizeOf(void* buffer) {
        uint64_t size = 0;
        gMapper->get(buffer, gralloc4::MetadataType_AllocationSize,
                     [&](Error error, hidl_vec<uint8_t> const& encoded) {
                         require(error != Error::NONE || gralloc4::decodeAllocationSize(
                                                                 encoded, &size) == android::OK,
                                 "a buffer's size is told");
                     })
                .isOk();
        return size;
    }

    void get(FuzzedDataProvider& input) {
        IMapper::MetadataType type{};
        type.name = input.ConsumeBool() ? GRALLOC4_STANDARD_METADATA_TYPE
                                        : input.ConsumeRandomLengthString(8);
        type.value = input.ConsumeBool() ? input.ConsumeIntegralInRange<int64_t>(0, 32)
                                         : input.ConsumeIntegral<int64_t>();
        gMapper->get(takeBuffer(input), type,
                     [](Error error, hidl_vec<uint8_t> const& encoded) {
                         // A property that is not set comes empty, with success.
                         require(error == Error::NONE || encoded.size() == 0,
                                 "a failure gives no property");
                         decodeProperties(encoded);
                     })
                .isOk();
    }

    void callOthers(FuzzedDataProvider& input) {
        void* const buffer = takeBuffer(input);
        IMapper::BufferDescriptorInfo const info = takeDescription(input);
        gMapper->validateBufferSize(buffer, info, input.ConsumeIntegral<uint32_t>()).isOk();
        gMapper->getTransportSize(buffer, [](Error, uint32_t, uint32_t) {}).isOk();
        gMapper->isSupported(info, [](Error, bool) {}).isOk();
        gMapper->getReservedRegion(buffer, [](Error, void*, uint64_t) {}).isOk();
        gMapper->flushLockedBuffer(buffer, [](Error, hidl_handle const&) {}).isOk();
        gMapper->rereadLockedBuffer(buffer).isOk();
        gMapper->dumpBuffer(buffer, [](Error, auto const&) {}).isOk();
    }

    hidl_vec<uint8_t> mDescriptor;
    hidl_handle mRaw;
    std::vector<void*> mImported;
};

}  // namespace

/** The last byte chooses: the bytes of a property, or calls. */
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    if (data[size - 1] % 2 == 0) {
        hidl_vec<uint8_t> bytes;
        bytes.setToExternal(const_cast<uint8_t*>(data), size - 1);
        decodeProperties(bytes);
        return 0;
    }
    quenfuzz::DescriptorWatch const watch;
    FuzzedDataProvider input(data, size - 1);
    Session session;
    for (int calls = 0; calls < 16 && input.remaining_bytes() != 0; ++calls) {
        session.call(input);
    }
    return 0;
}
