#include "baselib/Memory.h"

#include "baselib/Buffer.h"
#include "baselib/HeapMonitor.h"
#include "baselib/Log.h"
#include "tests/support/TextFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace k7::test {
namespace {

std::uint32_t HashOf(const std::string& text) {
    return hm_hash(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

/// Empty tables at the start, all settings restored at the end, messages without times in Messages().
struct MemoryFixture : testing::Test {
    MemoryFixture() {
        for (HeapInfo* info : {&hm_normal, &hm_image}) {
            init_info(info);
            info->Collisions = info->Allocations = info->Frees = 0;
            info->PeakBytes = info->BytesInUse;
        }
        StaticLog().Stream = log.Stream;
    }
    ~MemoryFixture() override {
        hm_enabled = hm_tracking = hm_tracing = hm_use_hooks = hm_use_image_hooks = 0;
        hm_normal.OutOfMemory = 0;
        hm_node_malloc = std::malloc;
        StaticLog().Stream = nullptr;
    }

    static void Track() { hm_enabled = hm_tracking = 1; }

    /// Each line from its level on; addresses replaced by PTR.
    std::string Messages() const {
        const std::string text = std::regex_replace(
            log.Text(), std::regex(R"(\(K7 LIB\) (\d\d:\d\d:\d\d\.\d\d|           ) ?)"), "");
        return std::regex_replace(text, std::regex("0x[0-9a-f]+|\\(nil\\)|[0-9a-fA-F]{16}"), "PTR");
    }

    TextFile log;
};
using Memory = MemoryFixture;

TEST_F(Memory, PlainLevelIsTheRuntimeLibrary) {
    hm_tracking = hm_tracing = 1; // nothing without hm_enabled
    void* block = k7_malloc(10, "a", 1);
    block = k7_realloc(block, 100000, "a", 2);
    ASSERT_NE(block, nullptr);
    k7_free(block, "a", 3);
    k7_free(nullptr, "a", 4);
    char* copy = k7_strdup("text", "a", 5);
    EXPECT_STREQ(copy, "text");
    k7_free(copy, "a", 6);
    k7_image_free(k7_image_malloc(0, "a", 7), "a", 8);
    EXPECT_EQ(hm_normal.Allocations + hm_image.Allocations, 0u);
    EXPECT_EQ(Messages(), "");
}

TEST_F(Memory, TotalsFollowTheBlocksAndThoseLeftAreTheLeaks) {
    Track();
    void* a = k7_malloc(100, "a", 1);
    void* b = k7_malloc(50, "b", 2);
    k7_free(a, "c", 3);
    char* c = k7_strdup("seven..", "d", 4);
    b = k7_realloc(b, 60, "e", 5);
    EXPECT_EQ(hm_normal.BytesInUse, 68u);
    EXPECT_EQ(hm_normal.PeakBytes, 150u);
    EXPECT_EQ(hm_normal.Allocations, 4u);
    EXPECT_EQ(hm_normal.Frees, 2u);
    k7_free(c, "f", 7);
    void* image = k7_image_malloc(77, "library/K7Image", 40);
    std::string leaks;
    for (const HeapInfo* info : {&hm_normal, &hm_image})
        hm_walk(*info, [&](const HeapEntry& entry) {
            leaks += std::string(info->Name) + " " + entry.File + ":" + std::to_string(entry.Line) + " " +
                     std::to_string(entry.Size) + "; ";
        });
    EXPECT_EQ(leaks, "NORMAL e:5 60; IMAGE library/K7Image:40 77; ");
    k7_free(b, "f", 6);
    k7_image_free(image, "a", 1);
    EXPECT_EQ(hm_normal.BytesInUse + hm_image.BytesInUse, 0u);
    EXPECT_EQ(hm_normal.Allocations, hm_normal.Frees);
    EXPECT_EQ(hm_normal.PeakBytes, 150u);
    hm_walk(hm_image, [](const HeapEntry& entry) { ADD_FAILURE() << entry.File; });
    EXPECT_EQ(Messages(), "");
}

TEST_F(Memory, LongPathsKeepTheirEnd) {
    Track();
    const std::string exact(47, 'x');
    const std::string longer = "abcdef" + exact;
    for (const std::string& path : {std::string("short"), exact, longer}) {
        void* block = k7_malloc(1, path.c_str(), 1);
        HeapEntry entry;
        ASSERT_TRUE(hm_lookup(&hm_normal, reinterpret_cast<std::uintptr_t>(block), &entry));
        EXPECT_EQ(entry.File, path == "short" ? path : exact);
        k7_free(block, "a", 1);
    }
}

TEST_F(Memory, WrongCallsAreReported) {
    Track();
    EXPECT_EQ(k7_malloc(0, "a", 1), nullptr);
    EXPECT_EQ(k7_image_malloc(0, "a", 2), nullptr);
    EXPECT_EQ(k7_realloc(nullptr, 0, "a", 3), nullptr);
    EXPECT_EQ(k7_realloc(nullptr, 8, "a", 4), nullptr);
    EXPECT_EQ(k7_strdup(nullptr, "a", 5), nullptr);
    k7_free(nullptr, "a", 6);
    k7_image_free(nullptr, "a", 7);
    void* block = k7_image_malloc(3, "a", 8);
    k7_free(block, "a", 9); // of the other family
    k7_image_free(block, "a", 10);
    k7_image_free(block, "a", 11);
    EXPECT_EQ(Messages(),
              "ERROR: K7-HM-DEBUG: k7_malloc( size=0 ) attempted! [a(1)]\n"
              "ERROR: K7-HM-DEBUG: k7_image_malloc( size=0 ) attempted! [a(2)]\n"
              "ERROR: K7-HM-DEBUG: k7_realloc( size=0 ) attempted! [a(3)]\n"
              "ERROR: K7-HM-DEBUG: k7_realloc(PTR,8) attempted - but PTR is not allocated!  [a(4)]\n"
              "ERROR: K7-HM-DEBUG: k7_strdup( NULL ) attempted! [a(5)]\n"
              "ERROR: K7-HM-DEBUG: k7_free( NULL ) attempted! [a(6)]\n"
              "ERROR: K7-HM-DEBUG: k7_image_free( NULL ) attempted! [a(7)]\n"
              "ERROR: K7-HM-DEBUG: k7_free(PTR) attempted - but PTR is not allocated! [a(9)]\n"
              "ERROR: K7-HM-DEBUG: k7_image_free(PTR) attempted - but PTR is not allocated! [a(11)]\n");
}

TEST_F(Memory, TracesEachCall) {
    Track();
    hm_tracing = 1;
    void* block = k7_malloc(5, "a", 1);
    block = k7_realloc(block, 6, "a", 2);
    k7_free(block, "a", 3);
    k7_free(k7_strdup("x", "a", 4), "a", 5);
    k7_image_free(k7_image_malloc(9, "a", 6), "a", 7);
    EXPECT_EQ(Messages(), "INFO : K7-HM-TRACE: k7_malloc(5) ret (PTR) at [a(1)]\n"
                          "INFO : K7-HM-TRACE: k7_realloc(PTR,6) ret (PTR) at [a(2)]\n"
                          "INFO : K7-HM-TRACE: k7_free(PTR) at [a(3)].\n"
                          "     :             Alloc at [a(2)], size 6\n"
                          "INFO : K7-HM-TRACE: k7_strdup(PTR) ret (PTR) at [a(4)]\n"
                          "INFO : K7-HM-TRACE: k7_free(PTR) at [a(5)].\n"
                          "     :             Alloc at [a(4)], size 2\n"
                          "INFO : K7-HM-TRACE: k7_image_malloc(9) ret (PTR) at [a(6)]\n"
                          "INFO : K7-HM-TRACE: k7_image_free(PTR) at [a(7)].\n"
                          "     :             Alloc at [a(6)], size 9\n");
}

TEST_F(Memory, LineZeroSilencesTheTraceOfSomeEntries) {
    hm_enabled = hm_tracing = 1;
    k7_free(k7_realloc(k7_malloc(5, "a", 0), 6, "a", 0), "a", 1); // frees are not traced at this level
    k7_free(k7_strdup("x", "a", 0), "a", 0);
    k7_image_free(k7_image_malloc(9, "a", 0), "a", 0);
    EXPECT_EQ(Messages(), "INFO : K7-HM-TRACE: k7_strdup(PTR) ret (PTR) at [a(0)]\n"
                          "INFO : K7-HM-TRACE: k7_image_malloc(9) ret (PTR) at [a(0)]\n");
}

/// Hooks that record their calls and use the runtime library.
struct NotedHooks {
    std::string calls;
    void Install() {
        hm_use_hooks = hm_use_image_hooks = 1;
        const auto alloc = [](void* context, std::size_t size) {
            static_cast<NotedHooks*>(context)->calls += "alloc ";
            return std::malloc(size);
        };
        const auto release = [](void* context, void* pointer) {
            static_cast<NotedHooks*>(context)->calls += "free ";
            std::free(pointer);
        };
        const auto resize = [](void* context, void* pointer, std::size_t size) {
            static_cast<NotedHooks*>(context)->calls += "realloc ";
            return std::realloc(pointer, size);
        };
        const auto copy = [](void* context, const char* string) {
            static_cast<NotedHooks*>(context)->calls += "strdup ";
            return std::strcpy(static_cast<char*>(std::malloc(std::strlen(string) + 1)), string);
        };
        hm_hooks = {this, alloc, resize, copy, release};
        hm_image_hooks = {this, alloc, release};
    }
};

TEST_F(Memory, HooksServeBothLevels) {
    NotedHooks hooks;
    hooks.Install();
    hm_enabled = 1;
    for (int tracking : {0, 1}) {
        hm_tracking = tracking;
        hooks.calls.clear();
        k7_free(k7_realloc(k7_malloc(4, "a", 1), 8, "a", 2), "a", 3);
        k7_free(k7_strdup("x", "a", 4), "a", 5);
        k7_image_free(k7_image_malloc(4, "a", 6), "a", 7);
        EXPECT_EQ(hooks.calls, "alloc realloc free strdup free alloc free ");
    }
    EXPECT_EQ(hm_normal.Allocations, 3u);
    EXPECT_EQ(hm_image.Allocations, 1u);

    hm_tracking = 0;
    hm_tracing = 1;
    k7_free(k7_malloc(4, "a", 0), "a", 8);
    k7_image_free(nullptr, "a", 9);
    EXPECT_EQ(Messages(), "INFO : K7-HM-TRACE: k7_free(PTR) at [a(8)]\n"
                          "INFO : K7-HM-TRACE: k7_image_free(PTR) at [a(9)]\n");
}

TEST_F(Memory, FailedAllocationIsReturnedAndNotRecorded) {
    Track();
    NotedHooks hooks;
    hooks.Install();
    void* block = k7_malloc(4, "a", 1);
    hm_hooks.Alloc = [](void*, std::size_t) -> void* { return nullptr; };
    hm_hooks.Realloc = [](void*, void*, std::size_t) -> void* { return nullptr; };
    EXPECT_EQ(k7_malloc(8, "a", 2), nullptr);
    EXPECT_EQ(k7_realloc(block, 8, "a", 3), nullptr);
    EXPECT_EQ(hm_normal.BytesInUse, 4u); // the old block is still valid
    k7_free(block, "a", 4);
    EXPECT_EQ(hm_normal.BytesInUse, 0u);
    EXPECT_EQ(Messages(), "");
}

TEST(HeapHash, IsOneAtATime) {
    EXPECT_EQ(HashOf(""), 0u);
    EXPECT_EQ(HashOf("a"), 0xca2e9442u); // published with the hash
    EXPECT_EQ(HashOf("The quick brown fox jumps over the lazy dog"), 0x519e91f5u);
    EXPECT_EQ(hm_slot(0x6867666564636261u), HashOf("abcdefgh") & 16383u); // low byte first
}

/// `count` addresses that share a slot.
std::vector<std::uintptr_t> SameSlot(std::size_t count) {
    std::vector<std::uintptr_t> addresses;
    const std::size_t slot = hm_slot(0x10000);
    for (std::uintptr_t address = 0x10000; addresses.size() < count; address += 16)
        if (hm_slot(address) == slot) addresses.push_back(address);
    return addresses;
}

TEST_F(Memory, ChainsAreFoundAndRemovedInAnyOrderNewestFirst) {
    const std::vector<std::uintptr_t> all = SameSlot(3);
    const HeapEntry& slot = hm_normal.Slots[hm_slot(all[0])];
    std::size_t order[] = {0, 1, 2};
    do {
        for (std::size_t i = 0; i < 3; ++i) {
            hm_insert(&hm_normal, all[i], i + 1, "a", 1);
            EXPECT_EQ(slot.Pointer, all[i]); // the newest lies in the table
        }
        for (std::size_t i : order) {
            HeapEntry entry;
            ASSERT_TRUE(hm_lookup(&hm_normal, all[i], &entry));
            EXPECT_EQ(entry.Size, i + 1);
            hm_remove(&hm_normal, all[i]);
            EXPECT_FALSE(hm_lookup(&hm_normal, all[i], &entry));
        }
        EXPECT_EQ(slot.Next, nullptr);
    } while (std::next_permutation(std::begin(order), std::end(order)));
    EXPECT_EQ(hm_normal.Collisions, 12u);
    EXPECT_EQ(hm_normal.BytesInUse, 0u);
    EXPECT_EQ(hm_normal.Allocations, 18u);
    EXPECT_EQ(hm_normal.Frees, 18u);
    EXPECT_EQ(Messages(), "");
    hm_remove(&hm_normal, all[1]);
    EXPECT_EQ(Messages(), "ERROR: K7-HM-DEBUG: Attempt to free PTR - Not allocated in NORMAL!\n");
}

TEST_F(Memory, BlockWithoutANodeStaysUnrecorded) {
    const std::vector<std::uintptr_t> all = SameSlot(2);
    hm_insert(&hm_normal, all[0], 1, "a", 1);
    hm_node_malloc = [](std::size_t) -> void* { return nullptr; };
    hm_insert(&hm_normal, all[1], 1, "a", 1);
    EXPECT_EQ(hm_normal.OutOfMemory, 1);
    EXPECT_EQ(hm_normal.Allocations, 1u);
    HeapEntry entry;
    EXPECT_FALSE(hm_lookup(&hm_normal, all[1], &entry));
    EXPECT_TRUE(hm_lookup(&hm_normal, all[0], &entry));
    hm_remove(&hm_normal, all[0]);
    EXPECT_EQ(Messages(), "ERROR: K7-HM-DEBUG: INTERNAL ERROR: Cannot allocate space for info node.\n");
}

TEST_F(Memory, MisuseOfTheMonitorItselfIsReported) {
    HeapInfo* stranger = reinterpret_cast<HeapInfo*>(&log);
    init_info(stranger);
    hm_mutex_init = 0;
    release_hm_mutex();
    acquire_hm_mutex();
    EXPECT_EQ(hm_mutex_init, 1);
    release_hm_mutex();
    EXPECT_EQ(Messages(), "ERROR: K7-HM-DEBUG: INTERNAL ERROR: Asked to initialize unknown info at: PTR.\n"
                          "ERROR: K7-HM-DEBUG: INTERNAL ERROR: release_hm_mutex() found hm_mutex_init=0!\n");
}

TEST_F(Memory, ThreadsShareTheTables) {
    Track();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 1; i < 500; ++i) {
                Buffer<int> numbers(static_cast<std::size_t>(i), "a", 1);
                ImageBuffer<char> words(static_cast<std::size_t>(i), "b", 2);
                numbers = Buffer<int>(8, "c", 3);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(hm_normal.Allocations, 4u * 499u * 2u);
    EXPECT_EQ(hm_normal.Frees, hm_normal.Allocations);
    EXPECT_EQ(hm_image.Frees, 4u * 499u);
    EXPECT_EQ(hm_normal.BytesInUse + hm_image.BytesInUse, 0u);
    EXPECT_EQ(Messages(), "");
}

TEST(BufferTest, RefusesImpossibleSizes) {
    EXPECT_FALSE(Buffer<double>(0, "a", 1));
    EXPECT_FALSE(Buffer<double>(~std::size_t{0} / 4, "a", 1));
    Buffer<int> numbers(3, "a", 1);
    ASSERT_TRUE(numbers);
    numbers.Zero();
    const Buffer<int> moved = std::move(numbers);
    EXPECT_EQ(moved[2], 0);
    EXPECT_EQ(moved.size(), 3u);
}

} // namespace
} // namespace k7::test
