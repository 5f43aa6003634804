#pragma once

#include "view/Pipeline.h"
#include "view/Shot.h"

#include <QObject>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace view {

/// Renders frames on a thread of its own. The newest order wins: the one that waits is dropped, and the frame
/// in progress is aborted, unless it is a quick one that a drag waits for.
class Renderer : public QObject {
    Q_OBJECT

public:
    explicit Renderer(QObject* parent = nullptr);
    ~Renderer() override;

    void Ask(Order order);
    void Abort();
    bool Busy() const;

signals:
    /// Comes on the thread that asks. Aborted frames are not told of.
    void Done(view::ShotPtr shot);

private:
    void Run();
    void StopFrame();

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<Order> waiting_;
    std::shared_ptr<Pipeline> working_; ///< null between frames
    bool patient_ = false, ending_ = false;
    std::thread thread_; ///< last: it uses all of the above
};

} // namespace view
