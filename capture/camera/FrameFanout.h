#pragma once

#include "camera/FramePreview.h"
#include "sink/MediaSample.h"

#include <memory>
#include <mutex>
#include <vector>

namespace recorder {

// One stream of camera frames to any number of live previews. Previews are
// held weakly: one that has gone away is skipped, and forgotten at the next
// add or remove.
class FrameFanout {
public:
    struct Target {
        std::weak_ptr<FramePreview> renderer;
    };

    // A preview stands only once, however often it is added.
    void add(const std::shared_ptr<FramePreview>& renderer);
    void remove(const std::shared_ptr<FramePreview>& renderer);
    // Copies the live targets under the lock and shows outside it, so a slow
    // preview can't hold up add or remove.
    void deliver(const MediaSample& frame);
    std::size_t count() const;

private:
    void forget(const std::shared_ptr<FramePreview>& renderer);

    mutable std::mutex lock_;
    std::vector<Target> targets_;
};

} // namespace recorder
