#pragma once

#include "media/Stack.h"
#include "view/Proxy.h"
#include "view/Shot.h"

#include <QObject>

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace view {

/// Renders frames on a thread of its own, with an instance of the tool of its own. The newest order wins: the
/// one that waits is dropped, and the frame in work is aborted, unless it is a quick one that a drag waits
/// for.
class Renderer : public QObject {
    Q_OBJECT

public:
    /// `links` as `k7 render -i` takes them. Throws media::UsageError, media::FrameError.
    Renderer(host::Registry& entry, const std::vector<std::string>& links, QObject* parent = nullptr);
    ~Renderer() override;

    media::Clip& MainClip() const { return tool_.MainClip(); }
    /// Frames of the main clip; frame 0 alone for a single picture.
    media::FrameSpan Span() const { return span_; }

    void Ask(Order order);
    void Abort();
    bool Busy() const;

signals:
    /// Comes on the thread that asks. Aborted frames are not told of.
    void Done(view::ShotPtr shot);

private:
    void Run();
    std::shared_ptr<Shot> Render(const Order& order);
    void Prepare(const Order& order);

    media::Stack tool_;
    std::vector<std::unique_ptr<Proxy>> proxies_;
    media::FrameSpan span_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<Order> waiting_;
    bool working_ = false, patient_ = false, ending_ = false;
    std::thread thread_; ///< last: it uses all of the above
};

} // namespace view
