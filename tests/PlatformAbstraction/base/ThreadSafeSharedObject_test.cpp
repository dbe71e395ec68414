#include "PlatformAbstraction/base/ThreadSafeSharedObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>

#include "PlatformAbstraction/base/orska_abort.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::IsAborted;
using testing::AllOf;
using testing::HasSubstr;

/// Counts how often it is destroyed instead of deleting itself.
class Probe : public ThreadSafeSharedObject {
public:
    explicit Probe(std::uint32_t in_refCount = 1) { m_refCount = in_refCount; }
    std::uint32_t GetRefCount() const { return m_refCount; }
    int GetDestroyed() const { return m_destroyed; }

private:
    std::uint32_t Destroy() override {
        ++m_destroyed;
        return 77;
    }

    int m_destroyed = 0;
};

TEST(ThreadSafeSharedObjectTest, AtomicFunctionsWrap) {
    std::atomic<std::uint32_t> counter{1};
    EXPECT_TRUE(AtomicAdd(counter, -1));
    EXPECT_FALSE(AtomicAdd(counter, -2));
    EXPECT_EQ(counter, 0xFFFFFFFEu);
    EXPECT_TRUE(AtomicAdd(counter, 2));
    EXPECT_EQ(AtomicCompareExchange(counter, 5, 9), 0u);
    EXPECT_EQ(counter, 0u);
    EXPECT_EQ(AtomicCompareExchange(counter, 0, 9), 0u);
    EXPECT_EQ(counter, 9u);
}

TEST(ThreadSafeSharedObjectTest, ReleaseReturnsTheCountOrTheResultOfDestroy) {
    Probe probe;
    probe.Retain();
    EXPECT_EQ(probe.Release(), 1u);
    EXPECT_EQ(probe.GetDestroyed(), 0);
    EXPECT_EQ(probe.Release(), 77u);
    EXPECT_EQ(probe.GetDestroyed(), 1);
    EXPECT_EQ(probe.GetRefCount(), 0u);
}

TEST(ThreadSafeSharedObjectTest, ReleaseOfZeroWrapsAndDestroysNothing) {
    Probe probe(0);
    EXPECT_EQ(probe.Release(), 0xFFFFFFFFu);
    EXPECT_EQ(probe.GetDestroyed(), 0);
}

struct Deleted : ThreadSafeSharedObject {
    explicit Deleted(bool& out_isDeleted) : m_isDeleted(out_isDeleted) {}
    ~Deleted() override { m_isDeleted = true; }
    bool& m_isDeleted;
};

TEST(ThreadSafeSharedObjectTest, DeletesItselfByDefault) {
    bool isDeleted = false;
    EXPECT_EQ((new Deleted(isDeleted))->Release(), 0u);
    EXPECT_TRUE(isDeleted);
}

TEST(ThreadSafeSharedObjectDeathTest, AWrappedCountStopsTheProcess) {
    Probe probe(0xFFFFFFFF);
    EXPECT_EXIT(probe.Retain(), IsAborted,
                "^orska_abort\\(\\) called from ThreadSafeSharedObject:34 for reason: "
                "Incrementing the refcount should never result in 0\\.$");
}

TEST(OrskaAbortDeathTest, FlushesOutputAndWritesTheReasonAsItIs) {
    EXPECT_EXIT(
        {
            // Standard output is buffered until it is flushed.
            std::setvbuf(stdout, nullptr, _IOFBF, 4096);
            dup2(STDERR_FILENO, STDOUT_FILENO);
            std::printf("unflushed ");
            orska_abort("Source", -7, ("100 %s" + std::string(5000, '.') + '!').c_str());
        },
        IsAborted,
        AllOf(HasSubstr("orska_abort() called from Source:-7 for reason: 100 %s..."),
              HasSubstr("...!"), HasSubstr("unflushed ")));
}

TEST(ThreadSafeSharedObjectTest, LosesNoUpdate) {
    Probe probe;
    const auto work = [&probe] {
        for (int round = 0; round < 20000; ++round) {
            probe.Retain();
            probe.Release();
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(probe.GetRefCount(), 1u);
    EXPECT_EQ(probe.GetDestroyed(), 0);
}

TEST(SharedPtrTest, HoldsOneReferenceEach) {
    Probe probe;
    Probe other;
    {
        SharedPtr<Probe> first(&probe);
        SharedPtr<Probe> second = first;
        EXPECT_EQ(probe.GetRefCount(), 2u);
        const SharedPtr<Probe> moved(std::move(second));
        EXPECT_EQ(probe.GetRefCount(), 2u);
        EXPECT_FALSE(second);  // NOLINT(bugprone-use-after-move)
        const SharedPtr<Probe>& self = first;
        first = self;
        EXPECT_EQ(probe.GetRefCount(), 2u);
        first = SharedPtr<Probe>(&other);
        EXPECT_EQ(probe.GetRefCount(), 1u);
        EXPECT_EQ(first.Get(), &other);
        EXPECT_EQ(&*first, &other);
        EXPECT_EQ(first->GetRefCount(), 1u);
        first = SharedPtr<Probe>();
        EXPECT_EQ(other.GetDestroyed(), 1);
        EXPECT_EQ(probe.GetDestroyed(), 0);
    }
    EXPECT_EQ(probe.GetDestroyed(), 1);
}

}  // namespace
}  // namespace Orska::Support
