#include "sources/StillImageSource.h"

#include "decode/MediaError.h"
#include "decode/VideoDecoder.h"

namespace recorder {

namespace {

FrameImage firstPicture(const std::filesystem::path& file) {
    VideoDecoder decoder(file);
    auto frame = decoder.next();
    FrameImage image = frame ? decoder.image(*frame) : FrameImage();
    if (image.isNull()) throw MediaError("The picture " + file.filename().string() + " can't be read; it may be damaged.");
    return image;
}

} // namespace

StillImageSource::StillImageSource(const std::filesystem::path& file) : image(firstPicture(file)) {}

} // namespace recorder
