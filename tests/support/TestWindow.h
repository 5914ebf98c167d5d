#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>

namespace recorder::test {

struct TestWindowOptions {
    std::string title;
    std::string instance = "testapp";
    std::string className = "TestApp";
    bool claimsThisProcess = false; // _NET_WM_PID of the test process
    std::string type;               // an _NET_WM_WINDOW_TYPE_… atom name
    bool overrideRedirect = false;
    bool mapped = true;
};

// A window of a pretend application on a test X server, painted in two
// halves of known colours (0xRRGGBB). Like a real application it repaints
// itself whenever the server says part of it was exposed.
class TestWindow {
public:
    using Options = TestWindowOptions;


    TestWindow(const std::string& display, int x, int y, int width, int height, const std::string& title,
               Options options = Options())
        : width_(width), height_(height) {
        c_ = xcb_connect(display.c_str(), nullptr);
        xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c_)).data;
        window_ = xcb_generate_id(c_);
        std::uint32_t values[] = {0, std::uint32_t(options.overrideRedirect),
                                  XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_create_window(c_, XCB_COPY_FROM_PARENT, window_, screen->root, std::int16_t(x), std::int16_t(y),
                          std::uint16_t(width), std::uint16_t(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        options.title = title;
        describe(options);
        gc_ = xcb_generate_id(c_);
        xcb_create_gc(c_, gc_, window_, 0, nullptr);
        if (options.mapped) xcb_map_window(c_, window_);
        sync();
        events_ = std::thread([this] { handleEvents(); });
    }

    ~TestWindow() {
        destroy();
        events_.join();
        xcb_disconnect(c_);
    }

    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    xcb_window_t id() const { return window_; }

    void paint(std::uint32_t left, std::uint32_t right) {
        {
            std::lock_guard lock(lock_);
            left_ = left;
            right_ = right;
        }
        draw();
        sync();
    }
    void paint(std::uint32_t colour) { paint(colour, colour); }

    void raise() {
        std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(c_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        sync();
    }

    void destroy() {
        std::lock_guard lock(lock_);
        if (destroyed_) return;
        destroyed_ = true;
        xcb_destroy_window(c_, window_);
        xcb_flush(c_);
    }

    // A round trip: everything asked of the server so far is done.
    void sync() { free(xcb_get_input_focus_reply(c_, xcb_get_input_focus(c_), nullptr)); }

private:
    xcb_atom_t atom(const char* name) {
        auto* reply = xcb_intern_atom_reply(c_, xcb_intern_atom(c_, 0, std::uint16_t(std::strlen(name)), name), nullptr);
        xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        free(reply);
        return value;
    }

    void describe(const Options& options) {
        auto text = [&](xcb_atom_t property, xcb_atom_t type, const std::string& value) {
            xcb_change_property(c_, XCB_PROP_MODE_REPLACE, window_, property, type, 8, std::uint32_t(value.size()),
                                value.data());
        };
        if (!options.title.empty()) {
            text(atom("_NET_WM_NAME"), atom("UTF8_STRING"), options.title);
            text(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, options.title);
        }
        std::string wmClass = options.instance + '\0' + options.className + '\0';
        if (!options.instance.empty()) text(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, wmClass);
        if (options.claimsThisProcess) {
            std::uint32_t pid = std::uint32_t(getpid());
            xcb_change_property(c_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &pid);
        }
        if (!options.type.empty()) {
            xcb_atom_t type = atom(options.type.c_str());
            xcb_change_property(c_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &type);
        }
    }

    void draw() {
        std::uint32_t left, right;
        {
            std::lock_guard lock(lock_);
            if (destroyed_) return;
            left = left_;
            right = right_;
        }
        int half = width_ / 2;
        xcb_rectangle_t leftHalf{0, 0, std::uint16_t(half), std::uint16_t(height_)};
        xcb_rectangle_t rightHalf{std::int16_t(half), 0, std::uint16_t(width_ - half), std::uint16_t(height_)};
        xcb_change_gc(c_, gc_, XCB_GC_FOREGROUND, &left);
        xcb_poly_fill_rectangle(c_, window_, gc_, 1, &leftHalf);
        xcb_change_gc(c_, gc_, XCB_GC_FOREGROUND, &right);
        xcb_poly_fill_rectangle(c_, window_, gc_, 1, &rightHalf);
        xcb_flush(c_);
    }

    void handleEvents() {
        while (xcb_generic_event_t* event = xcb_wait_for_event(c_)) {
            std::uint8_t type = event->response_type & 0x7f;
            bool gone = type == XCB_DESTROY_NOTIFY;
            if (type == XCB_EXPOSE) draw();
            free(event);
            if (gone) return;
        }
    }

    int width_;
    int height_;
    xcb_connection_t* c_;
    xcb_window_t window_;
    xcb_gcontext_t gc_;
    std::thread events_;
    std::mutex lock_;
    std::uint32_t left_ = 0;
    std::uint32_t right_ = 0;
    bool destroyed_ = false;
};

} // namespace recorder::test
