#include "sink/MediaWriter.h"

#include "sink/CaptureError.h"
#include "sink/FFmpegCall.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

namespace recorder {

namespace {

const char* muxerName(FileType type) { return type == FileType::quickTimeMovie ? "mov" : "ipod"; }

} // namespace

MediaWriter::MediaWriter(const std::filesystem::path& url, FileType fileType, const std::string& label)
    : url_(url), output_(std::make_unique<FileOutput>(url)) {
    if (avformat_alloc_output_context2(&format_, nullptr, muxerName(fileType), nullptr) < 0 || !format_)
        throw CaptureError::writerFailed("no muxer for " + url.filename().string());
    format_->pb = output_->context();
    format_->flags |= AVFMT_FLAG_CUSTOM_IO;
    queue_ = std::make_unique<SerialQueue>(label);
}

MediaWriter::~MediaWriter() {
    queue_.reset();
    avformat_free_context(format_);
}

MediaWriterInput& MediaWriter::addInput(const MediaWriterInput::Settings& settings) {
    AVStream* stream = avformat_new_stream(format_, nullptr);
    if (!stream) throw CaptureError::writerFailed("no memory for a track");
    inputs_.push_back(std::make_unique<MediaWriterInput>(*this, settings, *stream));
    return *inputs_.back();
}

bool MediaWriter::startWriting() {
    try {
        for (auto& input : inputs_) input->open(*format_);
        AVDictionary* options = nullptr;
        // Fragments at every key frame and at least every second; the empty
        // index up front lets a reader start before any fragment.
        av_dict_set(&options, "movflags", "+frag_keyframe+empty_moov+default_base_moof", 0);
        av_dict_set(&options, "frag_duration", "1000000", 0);
        av_dict_set(&options, "flush_packets", "1", 0);
        int written = avformat_write_header(format_, &options);
        av_dict_free(&options);
        checked(written, "writing the file header");
    } catch (const std::exception& error) {
        fail(error.what());
        return false;
    }
    status_ = Status::writing;
    return true;
}

void MediaWriter::startSession(std::int64_t sourceTime) {
    queue_->async([this, sourceTime] { sessionStart_ = sourceTime; });
}

void MediaWriter::endSession(std::int64_t sourceTime) {
    queue_->async([this, sourceTime] { sessionEnd_ = sourceTime; });
}

void MediaWriter::run(std::function<void()> task) {
    queue_->async([this, task = std::move(task)] {
        try {
            task();
        } catch (const std::exception& error) {
            fail(error.what());
        }
    });
}

void MediaWriter::writePacket(AVPacket* packet) {
    if (status_ != Status::writing) return;
    int written = av_interleaved_write_frame(format_, packet);
    if (written < 0) fail(output_->error().empty() ? ffmpegMessage(written) : output_->error());
}

void MediaWriter::flushFragment() {
    if (status_ != Status::writing) return;
    // Packets of nothing: the first empties the interleaving queue, the
    // second asks the muxer to close the fragment it has open.
    int flushed = av_interleaved_write_frame(format_, nullptr);
    if (flushed >= 0) flushed = av_write_frame(format_, nullptr);
    if (flushed < 0) fail(output_->error().empty() ? ffmpegMessage(flushed) : output_->error());
}

void MediaWriter::fail(const std::string& error) {
    {
        std::lock_guard lock(errorLock_);
        if (error_.empty()) error_ = error;
    }
    status_ = Status::failed;
}

std::string MediaWriter::error() const {
    std::lock_guard lock(errorLock_);
    return error_;
}

void MediaWriter::closeFile() {
    output_->close();
    if (status_ == Status::writing && !output_->error().empty()) fail(output_->error());
}

void MediaWriter::finishWriting() {
    queue_->sync([this] {
        if (status_ == Status::writing) {
            try {
                for (auto& input : inputs_) input->flush(sessionEnd_);
                if (status_ == Status::writing) checked(av_write_trailer(format_), "finishing the file");
            } catch (const std::exception& error) {
                fail(error.what());
            }
        }
        closeFile();
        if (status_ == Status::writing) status_ = Status::completed;
    });
}

void MediaWriter::cancelWriting() {
    queue_->sync([this] {
        if (status_ == Status::writing) status_ = Status::cancelled;
        closeFile();
    });
}

} // namespace recorder
