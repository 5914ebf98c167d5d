#include "sink/PacketDrain.h"

#include "sink/FFmpegCall.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace recorder {

void drainPackets(AVCodecContext* codec, const SampleEncoder::Emit& emit, const char* step) {
    AVPacket* packet = av_packet_alloc();
    for (;;) {
        int got = avcodec_receive_packet(codec, packet);
        if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) break;
        if (got < 0) {
            av_packet_free(&packet);
            checked(got, step);
        }
        emit(packet);
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
}

} // namespace recorder
