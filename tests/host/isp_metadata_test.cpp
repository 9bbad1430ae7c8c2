#include <algorithm>
#include <cstring>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mtkcam/isp_metadata.h>

#include "host/metadata/IspMetadataReader.h"
#include "host/metadata/MetadataText.h"

using quen::host::IspMetadataReader;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

std::vector<unsigned char> bufferOf(int32_t first, int32_t second) {
    std::vector<unsigned char> buffer;
    EXPECT_EQ(initial_isp_metadata_vector(buffer, 2), 0);
    EXPECT_EQ(add_isp_metadata_entry(buffer, 0x800b000e, 1, &first, 4, nullptr), 0);
    EXPECT_EQ(add_isp_metadata_entry(buffer, 0x800b000e, 1, &second, 4, nullptr), 0);
    return buffer;
}

TEST(IspMetadata, WriterLaysOutHeaderAndRecords) {
    std::vector<unsigned char> buffer{1, 2, 3};
    ASSERT_EQ(initial_isp_metadata_vector(buffer, 1), 0);
    auto const* const storage = buffer.data();
    int64_t mode = -2;
    unsigned int used = 0;
    ASSERT_EQ(add_isp_metadata_entry(buffer, 0xc0030014, 2, &mode, 8, &used), 0);
    EXPECT_EQ(used, 76u);
    EXPECT_EQ(buffer.data(), storage) << "room was asked for beforehand";
    uint32_t words[19];
    ASSERT_EQ(buffer.size(), sizeof(words));
    memcpy(words, buffer.data(), sizeof(words));
    uint32_t const expected[19] = {0, 0, 0, 1, 20, 0xc0030014, 2, 8, 0, 0xfffffffe, UINT32_MAX};
    EXPECT_THAT(words, ElementsAreArray(expected));
}

TEST(IspMetadata, WriterRefusesWhatNoReaderCouldTake) {
    std::vector<unsigned char> buffer;
    unsigned char data[41] = {};
    EXPECT_NE(add_isp_metadata_entry(buffer, 1, 0, data, 1, nullptr), 0) << "no buffer yet";
    ASSERT_EQ(initial_isp_metadata_vector(buffer, 0), 0);
    ASSERT_EQ(add_isp_metadata_entry(buffer, 1, 0, data, 40, nullptr), 0);
    ASSERT_EQ(add_isp_metadata_entry(buffer, 2, 3, nullptr, 0, nullptr), 0);
    auto const before = buffer;
    int const errors[] = {add_isp_metadata_entry(buffer, 1, 0, data, 41, nullptr),
                          add_isp_metadata_entry(buffer, 1, 4, data, 4, nullptr),
                          add_isp_metadata_entry(buffer, 1, 1, nullptr, 4, nullptr),
                          add_isp_metadata_entry(buffer, 1, 1, data, 6, nullptr)};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_NE(errors[i], 0);
        EXPECT_EQ(std::count(errors, errors + 4, errors[i]), 1) << "one code for two faults";
    }
    EXPECT_EQ(buffer, before);
}

TEST(IspMetadata, ReaderFindsTheLastRecordOfATag) {
    auto buffer = bufferOf(1, 6003);
    float gains[] = {1.5F, 2.5F};
    ASSERT_EQ(add_isp_metadata_entry(buffer, 7, 3, gains, 8, nullptr), 0);
    int64_t times[] = {-5, 1LL << 40};
    ASSERT_EQ(add_isp_metadata_entry(buffer, 9, 2, times, 16, nullptr), 0);
    char letters[40] = "abc";  // the most that a record holds
    ASSERT_EQ(add_isp_metadata_entry(buffer, 10, 0, letters, 40, nullptr), 0);
    EXPECT_THAT(quen::host::ispMetadataText(buffer.data(), buffer.size()),
                EndsWith("float[2] 1.5 2.5\n0x00000009 ? int64[2] -5 1099511627776\n"
                         "0x0000000a ? byte[40] 97 98 99 0 0 0 0 0 0 0 0 0 0 0 0 0 ...\n"));
    // Records may begin anywhere behind the header.
    buffer.insert(buffer.begin() + 20, 3, 0xff);
    buffer[16] = 23;
    IspMetadataReader reader;
    ASSERT_TRUE(reader.parse(buffer.data(), buffer.size())) << reader.error();
    EXPECT_EQ(reader.count(), 5u);
    EXPECT_EQ(reader.int32Of(0x800b000e), 6003);
    EXPECT_EQ(reader.int32Of(0x800b000e, 1), std::nullopt);
    EXPECT_EQ(reader.int64Of(0x800b000e), std::nullopt);
    EXPECT_EQ(reader.floatOf(7, 1), 2.5F);
    EXPECT_EQ(reader.int64Of(9, 1), 1LL << 40);
    EXPECT_EQ(reader.byteOf(10, 2), 'c');
    EXPECT_EQ(reader.find(8), std::nullopt);
    EXPECT_TRUE(reader.parse(nullptr, 0));
    EXPECT_EQ(reader.count(), 0u);
}

TEST(IspMetadata, ReaderRefusesMalformedBuffers) {
    struct Fault {
        size_t offset;
        uint32_t value;
        char const* error;
    };
    Fault const faults[] = {
            {12, 3, "too short for its records"},
            {12, UINT32_MAX, "too short for its records"},
            {16, 19, "outside"},
            {16, UINT32_MAX, "outside"},
            {20 + 4, 4, "unknown type"},
            {76 + 8, 44, "more data"},
            {76 + 8, 6, "whole number"},
    };
    IspMetadataReader reader;
    for (Fault const& fault : faults) {
        auto buffer = bufferOf(1, 2);
        memcpy(buffer.data() + fault.offset, &fault.value, 4);
        EXPECT_FALSE(reader.parse(buffer.data(), buffer.size()));
        EXPECT_THAT(reader.error(), HasSubstr(fault.error));
        EXPECT_EQ(reader.find(0x800b000e), std::nullopt);
    }
    auto const buffer = bufferOf(1, 2);
    for (size_t size = 1; size < buffer.size(); ++size) {
        std::vector<unsigned char> const cut(buffer.begin(),
                                             buffer.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_FALSE(reader.parse(cut.data(), cut.size())) << size;
    }
}

TEST(IspMetadata, TextNamesTagsTypesAndValues) {
    auto buffer = bufferOf(1, -2);
    std::vector<unsigned char> bytes(20, 9);
    ASSERT_EQ(add_isp_metadata_entry(buffer, 0x12345678, 0, bytes.data(), 20, nullptr), 0);
    EXPECT_EQ(quen::host::ispMetadataText(buffer.data(), buffer.size()),
              "0x800b000e tuningMode int32[1] 1\n"
              "0x800b000e tuningMode int32[1] -2\n"
              "0x12345678 ? byte[20] 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9 ...\n");
    EXPECT_THAT(quen::host::ispMetadataText(buffer.data(), 30), HasSubstr("malformed"));
    add_isp_metadata_entry(buffer, 0x12345678, 0, bytes.data(), 16, nullptr);
    EXPECT_THAT(quen::host::ispMetadataText(buffer.data(), buffer.size()), EndsWith(" 9 9\n"));
}

}  // namespace
