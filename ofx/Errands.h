#pragma once

#include <functional>

namespace ofx {

/// Hosts answer on the render thread only, and want to be asked there whether a frame is still needed. So a
/// frame is worked on by a thread of its own; the render thread waits for it, asks, and does its errands.

/// Runs `work` on another thread, and `poll` on this one at least every 10 ms until it is done. Throws what
/// the work throws.
void WorkAside(const std::function<void()>& work, const std::function<void()>& poll);

/// Calls the host: at once, or, from the work of WorkAside, on the thread that waits for it.
void OnHostThread(const std::function<void()>& errand);

} // namespace ofx
