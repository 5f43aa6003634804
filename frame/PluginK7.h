#pragma once

#include "library/Chunks.h"

#include <type_traits>

namespace k7 {

/// A worker that is not a member of a core: (context, first, last, threads).
using ExternalWorker = void (*)(void* context, int first, int last, int threads);

/// Base of all effect cores. A core does the picture work of one effect and knows nothing of the host: its
/// owner sets the fields below and the slots and controls of the effect's record, then calls Process.
class PluginK7 {
public:
    PluginK7() = default;
    virtual ~PluginK7() = default;
    PluginK7(const PluginK7&) = delete;
    PluginK7& operator=(const PluginK7&) = delete;

    /// One frame's work. The output slot holds a copy of the main input at the start and the finished frame
    /// at the end, unless the frame was aborted.
    virtual void Process() {}

    /// Hides, shows and greys controls according to the values of the controls that govern them. Called once
    /// before the first Process.
    virtual void RefreshControls() {}

    /// True once the owner has been asked to abandon the frame. Workers ask once per row at most.
    bool IsAborted() const { return Operator->AbortRaised(); }

    /// The number of parts into which work is divided whose result depends on the division; at least 1.
    int Division() const {
        const int parts = Operator->Division();
        return parts > 1 ? parts : 1;
    }

    /// Runs a worker over rows 0 to rows - 1 on all threads; returns when all chunks are done.
    void RunChunks(CoreWorker worker, int rows) { RunCoreChunks(*Chunks, worker, rows); }

    /// The same for a worker with a context of its own.
    void RunExternalChunks(ExternalWorker worker, int rows, void* context);

    double Time = 0.0;        ///< the frame, in frames
    double ExtentStart = 0.0; ///< first and last time of the clip, as the host reports them
    double ExtentEnd = 0.0;
    bool ProcessAlpha = true; ///< false: the core restores the output's alpha from its first input
    ChunkOwner* Operator = nullptr;
    ChunkRecord* Chunks = nullptr;

private:
    ExternalWorker ExternalFunction = nullptr;
    void* ExternalContext = nullptr;
};

template <auto Method>
struct MemberWorker;
template <class Core, void (Core::*Method)(int first, int last)>
struct MemberWorker<Method> {
    static void Call(PluginK7* core, int first, int last, int) {
        (static_cast<Core*>(core)->*Method)(first, last);
    }
};

/// A member function of a core as a worker: RunChunks(WorkerOf<&Clean::FilterRows>, height).
template <auto Method>
inline constexpr CoreWorker WorkerOf = &MemberWorker<Method>::Call;

/// Runs work(first, last) over rows 0 to rows - 1 on all threads of a core; what the work needs, it captures.
template <class Work>
void RunRows(PluginK7& core, int rows, Work&& work) {
    const auto call = [](void* context, int first, int last, int) {
        (*static_cast<std::remove_reference_t<Work>*>(context))(first, last);
    };
    core.RunExternalChunks(call, rows, &work);
}

} // namespace k7
