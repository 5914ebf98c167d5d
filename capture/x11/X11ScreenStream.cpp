#include "x11/X11ScreenStream.h"

#include "clock/HostClock.h"
#include "sink/FramePool.h"
#include "x11/ShmImage.h"
#include "x11/X11Connection.h"
#include "x11/X11Monitor.h"
#include "x11/XcbReply.h"

#include <libyuv.h>
#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <algorithm>

namespace recorder {

namespace {

constexpr auto monitorCheckInterval = std::chrono::seconds(1);

bool present(xcb_connection_t* c, xcb_extension_t* extension) {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(c, extension);
    return data && data->present;
}

bool intersects(const xcb_rectangle_t& a, int x, int y, int width, int height) {
    return a.x < x + width && x < a.x + a.width && a.y < y + height && y < a.y + a.height;
}

} // namespace

X11ScreenStream::X11ScreenStream(std::string display, StreamFilter filter, StreamConfiguration configuration,
                                 SerialQueue& queue)
    : displayName_(std::move(display)), filter_(filter), configuration_(configuration), queue_(queue) {}

X11ScreenStream::~X11ScreenStream() { stop(); }

void X11ScreenStream::start(FrameHandler onFrame, StopHandler onStop) {
    std::exception_ptr failure;
    queue_.sync([&] {
        try {
            onFrame_ = std::move(onFrame);
            onStop_ = std::move(onStop);
            setUp();
            running_ = true;
            nextTick_ = Clock::now();
            nextMonitorCheck_ = nextTick_ + monitorCheckInterval;
            scheduleTick();
        } catch (...) {
            failure = std::current_exception();
            release();
        }
    });
    if (failure) std::rethrow_exception(failure);
}

void X11ScreenStream::stop() {
    queue_.sync([this] {
        running_ = false;
        release();
        lifetime_.reset();
    });
}

void X11ScreenStream::setUp() {
    x_ = std::make_unique<X11Connection>(displayName_);
    queryExtensions();
    if (auto* window = std::get_if<StreamFilter::Window>(&filter_.value)) setUpWindow(window->id);
    else setUpDisplay(std::get<StreamFilter::Display>(filter_.value).id);
    damage_ = xcb_generate_id(x_->get());
    xcb_damage_create(x_->get(), damage_, window_ ? window_ : x_->root(), XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
    xcb_flush(x_->get());
}

void X11ScreenStream::queryExtensions() {
    auto* c = x_->get();
    if (!present(c, &xcb_damage_id) || !present(c, &xcb_xfixes_id))
        throw CaptureError::deviceUnavailable("The X server's Damage extension");
    // Damage needs XFixes and itself negotiated before its first request.
    free(xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0), nullptr));
    free(xcb_damage_query_version_reply(c, xcb_damage_query_version(c, 1, 1), nullptr));
    damageEvent_ = xcb_get_extension_data(c, &xcb_damage_id)->first_event;
    if (present(c, &xcb_randr_id)) randrEvent_ = xcb_get_extension_data(c, &xcb_randr_id)->first_event;
}

void X11ScreenStream::setUpDisplay(std::uint32_t id) {
    auto monitors = X11Monitor::list(*x_);
    auto found = std::find_if(monitors.begin(), monitors.end(), [&](const X11Monitor& m) { return m.id == id; });
    if (found == monitors.end()) throw CaptureError::noContent();
    monitorID_ = id;
    Rect source = configuration_.sourceRect.value_or(Rect{0, 0, found->frame.width, found->frame.height});
    regionX_ = int(found->frame.x + source.x);
    regionY_ = int(found->frame.y + source.y);
    if (randrEvent_) {
        xcb_randr_select_input(x_->get(), x_->root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    }
    image_ = std::make_unique<ShmImage>(x_->get(), configuration_.width, configuration_.height);
}

void X11ScreenStream::setUpWindow(std::uint32_t id) {
    auto* c = x_->get();
    XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id), nullptr));
    XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, xcb_get_geometry(c, id), nullptr));
    if (!attributes || !geometry) throw CaptureError::noContent();
    if (!present(c, &xcb_composite_id)) throw CaptureError::deviceUnavailable("The X server's Composite extension");
    free(xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4), nullptr));
    window_ = id;
    windowWidth_ = geometry->width;
    windowHeight_ = geometry->height;
    windowBorder_ = geometry->border_width;
    std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(c, window_, XCB_CW_EVENT_MASK, &events);
    xcb_composite_redirect_window(c, window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    mapped_ = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    nameWindowPixmap();
    // What was covered before redirection was never drawn anywhere: ask the
    // window to paint itself whole, into its own pixmap now.
    xcb_clear_area(c, 1, window_, 0, 0, 0, 0);
    int width = std::max<int>(x_->screen()->width_in_pixels, windowWidth_);
    int height = std::max<int>(x_->screen()->height_in_pixels, windowHeight_);
    image_ = std::make_unique<ShmImage>(c, width, height);
}

void X11ScreenStream::nameWindowPixmap() {
    auto* c = x_->get();
    if (pixmap_) xcb_free_pixmap(c, pixmap_);
    pixmap_ = 0;
    dirty_ = true;
    if (!mapped_) return;
    xcb_pixmap_t pixmap = xcb_generate_id(c);
    XcbReply<xcb_generic_error_t> error(
        xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, window_, pixmap)));
    if (!error) pixmap_ = pixmap;
}

