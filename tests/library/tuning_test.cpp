#include <host/metadata/EventText.h>

#include <quenOfflineDevice/metadata/RequestMetadata.h>
#include <optional>

#include "support/DeviceTest.h"
#include "support/MetadataBuilder.h"
#include "support/Transcript.h"

using namespace quentest;

namespace {

using Bits = std::vector<int>;
using List = std::vector<int32_t>;
using Tags = std::vector<std::pair<uint32_t, int32_t>>;  // tags other than the mode

constexpr bool kRaw14bit = true;

class TuningTest : public testing::Test {
  protected:
    ~TuningTest() override { quen::host::clearEventString("APP_NAME"); }

    /** Prepares a raw request whose mode has these bits, or that has no mode at all. */
    void expect(std::optional<Bits> const& bits, Tags const& others, int32_t tuningMode,
                List const& features, bool raw14bit = false) {
        SCOPED_TRACE(testing::PrintToString(std::pair(bits, others)));
        NSCam::IMetadata metadata;
        if (bits) {
            uint64_t mode = 0;
            for (int bit : *bits) {
                mode |= uint64_t{1} << bit;
            }
            setItems<int64_t>(metadata, tags::kCurrentMode, {static_cast<int64_t>(mode)});
        }
        for (auto const& [tag, value] : others) {
            setItems<int32_t>(metadata, tag, {value});
        }
        quen::updateMetaData(&metadata, 0, 0, "RAW2YUV", raw14bit);
        EXPECT_EQ(int32sOf(metadata, tags::kTuningMode), List{tuningMode});
        EXPECT_EQ(int32sOf(metadata, tags::kFeatureHint), features);
        EXPECT_TRUE(hasTag(metadata, tags::kFeatureHint));
    }

