#pragma once

#include <type_traits>

namespace k7 {

class PluginK7;
struct ChunkRecord;

// Row work is spread over threads in chunks: inclusive ranges [first, last] of rows (or of columns), where
// first > last means nothing to do. A worker writes only what belongs to its range and reads all else.

using CoreWorker = void (*)(PluginK7* core, int first, int last, int threads);
using ImageWorker = void (*)(void* context, int first, int last, int threads);

/// What runs an effect: the operator under a host, a few lines in a test.
class ChunkOwner {
public:
    virtual ~ChunkOwner() = default;

    /// How many chunks a dispatch is divided into; a value below 1 counts as 1.
    virtual int ProcessorCount() const = 0;

    /// Into how many parts work is divided whose result shows the division, whoever does it: those of a
    /// dispatch, unless the owner says otherwise.
    virtual int Division() const { return ProcessorCount(); }

    /// Calls RunChunk once for each index from 0 to chunks - 1, on any threads and in any order, and returns
    /// when all of them have returned.
    virtual void DoMultiProcess(ChunkRecord& record, int chunks) = 0;

    /// True once the frame is to be abandoned. Any thread may ask.
    virtual bool AbortRaised() const = 0;

    /// Takes a text that tells of a failure; it must not keep the pointer. Any thread may call.
    virtual void TakeMessage(const char* text) = 0;
};

/// The rows of part `index` of `parts`, inclusive. Where there are fewer rows than parts the last one has
/// all.
struct PartRows {
    PartRows(int index, int parts, int rows)
        : first(rows / parts * index)
        , last(index == parts - 1 ? rows - 1 : first + rows / parts - 1) {}
    /// The part that a row lies in.
    static PartRows Around(int row, int parts, int rows) {
        const int per = rows / parts;
        return {per > 0 && row / per < parts ? row / per : parts - 1, parts, rows};
    }

    int first, last;
};

/// The dispatch in progress; one for each operator, shared by its core and the image layer.
struct ChunkRecord {
    void* Request = nullptr; ///< the host's request being served; nobody here looks inside
    CoreWorker CoreFunction = nullptr;
    ImageWorker ImageFunction = nullptr;
    int Threads = 1;
    int Rows = 0;
    void* ImageContext = nullptr; ///< what the image function works on
    ChunkOwner* Owner = nullptr;
};

/// The record that image operations on this thread run under; null outside of a frame.
ChunkRecord* CurrentChunks();

/// Makes a record the current one of this thread for as long as the object lives.
class CurrentChunksScope {
public:
    explicit CurrentChunksScope(ChunkRecord* record);
    ~CurrentChunksScope();
    CurrentChunksScope(const CurrentChunksScope&) = delete;
    CurrentChunksScope& operator=(const CurrentChunksScope&) = delete;

private:
    ChunkRecord* outer_;
};

/// Runs a core's worker over rows 0 to rows - 1. Returns when all chunks are done.
void RunCoreChunks(ChunkRecord& record, CoreWorker worker, int rows);

/// The same for an image operation, under the current record. Without one it runs as a single chunk on this
/// thread.
void RunImageChunks(void* context, ImageWorker worker, int rows);

/// Runs work(first, last) over rows 0 to rows - 1 as an image operation; what the work needs, it captures.
template <class Work>
void RunImageRows(int rows, Work&& work) {
    const auto call = [](void* context, int first, int last, int) {
        (*static_cast<std::remove_reference_t<Work>*>(context))(first, last);
    };
    RunImageChunks(&work, call, rows);
}

/// Runs chunk `index` of the dispatch that stands in the record. `core` is the context of core workers.
void RunChunk(ChunkRecord& record, PluginK7* core, int index);

/// True once the owner of the current record has been asked to abandon the frame; false outside of a frame.
/// What an aborted frame holds is never used, so work of every kind may stop half-way.
bool AbortRequested();

/// Says that something went wrong; the text goes to the owner of the current record, or nowhere.
void ReportMessage(const char* text);

} // namespace k7
