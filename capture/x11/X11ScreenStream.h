#pragma once

#include "queue/SerialQueue.h"
#include "screen/ScreenStream.h"
#include "screen/StreamConfiguration.h"
#include "screen/StreamFilter.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <chrono>
#include <memory>
#include <string>

namespace recorder {

class FramePool;
class ShmImage;
class X11Connection;

// Captures a display, an area of one, or a window on an X server, on the
// queue it is given, one tick per frame interval:
// - a display or an area is read from the root window with MIT-SHM;
// - a window is redirected with Composite (automatic redirection: the server
//   keeps drawing it on screen for us) and read from its own pixmap, so it is
//   captured whole while covered, with no compositing manager running;
// - Damage says whether anything in the region changed since the last
//   picture; a tick without damage delivers nothing. The pointer draws no
//   damage and is not in the picture.
// A display or an area shows whatever is on screen there: X11 has no way to
// leave this application's own floating windows out of it, so whoever shows
// them during a recording keeps them clear of the recorded region.
class X11ScreenStream : public ScreenStream {
public:
    X11ScreenStream(std::string display, StreamFilter filter, StreamConfiguration configuration, SerialQueue& queue);
    ~X11ScreenStream() override;

    void start(FrameHandler onFrame, StopHandler onStop) override;
    void stop() override;

private:
    using Clock = std::chrono::steady_clock;

    // All below run on the queue.
    void setUp();
    void setUpDisplay(std::uint32_t id);
    void setUpWindow(std::uint32_t id);
    void queryExtensions();
    void scheduleTick();
    void tick();
    void readEvents();
    void handle(const xcb_generic_event_t& event);
    void noteDamage(const xcb_rectangle_t& area);
    void checkMonitor();
    void nameWindowPixmap();
    void deliverPicture();
    void end(const std::string& reason);
    void release();

    std::string displayName_;
    StreamFilter filter_;
    StreamConfiguration configuration_;
    SerialQueue& queue_;
    FrameHandler onFrame_;
    StopHandler onStop_;

    std::unique_ptr<X11Connection> x_;
    std::unique_ptr<ShmImage> image_;
    std::unique_ptr<FramePool> pool_;
    std::uint8_t damageEvent_ = 0;
    std::uint8_t randrEvent_ = 0;
    xcb_damage_damage_t damage_ = 0;
    xcb_window_t window_ = 0;
    xcb_pixmap_t pixmap_ = 0;
    int windowBorder_ = 0;
    int windowWidth_ = 0;
    int windowHeight_ = 0;
    bool mapped_ = true;
    std::uint32_t monitorID_ = 0;
    // The display's region in root pixels, for a display or an area.
    int regionX_ = 0;
    int regionY_ = 0;
    bool running_ = false;
    bool dirty_ = true;
    bool damaged_ = false;
    Clock::time_point nextTick_;
    Clock::time_point nextMonitorCheck_;
    // Ticks wait on the queue; they check this token so that a stream that
    // has gone is never touched.
    std::shared_ptr<int> lifetime_ = std::make_shared<int>(0);
};

} // namespace recorder
