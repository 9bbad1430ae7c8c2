#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gralloctypes/Gralloc4.h>

#include "host/GrallocTest.h"

namespace {

using namespace android::gralloc4;

using aidl::android::hardware::graphics::common::PlaneLayout;
using quentest::Error;
using quentest::hidl_handle;
using quentest::hidl_vec;
using quentest::IMapper;
using GrallocMetadata = quentest::GrallocTest;

// What one import sets every other one tells, and what is reserved is shared likewise.
TEST_F(GrallocMetadata, TellsEveryPropertyAndKeepsWhatIsSet) {
    using namespace aidl::android::hardware::graphics::common;
    IMapper::BufferDescriptorInfo const info = {"two",          64, 2, 1, PixelFormat::YV12,
                                                1ULL << 40 | 3, 100};
    hidl_handle const raw = allocate(describe(info, Error::NONE), 1, Error::NONE);
    void* const buffer = import(raw);
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride), Error::NONE);
    EXPECT_EQ(mapper->validateBufferSize(buffer, info, stride + 1), Error::BAD_VALUE);
    for (IMapper::BufferDescriptorInfo const& larger :
         {IMapper::BufferDescriptorInfo{"", 65, 2, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 3, 1, PixelFormat::YV12, 3, 100},
          {"", 64, 2, 1, PixelFormat::YCRCB_420_SP, 3, 100},
          {"", 64, 2, 1, PixelFormat::YV12, 3, 101}}) {
        EXPECT_EQ(mapper->validateBufferSize(buffer, larger, stride), Error::BAD_VALUE);
    }
    using List = hidl_vec<IMapper::MetadataTypeDescription>;
    List const list = call<List>(Error::NONE, &MemfdMapper::listSupportedMetadataTypes);
    auto const dump = call<IMapper::BufferDump>(Error::NONE, &MemfdMapper::dumpBuffer, buffer);
    ASSERT_EQ(list.size(), 20u);
    // Id, codes, size, chroma siting, planes and crop come with the allocation.
    std::set<int64_t> const lateTypes = {1, 7, 8, 10, 14, 15, 16};
    for (size_t i = 0; i < list.size(); ++i) {
        SCOPED_TRACE(list[i].metadataType.value);
        EXPECT_EQ(get(buffer, list[i].metadataType, Error::NONE), dump.metadataDump[i].metadata);
        hidl_vec<uint8_t> const nothing = {1};
        bool const isSettled = list[i].metadataType.value <= 6 || list[i].metadataType.value == 9;
        EXPECT_EQ(mapper->set(buffer, list[i].metadataType, nothing),
                  isSettled ? Error::BAD_VALUE : Error::UNSUPPORTED);
        bool const isKnown = lateTypes.count(list[i].metadataType.value) == 0;
        EXPECT_EQ(call<hidl_vec<uint8_t>>(isKnown ? Error::NONE : Error::UNSUPPORTED,
                                          &MemfdMapper::getFromBufferDescriptorInfo, info,
                                          list[i].metadataType),
                  isKnown ? dump.metadataDump[i].metadata : hidl_vec<uint8_t>());
    }
    get(buffer, MetadataType_Smpte2094_40, Error::UNSUPPORTED);
    std::vector<Rect> const crop = get(buffer, MetadataType_Crop, decodeCrop);
    ASSERT_EQ(crop.size(), 3u);
    EXPECT_TRUE(crop[1].right == 32 && crop[1].bottom == 1);
    EXPECT_EQ(get(buffer, MetadataType_Usage, decodeUsage), info.usage);

    void* const other = import(raw);
    hidl_vec<uint8_t> encoded;
    auto const expectShared = [&](IMapper::MetadataType const& type) {
        EXPECT_EQ(mapper->set(buffer, type, encoded), Error::NONE) << type.value;
        EXPECT_EQ(get(other, type, Error::NONE), encoded) << type.value;
    };
    encodeCta861_3(Cta861_3{500, 200}, &encoded);
    expectShared(MetadataType_Cta861_3);
    encodeSmpte2086(Smpte2086{{1, 2}, {3, 4}, {5, 6}, {7, 8}, 9, 10}, &encoded);
    expectShared(MetadataType_Smpte2086);
    encodeBlendMode(BlendMode::COVERAGE, &encoded);
    expectShared(MetadataType_BlendMode);
    encoded = hidl_vec<uint8_t>();  // unset
    expectShared(MetadataType_Cta861_3);
    expectShared(MetadataType_Smpte2086);
    std::string const longName(210, 'n');
    void* const plain = import(allocate(
            describe({longName, 64, 2, 1, PixelFormat::RAW16, 3, 0}, Error::NONE), 1, Error::NONE));
    EXPECT_EQ(get(plain, MetadataType_Name, decodeName), longName.substr(0, 200));

    char* regions[2] = {};
    for (size_t i = 0; i < 2; ++i) {
        auto const keep = [&](Error error, void* region, uint64_t size) {
            EXPECT_TRUE(error == Error::NONE && size == 100);
            regions[i] = static_cast<char*>(region);
        };
        EXPECT_TRUE(mapper->getReservedRegion(i == 0 ? buffer : other, keep).isOk());
    }
    strcpy(regions[0], "shared");
    EXPECT_STREQ(regions[1], "shared");
    memset(lock(buffer), 0, 256);  // the whole picture
    EXPECT_STREQ(regions[1], "shared");
}

TEST(Gralloc4, NoticesBrokenPlaneLayouts) {
    PlaneLayout const plane = {
            {{PlaneLayoutComponentType_CR, 8, 9}}, 384, 16, 128, 33, 2, 256, 4, 3};
    hidl_vec<uint8_t> encoded;
    ASSERT_EQ(encodePlaneLayouts({plane}, &encoded), android::OK);
    std::vector<PlaneLayout> decoded;
    EXPECT_EQ(decodePlaneLayouts(encoded, &decoded), android::OK);

    // Whatever is cut off, added or counted wrong is noticed, and nothing is written.
    std::vector<uint8_t> const sound = encoded;
    std::vector<std::vector<uint8_t>> broken = {sound, sound};
    broken[0].push_back(0);
    broken[1].at(8) ^= 1;  // a letter of the type's name
    for (size_t size = sound.size(); size-- > 0;) {
        broken.emplace_back(sound.begin(), sound.begin() + static_cast<long>(size));
    }
    for (size_t const countByte : {7, 8 + 53 + 8, 8 + 53 + 8 + 7}) {
        for (uint8_t const count : {0x80, 0x40}) {  // below 0, and far too many
            broken.push_back(sound);
            broken.back().at(countByte) = count;
        }
    }
    for (size_t i = 0; i < broken.size(); ++i) {
        EXPECT_EQ(decodePlaneLayouts(broken[i], &decoded), android::BAD_VALUE) << i;
    }
    EXPECT_EQ(encodePlaneLayouts(decoded, &encoded), android::OK);
    EXPECT_EQ(std::vector<uint8_t>(encoded), sound);
}

}  // namespace
