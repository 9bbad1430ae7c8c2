// Parts of quen-reprocess that no command line reaches on this platform, or only one in thousands.

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "buffers/YuvPlanes.h"
#include "trace/LogSpans.h"
#include "trace/Trace.h"
#include "trace/TraceFile.h"

namespace {

using namespace quen::reprocess;

constexpr uint32_t kWidth = 6;
constexpr uint32_t kHeight = 4;

// A picture of samples that differ, as an ISP may leave it in memory.
struct Memory {
    // Interleaved chroma in the order given by `crFirst`; planar, the plane that comes first.
    Memory(uint32_t stride, uint32_t step, bool crFirst) : bytes(200) {
        uint32_t const chromaStride = step == 2 ? stride : stride / 2;
        uint8_t* const data = bytes.data();
        uint8_t* const first = data + stride * kHeight;
        uint8_t* const second = step == 2 ? first + 1 : first + chromaStride * kHeight / 2;
        uint8_t* const cr = crFirst ? first : second;
        uint8_t* const cb = crFirst ? second : first;
        planes = {data,
                  cb,
                  cr,
                  static_cast<int>(stride),
                  static_cast<int>(chromaStride),
                  static_cast<int>(step)};
        for (uint32_t y = 0; y < kHeight; ++y) {
            for (uint32_t x = 0; x < kWidth; ++x) {
                data[y * stride + x] = static_cast<uint8_t>(10 * y + x);
                cb[y / 2 * chromaStride + x / 2 * step] =
                        static_cast<uint8_t>(100 + y / 2 * 10 + x / 2);
                cr[y / 2 * chromaStride + x / 2 * step] =
                        static_cast<uint8_t>(200 + y / 2 * 10 + x / 2);
            }
        }
    }
    std::vector<uint8_t> bytes;
    YuvPlanes planes;
};

std::vector<uint8_t> luma() {
    std::vector<uint8_t> samples;
    for (int i = 0; i < 24; ++i) {
        samples.push_back(static_cast<uint8_t>(i / 6 * 10 + i % 6));
    }
    return samples;
}

std::vector<uint8_t> joined(std::vector<uint8_t> all, std::vector<uint8_t> const& further) {
    all.insert(all.end(), further.begin(), further.end());
    return all;
}

}  // namespace

TEST(YuvPlanesTest, EveryLayoutIsPackedAsNv21AndI420) {
    auto const nv21 = joined(luma(), {200, 100, 201, 101, 202, 102, 210, 110, 211, 111, 212, 112});
    auto const i420 = joined(luma(), {100, 101, 102, 110, 111, 112, 200, 201, 202, 210, 211, 212});
    for (uint32_t const stride : {6u, 10u}) {
        for (uint32_t const step : {1u, 2u}) {
            for (bool const crFirst : {false, true}) {
                SCOPED_TRACE(std::to_string(stride) + " " + std::to_string(step) +
                             (crFirst ? " cr" : " cb"));
                Memory memory(stride, step, crFirst);
                YuvPlanes const& planes = memory.planes;
                uint8_t* const data = memory.bytes.data();
                std::vector<uint8_t> packed(nv21.size());
                packNv21(planes, kWidth, kHeight, packed.data());
                EXPECT_EQ(nv21, packed);
                packI420(planes, kWidth, kHeight, packed.data());
                EXPECT_EQ(i420, packed);
                EXPECT_EQ(stride == 6 && step == 2 && crFirst,
                          isPackedNv21(planes, kWidth, kHeight, data));
                bool const isInPlace = canPackInPlace(planes, kWidth, kHeight, data);
                EXPECT_EQ(step == 2, isInPlace);
                if (isInPlace) {
                    packNv21(planes, kWidth, kHeight, data);
                    EXPECT_TRUE(std::equal(nv21.begin(), nv21.end(), data));
                }
            }
        }
    }
}

