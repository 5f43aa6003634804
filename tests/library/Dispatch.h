#pragma once

#include "tests/support/CoreRunner.h"

namespace k7::test {

/// Image operations under a number of threads, on real ones or in turn.
struct Dispatch {
    explicit Dispatch(int threads, bool real = false) : scope(&record) {
        owner.Threads = threads;
        owner.OnThreads = real;
        record.Owner = &owner;
    }
    TestOwner owner;
    ChunkRecord record;
    CurrentChunksScope scope;
};

} // namespace k7::test
