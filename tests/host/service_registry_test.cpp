#include <unistd.h>

#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/hidl/DeathNotice.h"
#include "host/hidl/ServiceRegistry.h"

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::Return;
using android::hidl::base::V1_0::DebugInfo;
using android::hidl::base::V1_0::IBase;
using testing::ElementsAre;
using testing::Pair;
using vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;

namespace {

struct Module : IISPModule {
    Return<void> openISPDevice(openISPDevice_cb /*cb*/) override {
        return android::hardware::Void();
    }
};

struct Recipient : hidl_death_recipient {
    void serviceDied(uint64_t cookie, wp<IBase> const& who) override {
        notices.emplace_back(cookie, who.promote() == expected);
    }

    sp<IBase> expected;
    std::vector<std::pair<uint64_t, bool>> notices;
};

}  // namespace

TEST(ServiceRegistry, FindsServicesByInterfaceAndInstance) {
    sp<Module> const module = new Module;
    EXPECT_EQ(android::OK, module->registerAsService("internal/0"));
    EXPECT_EQ(module, IISPModule::getService("internal/0", true));
    EXPECT_EQ(IISPModule::getService(), nullptr);
    EXPECT_EQ(quen::host::findService(IBase::descriptor, "internal/0"), nullptr);

    sp<Module> const successor = new Module;
    EXPECT_EQ(android::OK, successor->registerAsService("internal/0"));
    EXPECT_EQ(successor, IISPModule::getService("internal/0"));
    EXPECT_EQ(1, module->getStrongCount());
    EXPECT_EQ(android::BAD_VALUE, successor->registerAsService(""));
    EXPECT_EQ(android::BAD_VALUE, quen::host::registerService("", "internal/0", successor));
    EXPECT_EQ(android::BAD_VALUE,
              quen::host::registerService(IISPModule::descriptor, "internal/0", nullptr));
    EXPECT_TRUE(quen::host::unregisterService(IISPModule::descriptor, "internal/0"));
    EXPECT_FALSE(quen::host::unregisterService(IISPModule::descriptor, "internal/0"));
    EXPECT_EQ(1, successor->getStrongCount());
}

TEST(Service, HasTheChainOfItsInterfaces) {
    sp<Module> const module = new Module;
    EXPECT_TRUE(module->interfaceChain([](auto const& chain) {
                          ASSERT_EQ(chain.size(), 1u);
                          EXPECT_EQ(chain[0], IBase::descriptor);
                      }).isOk());
    EXPECT_TRUE(module->getDebugInfo([](DebugInfo const& info) {
                          EXPECT_EQ(info.pid, getpid());
                          EXPECT_EQ(info.arch, DebugInfo::Architecture::IS_64BIT);
                      }).isOk());
    EXPECT_FALSE(module->isRemote());
    EXPECT_TRUE(module->interfaceDescriptor([](auto const& name) {
                          EXPECT_EQ(name, IBase::descriptor);
                      }).isOk());
}

TEST(ServiceRegistry, TellsOfADeathOnce) {
    sp<Module> const module = new Module;
    sp<Module> const neighbour = new Module;
    sp<Recipient> const recipient = new Recipient;
    recipient->expected = module;
    module->registerAsService("one");
    module->registerAsService("two");
    neighbour->registerAsService("three");
    EXPECT_FALSE(module->linkToDeath(nullptr, 1));
    { EXPECT_TRUE(sp<Module>(new Module)->linkToDeath(recipient, 5)); }
    EXPECT_TRUE(neighbour->linkToDeath(recipient, 2));
    for (uint64_t const cookie : {1, 3, 4}) {
        EXPECT_TRUE(module->linkToDeath(recipient, cookie));
    }
    EXPECT_TRUE(neighbour->linkToDeath(recipient, 6));
    EXPECT_TRUE(module->unlinkToDeath(recipient));
    EXPECT_TRUE(module->unlinkToDeath(new Recipient)) << "which has no link";

    quen::host::announceDeath(nullptr);
    quen::host::announceDeath(module);
    EXPECT_EQ(IISPModule::getService("one"), nullptr);
    EXPECT_EQ(IISPModule::getService("two"), nullptr);
    quen::host::announceDeath(module);
    EXPECT_THAT(recipient->notices, ElementsAre(Pair(1, true), Pair(3, true)));
    EXPECT_EQ(neighbour, IISPModule::getService("three"));
    EXPECT_TRUE(module->unlinkToDeath(recipient)) << "whether or not there is a link";
    EXPECT_TRUE(neighbour->unlinkToDeath(recipient));
    EXPECT_TRUE(neighbour->unlinkToDeath(recipient));
    EXPECT_EQ(1, recipient->getStrongCount()) << "the service that is gone let go of it";
    quen::host::unregisterService(neighbour);
}
