#include "camera/FrameFanout.h"

#include <algorithm>

namespace recorder {

void FrameFanout::forget(const std::shared_ptr<FramePreview>& renderer) {
    std::erase_if(targets_, [&](const Target& target) {
        auto live = target.renderer.lock();
        return !live || live == renderer;
    });
}

void FrameFanout::add(const std::shared_ptr<FramePreview>& renderer) {
    std::lock_guard guard(lock_);
    forget(renderer);
    targets_.push_back({renderer});
}

void FrameFanout::remove(const std::shared_ptr<FramePreview>& renderer) {
    std::lock_guard guard(lock_);
    forget(renderer);
}

std::size_t FrameFanout::count() const {
    std::lock_guard guard(lock_);
    return targets_.size();
}

void FrameFanout::deliver(const MediaSample& frame) {
    std::vector<std::shared_ptr<FramePreview>> live;
    {
        std::lock_guard guard(lock_);
        for (const auto& target : targets_)
            if (auto renderer = target.renderer.lock()) live.push_back(std::move(renderer));
    }
    for (const auto& renderer : live) {
        if (renderer->needsFlush()) renderer->flush();
        renderer->show(frame);
    }
}

} // namespace recorder
