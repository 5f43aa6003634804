#pragma once

#include <functional>

namespace ofx {

/// Hosts answer only on the render thread, and expect to be asked there whether a frame is still needed. So a
/// frame is rendered on a thread of its own; the render thread waits for it, asks, and makes its calls to the
/// host.

/// Runs `work` on another thread, and `poll` on this one at least every 10 ms until it is done. Rethrows what
/// the work throws.
void WorkAside(const std::function<void()>& work, const std::function<void()>& poll);

/// Calls the host: at once, or, from the work of WorkAside, on the thread that waits for it.
void OnHostThread(const std::function<void()>& errand);

} // namespace ofx
