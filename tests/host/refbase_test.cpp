#include <sched.h>

#include <atomic>
#include <new>
#include <thread>
#include <utility>
#include <vector>

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
    auto* const object = new Derived(life);
    EXPECT_EQ(object->getStrongCount(), 1 << 28);
    sp<Derived> first = object;
    sp<Base> second = first;
    sp<Other> third(second == first ? first : nullptr);
    EXPECT_EQ(first->getStrongCount(), 3);
    EXPECT_EQ(third->mOther, 7);

    sp<Base> moved = std::move(second);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(first->getStrongCount(), 3);
    second = std::move(moved);
    first = nullptr;
    third.clear();
    sp<Base>& alias = second;
    second = alias;
    EXPECT_EQ(life.ends, 0);
    second = new Base(life);
    EXPECT_EQ(life.lastRefs, 1);
    EXPECT_EQ(life.ends, 1);
    EXPECT_EQ(life.firstRefs, 2);
    second = std::move(alias);  // lets go first, and then there is nothing to take
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(life.ends, 2);
}

TEST(WeakReference, TellsWhetherTheObjectIsThere) {
    Life life;
    auto* const object = new Derived(life);
    { wp<Base> const goneBeforeTheFirstStrongOne(object); }
    wp<Derived> weak = object;
    wp<Base> const ofBase = weak;
    EXPECT_EQ(life.ends, 0);
    sp<Base> strong = ofBase.promote();
    EXPECT_EQ(strong, object);
    EXPECT_EQ(strong->getStrongCount(), 1);
    EXPECT_EQ(life.firstRefs, 0) << "a promotion is nobody's first reference";

    EXPECT_TRUE(weak == strong);
    EXPECT_TRUE(weak != sp<Base>(nullptr));
    strong.clear();
    EXPECT_EQ(life.ends, 1);
    EXPECT_EQ(weak.promote(), nullptr);
    EXPECT_EQ(ofBase.promote(), nullptr);
    EXPECT_TRUE(weak == ofBase);
    wp<Derived> const moved = std::move(weak);
    EXPECT_TRUE(moved == weak) << "a move copies";
    weak.clear();
    EXPECT_TRUE(weak == wp<Derived>());
    EXPECT_EQ(weak.promote(), nullptr);
}

TEST(WeakReference, TellsAnObjectFromItsSuccessorAtTheSameAddress) {
    struct InPlace : RefBase {
        static void operator delete(void* /*memory*/) {}
    };
    alignas(InPlace) static char memory[sizeof(InPlace)];
    sp<InPlace> object = new (memory) InPlace;
    wp<InPlace> const weak = object;
    object.clear();
    object = new (memory) InPlace;
    wp<InPlace> const successor = object;
    EXPECT_TRUE(weak != object && weak != successor);
    EXPECT_NE(weak < successor, successor < weak);
}

// Binds the calling thread to one of the processors it may use: threads left alone may share one.
void bindToProcessor(int which) {
    cpu_set_t allowed;
    ASSERT_EQ(sched_getaffinity(0, sizeof(allowed), &allowed), 0);
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &allowed) && which-- == 0) {
            CPU_ZERO(&allowed);
            CPU_SET(processor, &allowed);
            ASSERT_EQ(sched_setaffinity(0, sizeof(allowed), &allowed), 0);
            return;
        }
    }
}

// Runs the steps of two threads, neither of which gets more than a step ahead of the other.
template <typename First, typename Second>
void runSideBySide(int steps, First const& first, Second const& second) {
    std::atomic<int> begun[2] = {{-1}, {-1}};
    auto const run = [&](int self, auto const& step) {
        bindToProcessor(self);
        for (int i = 0; i < steps; ++i) {
            begun[self] = i;
            for (int looks = 0; begun[1 - self] < i - 1; ++looks) {
                if (looks > 1000) {
                    std::this_thread::yield();  // the other one is not running
                }
            }
            step(i);
        }
    };
    std::thread one([&] { run(0, first); });
    std::thread other([&] { run(1, second); });
    one.join();
    other.join();
}

// A promotion gives an object that lives until the promoted reference goes, or none.
TEST(WeakReference, PromotesSafelyWhateverAnotherThreadDoes) {
    constexpr int kRounds = 20000;
    enum Race { WithTheFirstReference, WithAnotherPromotion, WithTheLastRelease };
    for (Race const race : {WithTheFirstReference, WithAnotherPromotion, WithTheLastRelease}) {
        std::vector<Life> lives(kRounds);
        std::vector<Base*> objects;
        std::vector<RefBase::weakref_type*> weaks;
        for (Life& life : lives) {
            objects.push_back(new Base(life));
            weaks.push_back(objects.back()->createWeak(&life));
            if (race == WithTheLastRelease) {
                objects.back()->incStrong(&life);
            }
        }
        std::vector<char> promoted[] = {std::vector<char>(kRounds), std::vector<char>(kRounds)};
        auto const promoteInto = [&](std::vector<char>& results) {
            return [&](int i) { results[i] = weaks[i]->attemptIncStrong(&lives[i]); };
        };
        if (race == WithTheFirstReference) {
            runSideBySide(kRounds, promoteInto(promoted[0]), [&](int i) {
                objects[i]->incStrong(&lives[i]);
                objects[i]->decStrong(&lives[i]);
            });
        } else if (race == WithAnotherPromotion) {
            runSideBySide(kRounds, promoteInto(promoted[0]), promoteInto(promoted[1]));
        } else {
            runSideBySide(kRounds, promoteInto(promoted[0]),
                          [&](int i) { objects[i]->decStrong(&lives[i]); });
        }
        for (int i = 0; i < kRounds; ++i) {
            int const held = promoted[0][i] + promoted[1][i];
            ASSERT_EQ(lives[i].ends, held == 0 ? 1 : 0);
            ASSERT_TRUE(race != WithAnotherPromotion || held == 2);
            ASSERT_TRUE(held == 0 || objects[i]->getStrongCount() == held);
            for (int left = held; left > 0; --left) {
                objects[i]->decStrong(&lives[i]);
            }
            ASSERT_EQ(lives[i].ends, 1);
            ASSERT_EQ(lives[i].lastRefs, 1);
            weaks[i]->decWeak(&lives[i]);
        }
    }
}

TEST(ReferenceDeathTest, AnObjectWithWeakReferencesIsNotItsMakersToDelete) {
    struct Plain : RefBase {
        ~Plain() override = default;
    };
    EXPECT_DEATH(
            {
                auto* const object = new Plain;
                wp<Plain> const weak(object);
                delete object;
            },
            "deleted while weak references are left");
    EXPECT_DEATH((new Plain)->decStrong(nullptr), "lost a strong reference that it did not have");
}
