#include "library/Chunks.h"

#include "tests/library/Dispatch.h"

#include <string>
#include <thread>
#include <vector>

namespace k7::test {
namespace {

/// Ranges of a dispatch in the order of their first rows, which a core writes down.
struct RangeCore : PluginK7 {
    static void Worker(PluginK7* core, int first, int last, int threads) {
        auto* self = static_cast<RangeCore*>(core);
        const std::lock_guard lock(self->Mutex);
        self->Ranges.push_back({first, last});
        self->Threads = threads;
    }
    std::mutex Mutex;
    std::vector<std::pair<int, int>> Ranges;
    int Threads = 0;
};

struct ChunksFixture : testing::Test {
    ChunksFixture() {
        record.Owner = &owner;
        owner.Core = &core;
        core.Chunks = &record;
        core.Operator = &owner;
    }
    std::vector<std::pair<int, int>> RangesOf(int threads, int rows) {
        owner.Threads = threads;
        core.Ranges.clear();
        core.RunChunks(RangeCore::Worker, rows);
        std::sort(core.Ranges.begin(), core.Ranges.end());
        return core.Ranges;
    }
    TestOwner owner;
    ChunkRecord record;
    RangeCore core;
};
using Chunks = ChunksFixture;
using Ranges = std::vector<std::pair<int, int>>;

TEST_F(Chunks, RowsAreSharedOut) {
    EXPECT_EQ(RangesOf(1, 1080), (Ranges{{0, 1079}}));
    EXPECT_EQ(RangesOf(4, 1083), (Ranges{{0, 269}, {270, 539}, {540, 809}, {810, 1082}}));
    EXPECT_EQ(core.Threads, 4);
    EXPECT_EQ(RangesOf(4, 3), (Ranges{{0, -1}, {0, -1}, {0, -1}, {0, 2}})) << "the last chunk does all";
    for (const auto& [first, last] : RangesOf(3, 0)) EXPECT_GT(first, last);
    for (int none : {0, -3}) EXPECT_EQ(RangesOf(none, 7), (Ranges{{0, 6}})) << "counts as one processor";
    EXPECT_EQ(core.Threads, 1);
}

TEST_F(Chunks, ExternalWorkersGetTheirContext) {
    owner.Threads = 4;
    owner.OnThreads = true;
    std::vector<int> touched(50, 0);
    core.RunExternalChunks(
        [](void* context, int first, int last, int threads) {
            EXPECT_EQ(threads, 4);
            for (int y = first; y <= last; ++y) ++(*static_cast<std::vector<int>*>(context))[std::size_t(y)];
        },
        50, &touched);
    EXPECT_EQ(touched, std::vector<int>(50, 1));
}

void CountRows(void* image, int first, int last, int) {
    for (int y = first; y <= last; ++y) ++static_cast<K7Image*>(image)->Rows[y][0];
}

TEST_F(Chunks, ImageOperationsRunUnderTheRecordOfTheirThread) {
    const Picture image = Flat(1, 40, 0);
    RunImageChunks(image.get(), CountRows, 40); // no record: one chunk on this thread
    {
        const Dispatch outer(3);
        RunImageChunks(image.get(), CountRows, 40);
        EXPECT_EQ(outer.record.ImageContext, image.get());
        EXPECT_EQ(outer.record.Threads, 3);
        EXPECT_EQ(CurrentChunks(), &outer.record) << "as before the chunks";
    }
    EXPECT_EQ(CurrentChunks(), nullptr);
    EXPECT_TRUE(Same(*image, *MakePicture(1, 40, [](int, int, int c) { return c == 0 ? 2 : 0; })));
}

TEST_F(Chunks, TwoOperatorsAtOnceKeepToTheirOwnRecords) {
    std::vector<std::thread> frames;
    for (int threads : {1, 2, 3, 4})
        frames.emplace_back([threads] {
            const Dispatch dispatch(threads, true);
            const Picture image = Flat(1, 11, 0);
            for (int i = 0; i < 50; ++i) {
                RunImageChunks(image.get(), CountRows, 11);
                ASSERT_EQ(dispatch.record.Threads, threads);
                ASSERT_EQ(dispatch.record.ImageContext, image.get());
            }
            EXPECT_TRUE(Same(*image, *MakePicture(1, 11, [](int, int, int c) { return c == 0 ? 50 : 0; })));
        });
    for (std::thread& frame : frames) frame.join();
}

TEST_F(Chunks, MessagesReachTheOwnerFromAnyWorker) {
    ReportMessage("nobody listens");
    owner.Threads = 3;
    owner.OnThreads = true;
    core.RunChunks([](PluginK7*, int, int, int) { ReportMessage("no lens"); }, 3);
    EXPECT_EQ(owner.Messages, std::vector<std::string>(3, "no lens"));
}

} // namespace
} // namespace k7::test