void X11ScreenStream::scheduleTick() {
    auto period = std::chrono::nanoseconds(HostClock::nanosecondsPerSecond / std::max(configuration_.fps, 1));
    auto now = Clock::now();
    // A late tick doesn't make up for the ones it missed: those are skipped.
    while (nextTick_ < now) nextTick_ += period;
    std::weak_ptr<int> alive = lifetime_;
    queue_.asyncAt(nextTick_, [this, alive] {
        if (alive.lock()) tick();
    });
    nextTick_ += period;
}

void X11ScreenStream::tick() {
    if (!running_) return;
    readEvents();
    if (running_ && x_->hasFailed()) end("the connection to the X server was lost.");
    if (running_ && monitorID_ && Clock::now() >= nextMonitorCheck_) checkMonitor();
    if (!running_) return;
    // Repair before reading: damage drawn from here on shows up as a new
    // event, and at worst brings one picture too many.
    if (damaged_) xcb_damage_subtract(x_->get(), damage_, XCB_NONE, XCB_NONE);
    damaged_ = false;
    if (dirty_) deliverPicture();
    scheduleTick();
}

void X11ScreenStream::readEvents() {
    while (xcb_generic_event_t* event = xcb_poll_for_event(x_->get())) {
        handle(*event);
        free(event);
        if (!running_) return;
    }
}

void X11ScreenStream::handle(const xcb_generic_event_t& event) {
    std::uint8_t type = event.response_type & 0x7f;
    if (type == damageEvent_ + XCB_DAMAGE_NOTIFY) {
        noteDamage(reinterpret_cast<const xcb_damage_notify_event_t&>(event).area);
        return;
    }
    if (randrEvent_ && (type == randrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == randrEvent_ + XCB_RANDR_NOTIFY)) {
        nextMonitorCheck_ = Clock::now();
        return;
    }
    switch (type) {
    case XCB_DESTROY_NOTIFY:
        if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == window_) end("the window was closed.");
        break;
    case XCB_UNMAP_NOTIFY:
        if (reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window == window_) {
            mapped_ = false;
            nameWindowPixmap();
        }
        break;
    case XCB_MAP_NOTIFY:
        if (reinterpret_cast<const xcb_map_notify_event_t&>(event).window == window_) {
            mapped_ = true;
            nameWindowPixmap();
        }
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (configure.window != window_) break;
        bool resized = configure.width != windowWidth_ || configure.height != windowHeight_ ||
                       configure.border_width != windowBorder_;
        windowWidth_ = configure.width;
        windowHeight_ = configure.height;
        windowBorder_ = configure.border_width;
        // A resized window has a new pixmap.
        if (resized) nameWindowPixmap();
        break;
    }
    default:
        break;
    }
}

void X11ScreenStream::noteDamage(const xcb_rectangle_t& area) {
    damaged_ = true;
    if (window_ || intersects(area, regionX_, regionY_, configuration_.width, configuration_.height)) dirty_ = true;
}

void X11ScreenStream::checkMonitor() {
    nextMonitorCheck_ = Clock::now() + monitorCheckInterval;
    auto monitors = X11Monitor::list(*x_);
    auto found = std::find_if(monitors.begin(), monitors.end(), [&](const X11Monitor& m) { return m.id == monitorID_; });
    if (found == monitors.end()) end("the display was disconnected.");
}

void X11ScreenStream::deliverPicture() {
    std::int64_t pts = HostClock::nanoseconds();
    bool grabbed = false;
    if (window_) {
        if (!pixmap_) return;
        grabbed = image_->grab(pixmap_, windowBorder_, windowBorder_, windowWidth_ & ~1, windowHeight_ & ~1);
    } else {
        // An area reaching past the screen's edge is cut at it.
        int width = std::min<int>(configuration_.width, x_->screen()->width_in_pixels - regionX_) & ~1;
        int height = std::min<int>(configuration_.height, x_->screen()->height_in_pixels - regionY_) & ~1;
        grabbed = image_->grab(x_->root(), regionX_, regionY_, width, height);
    }
    dirty_ = false;
    if (!grabbed) return;
    if (!pool_ || pool_->width() != image_->width() || pool_->height() != image_->height())
        pool_ = std::make_unique<FramePool>(image_->width(), image_->height());
    auto frame = pool_->take();
    libyuv::ARGBToI420(image_->data(), image_->stride(), frame->data[0], frame->linesize[0], frame->data[1],
                       frame->linesize[1], frame->data[2], frame->linesize[2], image_->width(), image_->height());
    onFrame_(MediaSample::video(frame, pts));
}

void X11ScreenStream::end(const std::string& reason) {
    if (!running_) return;
    running_ = false;
    release();
    if (onStop_) onStop_(CaptureError::streamFailed(reason));
}

void X11ScreenStream::release() {
    if (!x_) return;
    auto* c = x_->get();
    if (!x_->hasFailed()) {
        if (damage_) xcb_damage_destroy(c, damage_);
        if (pixmap_) xcb_free_pixmap(c, pixmap_);
        if (window_) xcb_composite_unredirect_window(c, window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        xcb_flush(c);
    }
    damage_ = 0;
    pixmap_ = 0;
    image_.reset();
    x_.reset();
}

} // namespace recorder
