#include "events/EventLog.h"

#include "events/EventLogDecoder.h"
#include "events/EventLogEncoder.h"
#include "json/JsonText.h"
#include "model/Project.h"
#include "package/ProjectPackage.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace recorder {

std::optional<Point> EventLog::samplePosition(double time) const {
    if (samples.empty() || std::isnan(time)) return std::nullopt;
    if (time <= samples.front().time) return samples.front().position;
    if (time >= samples.back().time) return samples.back().position;
    std::size_t lo = 0;
    std::size_t hi = samples.size() - 1;
    while (hi - lo > 1) {
        std::size_t mid = (lo + hi) / 2;
        if (samples[mid].time <= time) lo = mid;
        else hi = mid;
    }
    const CursorSample& a = samples[lo];
    const CursorSample& b = samples[hi];
    double dt = b.time - a.time;
    double u = dt > 0 ? (time - a.time) / dt : 0;
    return Point{a.position.x + u * (b.position.x - a.position.x), a.position.y + u * (b.position.y - a.position.y)};
}

Point EventLog::position(double at) const { return samplePosition(at).value_or(Point{0, 0}); }

EventLog EventLog::smoothed(double by) const {
    if (by <= 0 || samples.size() < 3) return *this;
    EventLog out = *this;
    double tau = 0.12 * std::min(by, 1.0);
    Point filtered = samples.front().position;
    double previousTime = samples.front().time;
    // alpha follows the real time step, so any sampling rate filters alike.
    for (auto& sample : out.samples) {
        double dt = std::max(0.0, sample.time - previousTime);
        double alpha = tau > 0 ? 1 - std::exp(-dt / tau) : 1;
        filtered.x += (sample.position.x - filtered.x) * alpha;
        filtered.y += (sample.position.y - filtered.y) * alpha;
        previousTime = sample.time;
        sample.position = filtered;
    }
    return out;
}

EventLog EventLog::fromJson(const JsonReader& r) {
    EventLog log;
    log.version = r.get<int>("version");
    log.samples = r.get<std::vector<CursorSample>>("samples");
    log.clicks = r.get<std::vector<ClickEvent>>("clicks");
    log.scrolls = r.get<std::vector<ScrollEvent>>("scrolls");
    log.keys = r.get<std::vector<KeyEvent>>("keys");
    return log;
}

nlohmann::json EventLog::toJson() const {
    return {{"version", version},
            {"samples", encodeJson(samples)},
            {"clicks", encodeJson(clicks)},
            {"scrolls", encodeJson(scrolls)},
            {"keys", encodeJson(keys)}};
}

std::string EventLog::encoded() const { return EventLogEncoder::encode(*this); }

EventLog EventLog::decode(std::string_view bytes) {
    try {
        return EventLogDecoder::decode(bytes);
    } catch (const std::exception&) {
        // The slow road gives the generic reader's exact verdict and sentence.
        return fromJson(JsonReader(JsonText::parse(bytes), ""));
    }
}

std::optional<EventLog> EventLog::read(const std::filesystem::path& file) {
    try {
        std::ifstream in(file, std::ios::binary);
        std::string bytes;
        std::error_code error;
        auto size = std::filesystem::file_size(file, error);
        if (!in || error) return std::nullopt;
        bytes.resize(size);
        if (!in.read(bytes.data(), static_cast<std::streamsize>(size))) return std::nullopt;
        return decode(bytes);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<EventLog> EventLog::load(const Project& project, const std::filesystem::path& package) {
    const Asset* asset = project.asset(AssetKind::events);
    if (!asset) return std::nullopt;
    return read(ProjectPackage::assetURL(*asset, package));
}

} // namespace recorder
