#include <atomic>
#include <thread>

#include <gtest/gtest.h>
#include <utils/RefBase.h>

using android::RefBase;
using android::sp;
using android::wp;

namespace {

struct Life {
    int firstRefs = 0;
    int lastRefs = 0;
    int ends = 0;
};

struct Base : virtual RefBase {
    explicit Base(Life& life) : mLife(life) {}
    ~Base() override { ++mLife.ends; }
    void onFirstRef() override { ++mLife.firstRefs; }
    void onLastStrongRef(void const* /*id*/) override { ++mLife.lastRefs; }

    Life& mLife;
};

struct Other : virtual RefBase {
    int mOther = 7;
};

struct Derived : Base, Other {
    using Base::Base;
};

}  // namespace

TEST(StrongReference, KeepsTheObjectFromTheFirstReferenceToTheLast) {
    Life life;
    sp<Derived> first = new Derived(life);
    sp<Base> second = first;
    sp<Other> third(second == first ? first : nullptr);
    EXPECT_EQ(3, first->getStrongCount());
    EXPECT_EQ(7, third->mOther);

    sp<Base> moved = std::move(second);
    EXPECT_EQ(nullptr, second);
    EXPECT_EQ(3, first->getStrongCount());
    second = std::move(moved);
    first = nullptr;
    third.clear();
    sp<Base>& alias = second;
    second = alias;
    second = std::move(alias);
    EXPECT_EQ(0, life.ends);
    second = new Base(life);
    EXPECT_EQ(1, life.lastRefs);
    EXPECT_EQ(1, life.ends);
    EXPECT_EQ(2, life.firstRefs);
}

TEST(WeakReference, TellsWhetherTheObjectIsThere) {
    Life life;
    auto* const object = new Derived(life);
    { wp<Base> const goneBeforeTheFirstStrongOne(object); }
    wp<Derived> weak = object;
    wp<Base> const ofBase = weak;
    EXPECT_EQ(0, life.ends);
    sp<Base> strong = ofBase.promote();
    EXPECT_EQ(object, strong);
    EXPECT_EQ(1, strong->getStrongCount());

    strong.clear();
    EXPECT_EQ(1, life.ends);
    EXPECT_EQ(nullptr, weak.promote());
    EXPECT_EQ(nullptr, ofBase.promote());
    EXPECT_TRUE(weak == ofBase);
    weak.clear();
    EXPECT_TRUE(weak == wp<Derived>());
    EXPECT_EQ(nullptr, weak.promote());
}

/** Promotions race with the last release: each gives a live object or none. */
TEST(WeakReference, PromotesSafelyWhileTheLastReferenceGoes) {
    for (int round = 0; round < 300; ++round) {
        Life life;
        sp<Base> strong = new Base(life);
        wp<Base> const weak = strong;
        std::atomic<bool> isRunning{false};
        std::thread promoter([&] {
            isRunning = true;
            while (sp<Base> const promoted = weak.promote()) {
                ASSERT_EQ(0, promoted->mLife.ends);
            }
        });
        while (!isRunning) {
            std::this_thread::yield();
        }
        strong.clear();
        promoter.join();
        ASSERT_EQ(1, life.ends);
        ASSERT_EQ(1, life.lastRefs);
    }
}
