#include "audio/PulseContext.h"

#include "log/Log.h"

#include <pulse/pulseaudio.h>

#include <atomic>

namespace recorder {

namespace {

void signalLoop(pa_context*, void* mainloop) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop*>(mainloop), 0); }

// Waits, with the lock held, until the server has answered.
void await(pa_threaded_mainloop* mainloop, pa_operation* operation) {
    if (!operation) return;
    while (pa_operation_get_state(operation) == PA_OPERATION_RUNNING) pa_threaded_mainloop_wait(mainloop);
    pa_operation_unref(operation);
}

void logAbsentOnce(const std::string& reason) {
    static std::atomic<bool> logged{false};
    if (!logged.exchange(true)) Log::info("capture", "No sound server: " + reason + "; recording without sound.");
}

struct SourceList {
    pa_threaded_mainloop* mainloop;
    std::vector<PulseContext::Source> sources;
};

struct SinkMonitor {
    pa_threaded_mainloop* mainloop;
    std::optional<std::string> monitor;
};

struct InfoReply {
    pa_threaded_mainloop* mainloop;
    std::optional<PulseContext::ServerInfo> info;
};

} // namespace

PulseContext::Lock::Lock(pa_threaded_mainloop* mainloop) : mainloop_(mainloop) { pa_threaded_mainloop_lock(mainloop_); }
PulseContext::Lock::~Lock() { pa_threaded_mainloop_unlock(mainloop_); }

PulseContext::PulseContext(pa_threaded_mainloop* mainloop, pa_context* context)
    : mainloop_(mainloop), context_(context) {}

std::shared_ptr<PulseContext> PulseContext::connect(const std::string& clientName) {
    pa_threaded_mainloop* mainloop = pa_threaded_mainloop_new();
    if (!mainloop) return nullptr;
    pa_context* context = pa_context_new(pa_threaded_mainloop_get_api(mainloop), clientName.c_str());
    if (!context) {
        pa_threaded_mainloop_free(mainloop);
        return nullptr;
    }
    pa_context_set_state_callback(context, signalLoop, mainloop);
    // No autospawn: a recorder must not start a sound server of its own.
    bool ready = false;
    if (pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) == 0 &&
        pa_threaded_mainloop_start(mainloop) == 0) {
        pa_threaded_mainloop_lock(mainloop);
        for (;;) {
            pa_context_state_t state = pa_context_get_state(context);
            if (state == PA_CONTEXT_READY) { ready = true; break; }
            if (!PA_CONTEXT_IS_GOOD(state)) break;
            pa_threaded_mainloop_wait(mainloop);
        }
        pa_threaded_mainloop_unlock(mainloop);
    }
    if (!ready) {
        logAbsentOnce(pa_strerror(pa_context_errno(context)));
        pa_threaded_mainloop_stop(mainloop);
        pa_context_disconnect(context);
        pa_context_unref(context);
        pa_threaded_mainloop_free(mainloop);
        return nullptr;
    }
    return std::shared_ptr<PulseContext>(new PulseContext(mainloop, context));
}

PulseContext::~PulseContext() {
    {
        Lock lock(mainloop_);
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_set_subscribe_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
    }
    pa_threaded_mainloop_stop(mainloop_);
    pa_threaded_mainloop_free(mainloop_);
}

bool PulseContext::isConnected() {
    Lock lock(mainloop_);
    return pa_context_get_state(context_) == PA_CONTEXT_READY;
}

std::vector<PulseContext::Source> PulseContext::sources() {
    SourceList list{mainloop_, {}};
    auto onSource = [](pa_context*, const pa_source_info* info, int eol, void* data) {
        auto* list = static_cast<SourceList*>(data);
        if (eol != 0 || !info) {
            pa_threaded_mainloop_signal(list->mainloop, 0);
            return;
        }
        list->sources.push_back({info->name, info->description ? info->description : info->name,
                                 int(info->sample_spec.channels), int(info->sample_spec.rate),
                                 info->monitor_of_sink != PA_INVALID_INDEX});
    };
    Lock lock(mainloop_);
    await(mainloop_, pa_context_get_source_info_list(context_, onSource, &list));
    return list.sources;
}

std::optional<PulseContext::ServerInfo> PulseContext::serverInfo() {
    InfoReply reply{mainloop_, {}};
    auto onInfo = [](pa_context*, const pa_server_info* info, void* data) {
        auto* reply = static_cast<InfoReply*>(data);
        if (info)
            reply->info = ServerInfo{info->default_source_name ? info->default_source_name : "",
                                     info->default_sink_name ? info->default_sink_name : ""};
        pa_threaded_mainloop_signal(reply->mainloop, 0);
    };
    Lock lock(mainloop_);
    await(mainloop_, pa_context_get_server_info(context_, onInfo, &reply));
    return reply.info;
}

std::optional<std::string> PulseContext::monitorOfSink(const std::string& sinkName) {
    SinkMonitor reply{mainloop_, {}};
    auto onSink = [](pa_context*, const pa_sink_info* info, int eol, void* data) {
        auto* reply = static_cast<SinkMonitor*>(data);
        if (eol != 0 || !info) {
            pa_threaded_mainloop_signal(reply->mainloop, 0);
            return;
        }
        if (info->monitor_source_name) reply->monitor = info->monitor_source_name;
    };
    Lock lock(mainloop_);
    await(mainloop_, pa_context_get_sink_info_by_name(context_, sinkName.c_str(), onSink, &reply));
    return reply.monitor;
}

} // namespace recorder
