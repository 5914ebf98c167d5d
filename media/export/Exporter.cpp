#include "export/Exporter.h"

#include "audio/AudioMixBuilder.h"
#include "audio/AudioTimeline.h"
#include "export/ExportError.h"
#include "export/FrameHandoff.h"
#include "export/GifWriter.h"
#include "export/Mp4Writer.h"
#include "log/Log.h"

extern "C" {
#include <libavutil/log.h>
}

#include <pthread.h>

#include <thread>

namespace recorder {

namespace {

constexpr int progressEvery = 5;

void logExport(const std::string& line) { Log::error("export", line); }

// The sound of the export, or nothing when no track can be heard.
Mp4Writer::AudioSource soundOf(const Project& project, const std::filesystem::path& package) {
    auto tracks = AudioMixBuilder::build(project, package, logExport);
    if (tracks.empty()) return {};
    auto timeline = std::make_shared<AudioTimeline>(std::move(tracks), logExport);
    return [timeline](std::int64_t start, float* out, int frames) { timeline->render(start, out, frames); };
}

} // namespace

// What the encoder thread shares with the export. Held by both, so that an
// encoder which never comes back can be left behind with its state intact.
struct Exporter::Encoding {
    Encoding(int width, int height, std::unique_ptr<PictureWriter> writer)
        : handoff(width, height), writer(std::move(writer)) {}

    void encode() {
        pthread_setname_np(pthread_self(), "export.encode");
        try {
            while (const std::uint8_t* picture = handoff.waitForFull()) {
                writer->appendPicture(picture, handoff.stride());
                handoff.release();
            }
            if (!handoff.wasStopped()) writer->finish();
            handoff.encoderEnded(nullptr);
        } catch (...) {
            handoff.encoderEnded(std::current_exception());
        }
    }

    FrameHandoff handoff;
    std::unique_ptr<PictureWriter> writer;
};

Exporter::Exporter(Project project, std::filesystem::path package, ExportSettings settings,
                   std::unique_ptr<ExportFrameDrawer> drawer)
    : project_(std::move(project)), package_(std::move(package)), settings_(std::move(settings)),
      drawer_(std::move(drawer)) {}

Exporter::~Exporter() = default;

void Exporter::run() {
    av_log_set_level(AV_LOG_ERROR); // FFmpeg's chatter isn't for the person
    std::int64_t frames = settings_.frameCount();
    if (frames < 1) throw ExportError(ExportError::Kind::empty);
    drawer_->open();
    auto encoding = std::make_shared<Encoding>(settings_.width, settings_.height, openWriter(frames));
    std::thread encoder([encoding] { encoding->encode(); });
    try {
        composeFrames(frames, encoding->handoff);
        encoding->handoff.closeAndWait([this](auto waited) { checkWhileWaiting(waited); });
    } catch (const ExportError& error) {
        encoding->handoff.stop();
        // A stalled encoder may never return: leave it its own state.
        if (error.kind() == ExportError::Kind::stalled)
            encoder.detach();
        else
            encoder.join();
        throw;
    } catch (...) {
        encoding->handoff.stop();
        encoder.join();
        throw;
    }
    encoder.join();
    report(1);
}

std::unique_ptr<PictureWriter> Exporter::openWriter(std::int64_t frames) {
    if (settings_.format == ExportFormat::gif) return std::make_unique<GifWriter>(settings_, frames);
    return std::make_unique<Mp4Writer>(settings_, frames, soundOf(project_, package_));
}

void Exporter::composeFrames(std::int64_t frames, FrameHandoff& handoff) {
    int fps = settings_.framesPerSecond();
    auto check = [this](std::chrono::milliseconds waited) { checkWhileWaiting(waited); };
    for (std::int64_t i = 0; i < frames; ++i) {
        if (cancelled_.load()) throw ExportError(ExportError::Kind::cancelled);
        std::uint8_t* picture = handoff.waitForFree(check);
        drawer_->draw(i, double(i) / fps, picture, handoff.stride());
        handoff.submit();
        if (i % progressEvery == 0) report(double(i) / double(frames));
    }
}

void Exporter::checkWhileWaiting(std::chrono::milliseconds waited) const {
    if (cancelled_.load()) throw ExportError(ExportError::Kind::cancelled);
    // A GIF has no watchdog: its encoder is our own loop, not a separate engine.
    if (settings_.format != ExportFormat::gif && waited > stallLimit) throw ExportError(ExportError::Kind::stalled);
}

void Exporter::report(double value) {
    progress_.store(value);
    if (onProgress_) onProgress_(value);
}

} // namespace recorder
