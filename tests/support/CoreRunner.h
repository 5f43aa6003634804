#pragma once

#include "frame/Controls.h"
#include "frame/PluginK7.h"
#include "library/Chunks.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace k7::test {

/// Runs a core's chunks without a host: on real threads, or on the caller's in an order shuffled by a seed.
class TestOwner : public ChunkOwner {
public:
    int ProcessorCount() const override { return Threads; }
    int Division() const override { return Parts ? Parts : Threads; }

    void DoMultiProcess(ChunkRecord& record, int chunks) override {
        if (OnThreads) {
            std::vector<std::thread> threads;
            for (int i = 0; i < chunks; ++i) threads.emplace_back([&, i] { RunChunk(record, Core, i); });
            for (std::thread& thread : threads) thread.join();
            return;
        }
        std::vector<int> order(static_cast<std::size_t>(chunks));
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), std::mt19937(Seed++));
        for (int i : order) RunChunk(record, Core, i);
    }

    bool AbortRaised() const override {
        return Aborted || AsksLeft == 0 || (AsksLeft > 0 && --AsksLeft == 0);
    }

    void TakeMessage(const char* text) override {
        const std::lock_guard lock(mutex_);
        Messages.emplace_back(text);
    }

    PluginK7* Core = nullptr;
    int Threads = 1;
    int Parts = 0; ///< into which the frame is divided; 0: one per thread
    bool OnThreads = false;
    unsigned Seed = 1;
    std::atomic<bool> Aborted = false;
    mutable std::atomic<long> AsksLeft = -1; ///< before the frame aborts; -1: never
    std::vector<std::string> Messages;

private:
    std::mutex mutex_;
};

/// A core with an owner, ready to run frames. Set slots and values on `core`, then call Run.
template <class Core>
struct CoreRunner {
    CoreRunner() {
        owner.Core = &core;
        core.Operator = &owner;
        core.Chunks = &chunks;
        chunks.Owner = &owner;
    }

    /// Runs one frame from `input` (as the input slot's image) and returns the output.
    template <class Sample>
    std::unique_ptr<PictureK7<Sample>> Run(PictureK7<Sample>& input, ImageInputK7& slot) {
        auto output = PictureK7<Sample>::MakeCopy(input);
        slot.Of<Sample>() = &input;
        core.Output.template Of<Sample>() = output.get();
        const CurrentChunksScope scope(&chunks);
        core.Process();
        slot.Of<Sample>() = nullptr;
        core.Output.template Of<Sample>() = nullptr;
        return output;
    }
    template <class Sample>
    std::unique_ptr<PictureK7<Sample>> Run(PictureK7<Sample>& input, int threads = 1) requires
        requires(Core& c) {
        c.Input.Image;
    }
    {
        owner.Threads = threads;
        return Run(input, core.Input);
    }

    TestOwner owner;
    ChunkRecord chunks;
    Core core;
};

} // namespace k7::test
