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

TEST(StrongReference, PointsAtTheOldObjectUntilThatIsGone) {
    struct Visitor : virtual RefBase {
        Visitor(sp<Visitor>& home, int& seen) : mHome(home), mSeen(seen) {}
        ~Visitor() override { mSeen += mHome == this ? 1 : 0; }

        sp<Visitor>& mHome;
        int& mSeen;
    };
    int seen = 0;
    sp<Visitor> home;
    for (int visit = 0; visit < 2; ++visit) {
        home = new Visitor(home, seen);
    }
    home = sp<Visitor>(new Visitor(home, seen));
    home.clear();
    EXPECT_EQ(seen, 3);
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

TEST(WeakReference, OrdersByAddressAndTellsAnObjectFromItsSuccessor) {
    struct InPlace : RefBase {
        static void operator delete(void* /*memory*/) {}
    };
    alignas(InPlace) static char memory[2][sizeof(InPlace)];
    sp<InPlace> low = new (memory[0]) InPlace;
    wp<InPlace> const lowWeak = low;
    sp<InPlace> const high = new (memory[1]) InPlace;
    wp<InPlace> const highWeak = high;
    EXPECT_TRUE(lowWeak < highWeak && highWeak > lowWeak && lowWeak <= lowWeak);
    EXPECT_TRUE(low < high && low <= low && high > low.get());

    low.clear();
    low = new (memory[0]) InPlace;
    wp<InPlace> const successor = low;
    EXPECT_TRUE(lowWeak == low.get()) << "the same address";
    EXPECT_TRUE(lowWeak != low && lowWeak != successor);
    EXPECT_NE(lowWeak < successor, successor < lowWeak);
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
                ASSERT_EQ(promoted->mLife.ends, 0);
            }
        });
        while (!isRunning) {
            std::this_thread::yield();
        }
        strong.clear();
        promoter.join();
        ASSERT_EQ(life.ends, 1);
        ASSERT_EQ(life.lastRefs, 1);
    }
}

/**
 * Promotions of an object that nobody has held race with each other and with the first and last
 * strong reference of a further thread, which comes a little later each round.
 */
TEST(WeakReference, PromotesSafelyWhileTheFirstReferenceComesAndGoes) {
    constexpr int kRounds = 200000;
    constexpr int kDelays = 64;
    std::vector<Life> lives(kRounds);
    std::vector<Base*> objects;
    std::vector<wp<Base>> weaks;
    for (Life& life : lives) {
        objects.push_back(new Base(life));
        weaks.emplace_back(objects.back());
    }
    std::vector<sp<Base>> promoted[] = {std::vector<sp<Base>>(kRounds),
                                        std::vector<sp<Base>>(kRounds)};
    std::atomic<int> running{0};
    std::atomic<int> current{-1};
    std::vector<std::thread> threads;
    for (std::vector<sp<Base>>& mine : promoted) {
        threads.emplace_back([&] {
            ++running;
            for (int seen = -1; seen != kRounds - 1;) {
                int const round = current;
                if (round != seen) {
                    mine[round] = weaks[round].promote();
                    seen = round;
                }
            }
        });
    }
    while (running != 2) {
        std::this_thread::yield();
    }
    for (int round = 0; round < kRounds; ++round) {
        current = round;
        for (int volatile delay = round % kDelays; delay > 0;) {
            delay = delay - 1;
        }
        sp<Base> const first(objects[round]);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int round = 0; round < kRounds; ++round) {
        int held = 0;
        for (std::vector<sp<Base>> const& mine : promoted) {
            held += mine[round] == nullptr ? 0 : 1;
        }
        ASSERT_EQ(lives[round].ends, held == 0 ? 1 : 0);
        for (std::vector<sp<Base>>& mine : promoted) {
            ASSERT_TRUE(mine[round] == nullptr || mine[round]->getStrongCount() == held--);
            mine[round].clear();
        }
        ASSERT_EQ(lives[round].ends, 1);
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
}

TEST(ReferenceDeathTest, ADestructorMustNotAssignTheReferenceThatEndsIt) {
    struct Meddler : RefBase {
        explicit Meddler(sp<Meddler>& home) : mHome(home) {}
        ~Meddler() override { mHome = nullptr; }

        sp<Meddler>& mHome;
    };
    EXPECT_DEATH(
            {
                sp<Meddler> home;
                home = new Meddler(home);
                home.clear();
            },
            "lost a strong reference that it did not have|too many times");
}
