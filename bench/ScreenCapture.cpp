// 1080p60 capture of a busy X screen (a program scrolling text) through the
// screen capturer and the sink, against FFmpeg's x11grab with the same
// encoder settings, in the same run on the same kind of screen. Prints frames
// kept and dropped and the CPU each used, with the ratio of the two.
//
//   bench_ScreenCapture [seconds]      (60 by default)
#include "../tests/support/XvfbDisplay.h"
#include "clock/HostClock.h"
#include "screen/ScreenCapturer.h"
#include "x11/X11CaptureBackend.h"

#include <xcb/xcb.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

extern "C" {
#include <libavformat/avformat.h>
}

using namespace recorder;

namespace {

constexpr int width = 1920, height = 1080, fps = 60;

double cpuSeconds(const rusage& usage) {
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double processCpu() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return cpuSeconds(usage);
}

// How many times the scrolling text has moved, counted by its process in
// memory shared with this one.
std::atomic<long>* screenChanges = nullptr;

// A full-screen window of text scrolling up two pixels each 1/60 s, in a
// process of its own so that its work is counted for neither recorder.
pid_t startScrollingText(const std::string& display) {
    void* shared = mmap(nullptr, sizeof(std::atomic<long>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    screenChanges = new (shared) std::atomic<long>(0);
    pid_t child = fork();
    if (child != 0) return child;
    xcb_connection_t* c = xcb_connect(display.c_str(), nullptr);
    xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    xcb_window_t window = xcb_generate_id(c);
    std::uint32_t background = screen->white_pixel;
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL, &background);
    xcb_map_window(c, window);
    xcb_font_t font = xcb_generate_id(c);
    xcb_open_font(c, font, 5, "fixed");
    xcb_gcontext_t text = xcb_generate_id(c), clear = xcb_generate_id(c);
    std::uint32_t textValues[] = {screen->black_pixel, screen->white_pixel, font};
    xcb_create_gc(c, text, window, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT, textValues);
    xcb_create_gc(c, clear, window, XCB_GC_FOREGROUND, &screen->white_pixel);
    auto next = std::chrono::steady_clock::now();
    for (long frame = 0;; ++frame) {
        xcb_copy_area(c, window, window, text, 0, 2, 0, 0, width, height - 2);
        xcb_rectangle_t bottom{0, height - 2, width, 2};
        xcb_poly_fill_rectangle(c, window, clear, 1, &bottom);
        if (frame % 8 == 0) {
            char line[256];
            int length = std::snprintf(line, sizeof line, "%08ld  the quick brown fox jumps over the lazy dog; "
                                       "0123456789 ABCDEFGHIJKLMNOPQRSTUVWXYZ %ld", frame, frame * 7919 % 100000);
            xcb_image_text_8(c, std::uint8_t(length), window, text, 8, height - 4, line);
        }
        free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        ++*screenChanges;
        next += std::chrono::microseconds(1'000'000 / fps);
        std::this_thread::sleep_until(next);
    }
}

struct Outcome {
    long screenChanges = 0;
    long delivered = 0;
    double seconds = 0;
    long frames = 0;
    long dropped = 0;
    double cpu = 0;
};

long packetsIn(const std::filesystem::path& file) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0) return 0;
    avformat_find_stream_info(format, nullptr);
    long count = 0;
    AVPacket* packet = av_packet_alloc();
    while (av_read_frame(format, packet) >= 0) {
        count += format->streams[packet->stream_index]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&format);
    return count;
}

Outcome recordWithCapturer(const std::string& display, double seconds, const std::filesystem::path& folder) {
    auto backend = std::make_shared<X11CaptureBackend>(display);
    ScreenCapturer capturer(CaptureSource::display(backend->shareableContent().displays.at(0).id), fps, false, folder,
                            backend);
    double cpuBefore = processCpu();
    double began = HostClock::seconds();
    capturer.start();
    long changesBefore = *screenChanges;
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    long changes = *screenChanges - changesBefore;
    auto result = capturer.stop();
    Outcome outcome;
    outcome.screenChanges = changes;
    outcome.delivered = capturer.frameCount();
    outcome.seconds = HostClock::seconds() - began;
    outcome.cpu = processCpu() - cpuBefore;
    outcome.frames = packetsIn(folder / "screen.mov");
    outcome.dropped = result ? result->droppedFrames : 0;
    return outcome;
}

Outcome recordWithX11grab(const std::string& display, double seconds, const std::filesystem::path& folder) {
    auto output = folder / "x11grab.mp4";
    auto log = folder / "x11grab.log";
    std::string duration = std::to_string(seconds);
    double began = HostClock::seconds();
    pid_t child = fork();
    if (child == 0) {
        int err = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(err, STDERR_FILENO);
        execlp("ffmpeg", "ffmpeg", "-y", "-nostdin", "-f", "x11grab", "-framerate", "60", "-video_size", "1920x1080", "-i",
               display.c_str(), "-t", duration.c_str(), "-c:v", "libx264", "-preset", "veryfast", "-bf", "0", "-g", "120",
               "-b:v", "16M", output.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Outcome outcome;
    outcome.seconds = HostClock::seconds() - began;
    outcome.cpu = cpuSeconds(usage);
    outcome.frames = packetsIn(output);
    // ffmpeg's last progress line says how many grabbed frames it dropped.
    std::ifstream in(log);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string tail = text.substr(text.size() > 4000 ? text.size() - 4000 : 0);
    std::regex droppedCount("drop=\\s*(\\d+)");
    for (std::sregex_iterator it(tail.begin(), tail.end(), droppedCount), end; it != end; ++it)
        outcome.dropped = std::stol((*it)[1]);
    return outcome;
}

void report(const char* name, const Outcome& o) {
    std::printf("%-9s %6.1f s  written %5ld  dropped %4ld  CPU %6.1f s = %5.1f %% of a core\n", name, o.seconds,
                o.frames, o.dropped, o.cpu, 100.0 * o.cpu / o.seconds);
}

} // namespace

int main(int argc, char** argv) {
    double seconds = argc > 1 ? std::atof(argv[1]) : 60;
    av_log_set_level(AV_LOG_ERROR);
    test::XvfbDisplay display(width, height);
    pid_t scroller = startScrollingText(display.name());
    std::this_thread::sleep_for(std::chrono::seconds(1));
    auto folder = std::filesystem::temp_directory_path() / ("bench-screen-capture-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);

    Outcome ours = recordWithCapturer(display.name(), seconds, folder);
    Outcome theirs = recordWithX11grab(display.name(), seconds, folder);
    kill(scroller, SIGTERM);
    waitpid(scroller, nullptr, 0);
    std::filesystem::remove_all(folder);

    std::printf("\n1080p60 of scrolling text for %.0f s, H.264 veryfast, no B-frames, key frame every 120:\n", seconds);
    // The capturer delivers a picture for each tick in which the screen
    // changed; x11grab grabs every tick and repeats or drops to keep 60/s.
    std::printf("screen changed %ld times while the capturer ran; it delivered %ld pictures and kept %.1f %% of them\n",
                ours.screenChanges, ours.delivered, 100.0 * double(ours.frames) / double(std::max(ours.delivered, 1L)));
    report("capturer", ours);
    report("x11grab", theirs);
    std::printf("CPU per second, capturer / x11grab: %.2fx\n", (ours.cpu / ours.seconds) / (theirs.cpu / theirs.seconds));
    return 0;
}
