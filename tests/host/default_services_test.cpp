#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/LogLines.h"
#include "host/gralloc/MemfdMapper.h"
#include "host/hidl/DeathNotice.h"
#include "host/hidl/ServiceRegistry.h"

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;
using android::sp;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;
using isphal::IISPModule;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Each service's look-up, as a base: what a program may ask for without having registered anything.
sp<android::hidl::base::V1_0::IBase> lookUp(std::string const& descriptor) {
    if (descriptor == IAllocator::descriptor) {
        return IAllocator::getService();
    }
    if (descriptor == IMapper::descriptor) {
        return IMapper::getService();
    }
    return IISPModule::getService("internal/0");
}

}  // namespace

TEST(DefaultServicesTest, AreMadeOnceAndGiveWayToWhatIsRegistered) {
    for (char const* const name :
         {IAllocator::descriptor, IMapper::descriptor, IISPModule::descriptor}) {
        auto const made = lookUp(name);
        ASSERT_NE(made, nullptr) << name;
        EXPECT_EQ(made, lookUp(name)) << name;
    }
    isphal::Status opened = isphal::Status::INTERNAL_ERROR;
    EXPECT_TRUE(IISPModule::getService("internal/0")
                        ->openISPDevice([&](isphal::Status status, auto const& device) {
                            opened = device == nullptr ? opened : status;
                        })
                        .isOk());
    EXPECT_EQ(isphal::Status::OK, opened);

    sp<quen::host::MemfdMapper> const own = new quen::host::MemfdMapper;
    EXPECT_EQ(android::OK, own->registerAsService());
    EXPECT_EQ(own, IMapper::getService());
}

// A program that takes a service away has a reason: the next look-up is told so, not given another.
TEST(DefaultServicesTest, DoNotComeBack) {
    quentest::LogLines log;
    quen::host::unregisterService(IAllocator::descriptor, "default");
    EXPECT_EQ(IAllocator::getService(), nullptr);
    quen::host::announceDeath(IMapper::getService());
    EXPECT_EQ(IMapper::getService(), nullptr);
    EXPECT_EQ(IMapper::getService("second"), nullptr);
    EXPECT_THAT(log.lines,
                ElementsAre(HasSubstr("IAllocator/default: it was unregistered"),
                            HasSubstr("IMapper/default: it was unregistered, or it died"),
                            AllOf(HasSubstr("IMapper/second: the platform has none"),
                                  HasSubstr("registerAsService(\"second\")"))));
}
