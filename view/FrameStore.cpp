#include "view/FrameStore.h"

#include <cstdlib>

namespace view {

namespace {

std::size_t BytesOf(const Shot& shot) {
    return shot.after ? shot.after->Bytes() : 0;
}

} // namespace

void FrameStore::Clear() {
    shots_.clear();
    used_ = 0;
}

ShotPtr FrameStore::Find(int frame) const {
    const auto found = shots_.find(frame);
    return found == shots_.end() ? nullptr : found->second;
}

void FrameStore::DropFurthest(int from) {
    const auto last = std::prev(shots_.end());
    const bool low = std::abs(shots_.begin()->first - from) > std::abs(last->first - from);
    const auto furthest = low ? shots_.begin() : last;
    used_ -= BytesOf(*furthest->second);
    shots_.erase(furthest);
}

void FrameStore::Enter(const ShotPtr& shot) {
    if (const ShotPtr old = Find(shot->frame)) used_ -= BytesOf(*old);
    shots_[shot->frame] = shot;
    used_ += BytesOf(*shot);
    largest_ = std::max(largest_, BytesOf(*shot));
    while (used_ > room_ && shots_.size() > 1) DropFurthest(shot->frame);
}

std::vector<int> FrameStore::Frames() const {
    std::vector<int> frames;
    for (const auto& [frame, shot] : shots_) frames.push_back(frame);
    return frames;
}

} // namespace view
