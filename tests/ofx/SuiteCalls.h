#pragma once

#include "tests/ofx/StrictHost.h"

namespace k7::test::ofx {

using Status = int;
inline constexpr Status kOk = 0, kFailed = 1, kUnknown = 3, kUnsupported = 5, kExists = 6, kBadHandle = 9,
                        kValue = 11;

// The actions in which the standard allows which calls. Each name is followed by a blank.
inline constexpr char kWhereDefined[] = "OfxImageEffectActionDescribeInContext ";
inline constexpr char kWhereWritten[] =
    "OfxActionCreateInstance OfxActionBeginInstanceChanged OfxActionInstanceChanged "
    "OfxActionEndInstanceChanged "
    "OfxActionSyncPrivateData OfxInteractActionPenDown OfxInteractActionPenMotion OfxInteractActionPenUp ";
inline constexpr char kWherePictures[] = "OfxImageEffectActionRender OfxActionInstanceChanged ";
inline constexpr char kWhereAborted[] = "OfxImageEffectActionRender ";

inline StrictHost& Host() {
    return StrictHost::Now();
}

/// Begins each function: returns for it if it has to fail.
#define ENTER(...)                                                                                           \
    if (const int answer = Host().Entered(__func__ __VA_OPT__(, ) __VA_ARGS__); answer >= 0) return answer

/// Stands for members that the plug-in does not need.
inline Status notExpected() {
    Host().Fault("a suite's function that nobody expected");
    return kUnsupported;
}

template <class Function>
const void* F(Function* function) {
    return reinterpret_cast<const void*>(function);
}

/// The addresses of the parameter suite's functions.
const void* ParameterSuite();

} // namespace k7::test::ofx
