#pragma once

#include "baselib/VectorLevel.h"

namespace k7::test {

/// Runs a test on the kernels of each level that the processor has.
template <class Test>
void OnEachLevel(Test test) {
    const int widest = static_cast<int>(CurrentVectorLevel());
    for (int level = 0; level <= widest; ++level) {
        ForceVectorLevel(static_cast<VectorLevel>(level));
        test();
    }
    ForceVectorLevel({});
}

} // namespace k7::test
