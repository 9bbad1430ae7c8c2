#include <cstring>
#include <string>
#include <tuple>

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <nscam/ATMsEventMgr.h>

#include "host/base/Properties.h"
#include "host/metadata/EventText.h"

namespace {

constexpr char kKey[] = "vendor.test.value";

std::string read(char const* defaultValue) {
    char value[PROPERTY_VALUE_MAX];
    memset(value, 'z', sizeof(value));
    int const length = property_get(kKey, value, defaultValue);
    EXPECT_EQ(strlen(value), static_cast<size_t>(length));
    return value;
}

}  // namespace

TEST(Properties, AreSetReadAndUnset) {
    EXPECT_EQ("none", read("none"));
    std::string const longest(PROPERTY_VALUE_MAX - 1, 'x');
    EXPECT_EQ(0, property_set(kKey, longest.c_str()));
    EXPECT_FALSE(quen::host::setProperty(kKey, longest + "y"));
    EXPECT_EQ(longest, read("none"));
    property_set(kKey, "");
    EXPECT_EQ("", read(nullptr));
    EXPECT_EQ(longest, read((longest + "y").c_str()));
    EXPECT_EQ(-1, property_set("", "x"));
    EXPECT_EQ(-7, property_get_int32(nullptr, -7));
    EXPECT_EQ(9, property_get_bool(nullptr, 9));
    property_set(kKey, "set");
    EXPECT_EQ("set", read("none"));
    property_set(kKey, nullptr);
    EXPECT_EQ("unset", read("unset"));
}

TEST(EventTexts, AreSetReadAndCleared) {
    auto* const events = NSCam::ATMsEventMgr::getInstance();
    std::string text = "before";
    EXPECT_FALSE(events->getString("APP_NAME", text));
    EXPECT_EQ("", text);
    quen::host::setEventString("APP_NAME", "first");
    quen::host::setEventString("APP_NAME", "second");
    EXPECT_TRUE(events->getString("APP_NAME", text));
    EXPECT_EQ("second", text);
    quen::host::clearEventString("APP_NAME");
    EXPECT_FALSE(events->getString("APP_NAME", text));
}

TEST(Properties, ReadAsNumbersAndTruthValues) {
    // -7, -8 and 9 are the defaults.
    std::tuple<char const*, int32_t, int64_t, int8_t> const cases[] = {
            {"0", 0, 0, 0},
            {"0x10", 16, 16, 9},
            {"010", 8, 8, 9},
            {"-2147483649", -7, -2147483649, 9},
            {"4 seconds", 4, 4, 9},
            {"2147483648", -7, 2147483648, 9},
            {"9223372036854775808", -7, -8, 9},
            {"-2147483648", INT32_MIN, INT32_MIN, 9},
            {"false", -7, -8, 0},
            {"off", -7, -8, 0},
            {"on", -7, -8, 1},
            {"yes", -7, -8, 1},
            {"On", -7, -8, 9},
    };
    for (auto const& [text, number, wide, truth] : cases) {
        property_set(kKey, text);
        EXPECT_EQ(number, property_get_int32(kKey, -7)) << text;
        EXPECT_EQ(wide, property_get_int64(kKey, -8)) << text;
        EXPECT_EQ(truth, property_get_bool(kKey, 9)) << text;
    }
}