TEST(YuvPlanesTest, PicturesThatLieElsewhereInTheirMemoryAreNotPackedInIt) {
    Memory memory(6, 2, true);
    YuvPlanes const& at = memory.planes;
    uint8_t const* const data = memory.bytes.data();
    YuvPlanes const others[] = {{at.y + 1, at.cb, at.cr, 6, 6, 2},
                                {at.y, at.cb - 2, at.cr - 2, 6, 6, 2},
                                {at.y, at.cb, at.cr, 5, 6, 2},
                                {at.y, at.cb, at.cr, 6, 5, 2}};
    for (YuvPlanes const& planes : others) {
        EXPECT_FALSE(isPackedNv21(planes, kWidth, kHeight, data));
        EXPECT_FALSE(canPackInPlace(planes, kWidth, kHeight, data));
    }
    YuvPlanes const further = {at.y, at.cb + 2, at.cr + 2, 6, 6, 2};
    EXPECT_FALSE(isPackedNv21(further, kWidth, kHeight, data));
    EXPECT_TRUE(canPackInPlace(further, kWidth, kHeight, data));
}

TEST(TraceTest, TheFirstEventsAreKeptAndTheOthersCounted) {
    constexpr size_t kMost = 262144;
    auto const trace = std::make_shared<Trace>();
    for (size_t i = 0; i < kMost + 3; ++i) {
        trace->addCounter("count", "events", static_cast<int64_t>(i));
    }
    Trace::Contents const contents = trace->take();
    ASSERT_EQ(kMost, contents.events.size());
    EXPECT_EQ(3u, contents.leftOut);
    EXPECT_EQ(static_cast<int64_t>(kMost) - 1, contents.events.back().notes[0].number);
    std::string const text = traceText({contents.begin, contents.tracks, {}, contents.leftOut});
    EXPECT_NE(std::string::npos, text.find("{\"events_left_out\":3}"));
    EXPECT_EQ(0u, trace->take().events.size());
}

TEST(TraceTest, AThreadLeavesItsTrackToTheNextOfItsKindThatBeginsLater) {
    auto const trace = std::make_shared<Trace>();
    auto const begin = Trace::Clock::now();
    auto const mark = [&trace](ThreadKind kind, Trace::Clock::time_point from) {
        std::thread([&] {
            trace->nameThread(kind, from);
            trace->nameThread(ThreadKind::Client);  // it is named already
            trace->addMark(TraceSource::Tool, "mark");
        }).join();
    };
    mark(ThreadKind::Isp, begin);
    mark(ThreadKind::Isp, Trace::Clock::now());
    mark(ThreadKind::Reader, Trace::Clock::now());
    mark(ThreadKind::Isp, begin);  // its work began while the first one's was going on
    Trace::Contents const contents = trace->take();
    std::string tracks;
    for (TraceEvent const& event : contents.events) {
        tracks += trackName(contents.tracks[event.track]) + ", ";
    }
    EXPECT_EQ("ISP 1, ISP 1, reader 1, ISP 2, ", tracks);
}

TEST(LogSpansTest, AnExitEndsTheLatestEntryOfItsFunction) {
    auto const trace = std::make_shared<Trace>();
    {
        LogSpans spans(*trace);
        for (char const* const line :
             {"I [q] a.cpp:1 outer() RAW2YUV E", "I [q] a.cpp:2 left() E",
              "I [q] a.cpp:3 inner() E", "I [q] a.cpp:4 inner() E", "I [q] a.cpp:5 inner() X",
              "I [q] a.cpp:6 stray() X", "I [q] a.cpp:7 outer() says neither",
              "I [q] a.cpp:8 outer() RAW2YUV X", "I [q] a.cpp:9 inner() X"}) {
            spans.write("quenOfflineDevice", 3, line);
        }
        spans.write("another", 3, "I [q] b.cpp:1 other() E");
        spans.write("another", 3, "I [q] b.cpp:2 other() X");
    }
    std::string told;
    for (TraceEvent const& event : trace->take().events) {
        told += std::string(event.name) + (event.notes[0].text ? event.notes[0].text : "") + " ";
    }
    EXPECT_EQ("inner outerRAW2YUV ", told);
}
