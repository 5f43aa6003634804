#include "host/Application.h"
#include "host/Operator.h"
#include "host/ThreadPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <thread>
#include <vector>

namespace host::test {
namespace {

TEST(ThreadPool, RunsEveryIndexOnce) {
    for (unsigned threads : {0u, 1u, 3u}) {
        ThreadPool pool(threads);
        for (long count : {0L, 1L, 2L, 100L}) {
            std::vector<std::atomic<int>> calls(static_cast<std::size_t>(count));
            pool.Run(count, [&](long i) { ++calls[static_cast<std::size_t>(i)]; });
            for (const auto& n : calls) EXPECT_EQ(n, 1);
        }
    }
}

TEST(ThreadPool, ServesJobsFromManyThreadsAndFromWithinJobs) {
    ThreadPool pool(2);
    std::atomic<int> sum = 0;
    std::vector<std::thread> callers;
    for (int t = 0; t < 4; ++t)
        callers.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                pool.Run(5, [&](long) { pool.Run(3, [&](long) { ++sum; }); });
        });
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(sum, 4 * 20 * 5 * 3);
}

TEST(ThreadPool, RethrowsAfterAllTasksHaveReturned) {
    ThreadPool pool(2);
    std::atomic<int> calls = 0;
    const auto task = [&](long i) {
        ++calls;
        if (i % 3 == 0) throw std::bad_alloc();
    };
    EXPECT_THROW(pool.Run(50, task), std::bad_alloc);
    EXPECT_EQ(calls, 50);
    pool.Run(2, [&](long) { ++calls; });
    EXPECT_EQ(calls, 52);
}

TEST(Registry, EntriesAreListedForTheirLifetimeInTheOrderOfTheirNumbers) {
    RegistryList list;
    {
        const auto make = [](Registry*, ScriptVal&, TagList&) -> Object* { return new Number(4.0); };
        const CreateFunction create = make;
        const Registry second(&list, FuID("B"), {{kTagRegNumber, 2}});
        const Registry first(&list, FuID("A"),
                             {{kTagRegNumber, 1}, {kTagRegCreate, reinterpret_cast<const void*>(create)}});
        ASSERT_EQ(list.Entries().size(), 2u);
        EXPECT_EQ(list.Entries()[0], &first);
        EXPECT_EQ(list.Find(FuID("B")), &second);
        const Ref<Object> made(list.New(FuID("A"), 0x1b0000, nullptr));
        EXPECT_NE(dynamic_cast<Number*>(made.get()), nullptr);
        EXPECT_EQ(list.New(FuID("B"), 0x1b0000, nullptr), nullptr); // nothing to make it with
        EXPECT_EQ(first.NewOperator(nullptr), nullptr);             // a number is not a tool
    }
    EXPECT_TRUE(list.Entries().empty());
}

} // namespace
} // namespace host::test