    Transcript mLog;  // keeps the lines from standard error
};

TEST_F(TuningTest, EachModeAndWhichOfTwoDecides) {
    auto const row = [&](Bits const& bits, int32_t feedback, int32_t uiMode, int32_t tuningMode,
                         List const& features, bool raw14bit = false) {
        expect(bits, {{tags::kFeedback, feedback}, {tags::kUiMode, uiMode}}, tuningMode, features,
               raw14bit);
    };
    row({2}, 0x00, -1, 6019, {});
    row({2}, 0x01, -1, 6019, {});
    row({2}, 0x01, -1, 6028, {}, kRaw14bit);
    row({2}, 0x1e, -1, 6027, {}, kRaw14bit);
    row({2, 1}, 0x00, -1, 6019, {28});
    row({1}, 0x01, -1, 6003, {28}, kRaw14bit);
    row({1, 3, 18}, 0x00, -1, 6003, {28});
    row({3}, 0x01, -1, 6002, {});
    row({3, 18}, 0x18, -1, 6001, {7});
    row({18}, 0x09, -1, 6018, {7});
    row({18, 24, 27}, 0x08, -1, 6004, {7});
    row({24}, 0x01, -1, 6005, {});
    row({24, 35}, 0x00, -1, 6005, {29});
    row({24, 27, 35}, 0x00, -1, 6005, {31});
    row({35, 51}, 0x10, -1, 6026, {29});
    row({36}, 0x01, -1, 6026, {});
    row({36, 27}, 0x00, -1, 6026, {31});
    row({27, 52}, 0x00, -1, 6001, {31});
    row({51, 52}, 0x00, -1, 6001, {29});
    row({52, 53}, 0x01, -1, 6007, {});
    row({53, 13}, 0x01, 35, 6009, {});
    row({13}, 0x01, 35, 6010, {});
    row({13}, 0x00, 40, 0, {});
    row({13, 55}, 0x00, 35, 6010, {});
    row({13, 55}, 0x00, 40, 6025, {7});
    row({55}, 0x00, 35, 0, {});
    row({52, 55}, 0x00, 40, 6007, {});
    row({}, 0x19, 40, 0, {}, kRaw14bit);
    row({0,  4,  5,  6,  7,  8,  9,  10, 11, 12, 14, 15, 16, 17, 19, 20, 21,
         22, 23, 25, 26, 28, 29, 30, 31, 32, 33, 34, 37, 38, 39, 40, 41, 42,
         43, 44, 45, 46, 47, 48, 49, 50, 54, 56, 57, 58, 59, 60, 61, 62, 63},
        0x19, 35, 0, {});
    expect(Bits{13, 55}, {}, 0, {});  // without a UI mode
    // Without a mode every bit counts as set.
    expect(std::nullopt, {}, 6019, {28});
    expect(std::nullopt, {{tags::kFeedback, 1}}, 6028, {28}, kRaw14bit);
}

TEST_F(TuningTest, EachSceneByFeedback) {
    int32_t const feedbacks[] = {0x00, 0x01, 0x08, 0x09, 0x10, 0x11, 0x18, 0x19, 0x06};
    struct {
        std::vector<int32_t> scenes;
        int32_t tuningModes[9];  // in the order of the feedbacks
    } const rows[] = {
            {{0x080000}, {6006, 6006, 6011, 6011, 6022, 6022, 6011, 6011, 6006}},
            {{0x100000}, {6007, 6007, 6011, 6011, 6021, 6021, 6011, 6011, 6007}},
            {{0x180000}, {6009, 6009, 6011, 6011, 6022, 6022, 6011, 6011, 6009}},
            {{0x200000}, {6011, 6011, 6011, 6011, 6011, 6011, 6011, 6011, 6011}},
            {{0x280000}, {6012, 6012, 6012, 6015, 6012, 6012, 6012, 6015, 6012}},
            {{0x300000, 0x680000}, {6016, 6016, 6016, 6017, 6016, 6016, 6016, 6017, 6016}},
            {{0x400000}, {6013, 6014, 6013, 6014, 6013, 6014, 6013, 6014, 6013}},
            {{0x700000}, {6009, 6009, 6011, 6011, 6020, 6020, 6011, 6011, 6009}},
            {{0x780000}, {6023, 6024, 6023, 6024, 6023, 6024, 6023, 6024, 6023}},
            {{0x800000}, {6029, 6030, 6029, 6030, 6029, 6030, 6029, 6030, 6029}},
            {{0x380000, 0x480000, 0x500000, 0x580000, 0x600000, -1},
             {6001, 6002, 6001, 6002, 6001, 6002, 6001, 6002, 6001}},
    };
    for (auto const& row : rows) {
        for (size_t i = 0; i < std::size(feedbacks); ++i) {
            for (int32_t const scene : row.scenes) {
                bool const clear = (feedbacks[i] & 0x18) == 0;
                int32_t const feature = scene == 0x400000 ? (clear ? 24 : 26) : (clear ? 29 : 31);
                Tags const others{{tags::kSceneMode, scene}, {tags::kFeedback, feedbacks[i]}};
                expect(Bits{27}, others, row.tuningModes[i], {31});
                expect(Bits{51}, others, row.tuningModes[i], {feature});
            }
        }
    }
}

TEST_F(TuningTest, Bit24HasAFeatureInOneApplicationOnly) {
    for (char const* const other : {"", "starplate", "StarPlate2"}) {
        quen::host::setEventString("APP_NAME", other);
        expect(Bits{24}, {}, 6005, {});
        expect(Bits{24, 35}, {}, 6005, {29});
    }
    quen::host::setEventString("APP_NAME", "StarPlate");
    expect(Bits{24}, {}, 6005, {28});
    expect(Bits{24, 35}, {}, 6005, {28});
    expect(Bits{18, 24}, {}, 6004, {7});
    expect(Bits{24, 27}, {}, 6005, {31});
    expect(Bits{24}, {{tags::kDualSlave, 0}}, 0, {28});
}

TEST_F(TuningTest, BypassDepthAndFastDisplay) {
    expect(Bits{1}, {}, 6003, {28});
    expect(Bits{1}, {{tags::kDualSlave, 0}}, 0, {28});
    expect(Bits{1}, {{tags::kDualSlave, 0}, {tags::kFusion, 0}}, 0, {28});
    expect(Bits{1}, {{tags::kDualSlave, -2}}, 6003, {28});
    expect(Bits{1}, {{tags::kDualSlave, 5}, {tags::kFusion, -1}}, 6001, {28});
    expect(Bits{1}, {{tags::kDualSlave, -1}, {tags::kFusion, 1}}, 6003, {28});
    expect(Bits{1}, {{tags::kEngineerMode, 0x01}, {tags::kFusion, 1}}, 6001, {28});
    expect(Bits{1}, {{tags::kEngineerMode, 0x02}}, 0, {28});
    expect(Bits{1}, {{tags::kEngineerMode, 0x04}}, 0, {28});
    expect(Bits{1}, {{tags::kEngineerMode, 0x80}}, 0, {28});
    expect(Bits{1}, {{tags::kEngineerMode, 0x78}}, 6003, {28});
    expect(Bits{1}, {{tags::kEngineerMode, -1}}, 6003, {28});
    expect(Bits{1}, {{tags::kEngineerMode, -2}}, 0, {28});
    expect(Bits{1}, {{tags::kForDepth, 1}}, 0, {});
    expect(Bits{1}, {{tags::kForDepth, -3}, {tags::kFusion, 1}}, 6001, {});
    expect(Bits{1}, {{tags::kForDepth, 0}, {tags::kFastDisplay, 0}}, 6003, {28});
    expect(Bits{1}, {{tags::kFastDisplay, 1}}, 0, {});
    expect(Bits{1}, {{tags::kFastDisplay, 2}}, 6003, {28});
    // A bypass stands before the fast-display rule, but not for the list.
    expect(Bits{1}, {{tags::kFastDisplay, 1}, {tags::kDualSlave, 0}, {tags::kFusion, 1}}, 6001, {});
    // The code that comes with a tuning mode stays when the mode goes, but is not there in a
    // bypass.
    expect(Bits{55}, {{tags::kUiMode, 40}, {tags::kFastDisplay, 1}}, 0, {7});
    expect(Bits{55}, {{tags::kUiMode, 40}, {tags::kDualSlave, 0}}, 0, {});
}

}  // namespace
