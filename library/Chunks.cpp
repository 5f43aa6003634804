#include "library/Chunks.h"

#include <algorithm>

namespace k7 {

namespace {

thread_local ChunkRecord* currentChunks = nullptr;

void Dispatch(ChunkRecord& record, int rows) {
    record.Threads = std::max(1, record.Owner->ProcessorCount());
    record.Rows = rows;
    record.Owner->DoMultiProcess(record, record.Threads);
}

} // namespace

ChunkRecord* CurrentChunks() {
    return currentChunks;
}

CurrentChunksScope::CurrentChunksScope(ChunkRecord* record) : outer_(currentChunks) {
    currentChunks = record;
}

CurrentChunksScope::~CurrentChunksScope() {
    currentChunks = outer_;
}

void RunCoreChunks(ChunkRecord& record, CoreWorker worker, int rows) {
    record.CoreFunction = worker;
    record.ImageFunction = nullptr;
    Dispatch(record, rows);
}

void RunImageChunks(void* context, ImageWorker worker, int rows) {
    if (!currentChunks) {
        worker(context, 0, rows - 1, 1);
        return;
    }
    currentChunks->CoreFunction = nullptr;
    currentChunks->ImageFunction = worker;
    currentChunks->ImageContext = context;
    Dispatch(*currentChunks, rows);
}

void RunChunk(ChunkRecord& record, PluginK7* core, int index) {
    const CurrentChunksScope scope(&record);
    const PartRows rows(index, record.Threads, record.Rows);
    if (record.CoreFunction)
        record.CoreFunction(core, rows.first, rows.last, record.Threads);
    else if (record.ImageFunction)
        record.ImageFunction(record.ImageContext, rows.first, rows.last, record.Threads);
}

bool AbortRequested() {
    return currentChunks && currentChunks->Owner->AbortRaised();
}

void ReportMessage(const char* text) {
    if (currentChunks) currentChunks->Owner->TakeMessage(text);
}

} // namespace k7
