#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iomanip>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "host/GrallocTest.h"
#include "support/Golden.h"

namespace {

using namespace android::gralloc4;

using quentest::Error;
using quentest::hidl_handle;
using quentest::hidl_vec;
using quentest::IMapper;
using GrallocMetadata = quentest::GrallocTest;

// What comes of bytes decoded and encoded again; nothing when they are refused.
template <typename T, typename Value>
hidl_vec<uint8_t> recoded(hidl_vec<uint8_t> const& bytes,
                          android::status_t (&decode)(hidl_vec<uint8_t> const&, T*),
                          android::status_t (&encode)(Value, hidl_vec<uint8_t>*)) {
    T value{};
    hidl_vec<uint8_t> again;
    bool const isDecoded = decode(bytes, &value) == android::OK;
    EXPECT_EQ(decode(bytes, nullptr), android::BAD_VALUE);
    EXPECT_EQ(encode(value, nullptr), android::BAD_VALUE);
    return isDecoded && encode(value, &again) == android::OK ? again : hidl_vec<uint8_t>();
}
#define C(Name) [](auto const& bytes) { return recoded(bytes, decode##Name, encode##Name); }

// Android's clients have decoders of their own. What one import sets every other one tells, and
// what is reserved is shared likewise.
TEST_F(GrallocMetadata, TellsEveryPropertyInAndroidsForm) {
    using namespace aidl::android::hardware::graphics::common;
    IMapper::BufferDescriptorInfo const info = {"two",          65, 3, 1, PixelFormat::YV12,
                                                1ULL << 40 | 3, 100};
    hidl_handle const raw = allocate(describe(info, Error::NONE), 1, Error::NONE);
    void* const buffer = import(raw);
    void* const other = import(raw);
    using Dump = IMapper::BufferDump;
    using List = hidl_vec<IMapper::MetadataTypeDescription>;
    List const list = call<List>(Error::NONE, &MemfdMapper::listSupportedMetadataTypes);
    ASSERT_EQ(list.size(), 20u);
    auto const fresh = call<Dump>(Error::NONE, &MemfdMapper::dumpBuffer, buffer).metadataDump;
    // Id, codes, size, chroma siting, planes and crop come with the allocation.
    std::set<int64_t> const lateTypes = {1, 7, 8, 10, 14, 15, 16};
    for (size_t i = 0; i < list.size(); ++i) {
        int64_t const type = list[i].metadataType.value;
        SCOPED_TRACE(type);
        EXPECT_EQ(mapper->set(buffer, list[i].metadataType, hidl_vec<uint8_t>{1}),
                  type <= 6 || type == 9 ? Error::BAD_VALUE : Error::UNSUPPORTED);
        EXPECT_TRUE(list[i].isGettable && list[i].isSettable == (type >= 17));
        bool const isKnown = lateTypes.count(type) == 0;
        EXPECT_EQ(call<hidl_vec<uint8_t>>(isKnown ? Error::NONE : Error::UNSUPPORTED,
                                          &MemfdMapper::getFromBufferDescriptorInfo, info,
                                          list[i].metadataType),
                  isKnown ? fresh[i].metadata : hidl_vec<uint8_t>());
    }
    get(buffer, MetadataType_Smpte2094_40, Error::UNSUPPORTED);

    hidl_vec<uint8_t> encoded;
    auto const expectShared = [&](IMapper::MetadataType const& type) {
        EXPECT_EQ(mapper->set(buffer, type, encoded), Error::NONE) << type.value;
        EXPECT_EQ(get(other, type, Error::NONE), encoded) << type.value;
    };
    encodeDataspace(Dataspace::JFIF, &encoded);
    expectShared(MetadataType_Dataspace);
    encodeCta861_3(Cta861_3{500, 200}, &encoded);
    expectShared(MetadataType_Cta861_3);
    encodeSmpte2086(Smpte2086{{1, 2}, {3, 4}, {5, 6}, {7, 8}, 9, 10}, &encoded);
    expectShared(MetadataType_Smpte2086);
    encodeBlendMode(BlendMode::COVERAGE, &encoded);
    expectShared(MetadataType_BlendMode);

    std::function<hidl_vec<uint8_t>(hidl_vec<uint8_t> const&)> const codecs[] = {
            C(BufferId),
            C(Name),
            C(Width),
            C(Height),
            C(LayerCount),
            C(PixelFormatRequested),
            C(PixelFormatFourCC),
            C(PixelFormatModifier),
            C(Usage),
            C(AllocationSize),
            C(ProtectedContent),
            C(Compression),
            C(Interlaced),
            C(ChromaSiting),
            C(PlaneLayouts),
            C(Crop),
            C(Dataspace),
            C(BlendMode),
            C(Smpte2086),
            C(Cta861_3),
            C(Smpte2094_40)};
    auto const all = call<hidl_vec<Dump>>(Error::NONE, &MemfdMapper::dumpBuffers);
    ASSERT_EQ(all.size(), 2u);
    std::vector<std::string> lines;
    for (size_t i = 0; i < list.size(); ++i) {
        auto const& [type, bytes] = all[0].metadataDump[i];
        EXPECT_EQ(get(buffer, type, Error::NONE), bytes);
        EXPECT_EQ(all[1].metadataDump[i].metadata, bytes);
        for (size_t codec = 0; codec < std::size(codecs); ++codec) {
            EXPECT_EQ(codecs[codec](bytes), codec == i ? bytes : hidl_vec<uint8_t>()) << codec;
        }
        std::vector<uint8_t> changed = bytes;
        changed.push_back(0);  // whatever is added, cut off or of another type is noticed
        EXPECT_EQ(codecs[i](changed).size(), 0u);
        for (changed.pop_back(); changed.size() > 1;) {
            changed.pop_back();
            EXPECT_EQ(codecs[i](changed).size(), 0u);
        }
        for (size_t at = 0; at < bytes.size(); ++at) {
            for (uint8_t const value : {0x80, 0x40, 0x01}) {  // in a count: below 0, far too many
                changed = bytes;
                changed[at] = value;
                hidl_vec<uint8_t> const again = codecs[i](changed);
                EXPECT_TRUE(again.size() == 0 || again == hidl_vec<uint8_t>(changed)) << at;
            }
        }
        std::ostringstream line;
        line << type.value << ' ' << std::hex << std::setfill('0');
        for (uint8_t const byte : bytes) {
            line << std::setw(2) << +byte;
        }
        lines.push_back(line.str());
    }
    lines.erase(lines.begin());  // the id is another in each run
    EXPECT_EQ(lines, quentest::goldenLines("properties"));
    encodeSmpte2094_40(std::vector<uint8_t>{1, 2}, &encoded);
    EXPECT_EQ(codecs[20](encoded), encoded);
    encoded = hidl_vec<uint8_t>();  // unset
    expectShared(MetadataType_Cta861_3);
    expectShared(MetadataType_Smpte2086);

    char* regions[2] = {};
    for (size_t i = 0; i < 2; ++i) {
        auto const keep = [&](Error error, void* region, uint64_t size) {
            EXPECT_TRUE(error == Error::NONE && size == 100);
            regions[i] = static_cast<char*>(region);
        };
        EXPECT_TRUE(mapper->getReservedRegion(i == 0 ? buffer : other, keep).isOk());
    }
    strcpy(regions[0], "shared");
    memset(lock(buffer), 0, 640);  // the whole picture
    EXPECT_STREQ(regions[1], "shared");
    encodeBlendMode(BlendMode::COVERAGE, &encoded);
    EXPECT_EQ(get(other, MetadataType_BlendMode, Error::NONE), encoded);
}
#undef C

TEST_F(GrallocMetadata, ComparesDescriptionsWithABuffer) {
    IMapper::BufferDescriptorInfo const info = {"", 64, 2, 1, PixelFormat::YV12, 3, 100};
    void* const buffer = import(allocate(describe(info, Error::NONE), 1, Error::NONE));
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride), Error::NONE);
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride + 1), Error::BAD_VALUE);
    for (IMapper::BufferDescriptorInfo const& larger :
         {IMapper::BufferDescriptorInfo{"", 65, 2, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 3, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 2, 1, PixelFormat::YCRCB_420_SP, 3, 100},
          {"", 64, 2, 2, PixelFormat::YV12, 3, 100},
          {"", 64, 2, 1, PixelFormat::YV12, 3, 101}}) {
        EXPECT_EQ(mapper->validateBufferSize(buffer, larger, stride), Error::BAD_VALUE);
    }
    std::string const longName(210, 'n');
    IMapper::BufferDescriptorInfo wanted = {longName, 64, 2, 1, PixelFormat::RAW16, 3, 0};
    void* const plain = import(allocate(describe(wanted, Error::NONE), 1, Error::NONE));
    EXPECT_EQ(get(plain, MetadataType_Name, decodeName), longName.substr(0, 200));
    EXPECT_TRUE(call<bool>(Error::NONE, &MemfdMapper::isSupported, wanted));
    wanted.width = 0;
    EXPECT_FALSE(call<bool>(Error::NONE, &MemfdMapper::isSupported, wanted));
    call<hidl_vec<uint8_t>>(Error::BAD_VALUE, &MemfdMapper::getFromBufferDescriptorInfo, wanted,
                            MetadataType_Width);
    auto const expectSizes = [](Error error, auto fds, auto ints) {
        EXPECT_TRUE(error == Error::NONE && fds == 1 && ints == 14) << "one of memory";
    };
    EXPECT_TRUE(mapper->getTransportSize(plain, expectSizes).isOk());
    auto const expectNone = [](Error error, auto region, auto size) {
        EXPECT_TRUE(error == Error::BAD_BUFFER && size == 0) << region;
    };
    EXPECT_TRUE(mapper->getReservedRegion(this, expectNone).isOk());
}

}  // namespace
