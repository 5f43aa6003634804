#pragma once

#include "view/Shot.h"

#include <cstddef>
#include <map>
#include <vector>

namespace view {

/// The frames of the look as it is that have been rendered, so that a clip plays.
class FrameStore {
public:
    /// Of the results' pixels.
    void SetRoom(std::size_t bytes) { room_ = bytes; }

    void Clear();
    ShotPtr Find(int frame) const; ///< null if it is not held
    /// Makes room by dropping the frames that lie furthest from this one.
    void Enter(const ShotPtr& shot);
    bool Full() const { return used_ + largest_ > room_; }
    std::vector<int> Frames() const;

private:
    void DropFurthest(int from);

    std::size_t room_ = std::size_t{1} << 30;
    std::size_t used_ = 0, largest_ = 0;
    std::map<int, ShotPtr> shots_;
};

} // namespace view
