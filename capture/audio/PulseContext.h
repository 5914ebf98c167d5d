#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pa_context;
struct pa_threaded_mainloop;

namespace recorder {

// One connection to the sound server (PulseAudio, or PipeWire speaking its
// protocol) with its own event thread. Every call here takes the loop's lock
// itself; callbacks of streams made on `context()` run on that thread.
class PulseContext {
public:
    struct Source {
        std::string name;
        std::string description;
        int channels = 0;
        int sampleRate = 0;
        bool isMonitor = false;
        bool operator==(const Source&) const = default;
    };
    struct ServerInfo {
        std::string defaultSourceName;
        std::string defaultSinkName;
    };

    // None when no server answers; that is logged once per process, since a
    // machine without sound keeps asking at every device refresh.
    static std::shared_ptr<PulseContext> connect(const std::string& clientName);
    ~PulseContext();
    PulseContext(const PulseContext&) = delete;
    PulseContext& operator=(const PulseContext&) = delete;

    std::vector<Source> sources();
    std::optional<ServerInfo> serverInfo();
    // The source that records what the sink plays.
    std::optional<std::string> monitorOfSink(const std::string& sinkName);
    bool isConnected();

    pa_threaded_mainloop* mainloop() const { return mainloop_; }
    pa_context* context() const { return context_; }

    // Holds the loop's lock for a scope.
    class Lock {
    public:
        explicit Lock(pa_threaded_mainloop* mainloop);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        pa_threaded_mainloop* mainloop_;
    };

private:
    PulseContext(pa_threaded_mainloop* mainloop, pa_context* context);

    pa_threaded_mainloop* mainloop_;
    pa_context* context_;
};

} // namespace recorder
