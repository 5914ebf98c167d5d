#pragma once

#include "export/ExportSettings.h"
#include "export/PictureWriter.h"

#include <cstdint>
#include <filesystem>
#include <vector>

struct GifFileType;

namespace recorder {

// Writes an exported GIF that loops for ever, one picture every 1/gifFPS
// seconds, without sound. Each picture gets its own palette from
// libimagequant; only the rectangle that changed is stored, with unchanged
// pixels in it transparent, which keeps screen content small.
class GifWriter : public PictureWriter {
public:
    // Replaces what is at the output path. Throws a sentence naming the path
    // when the file cannot be made.
    GifWriter(const ExportSettings& settings, std::int64_t frameCount);
    // An unfinished file is removed: a cut-off GIF would play as if whole.
    ~GifWriter() override;
    GifWriter(const GifWriter&) = delete;
    GifWriter& operator=(const GifWriter&) = delete;

    void appendPicture(const std::uint8_t* bgra, int stride) override;
    void finish() override;

private:
    struct Area {
        int x = 0, y = 0, width = 0, height = 0;
    };

    void writeLoopForever();
    Area changedArea() const;
    void writePicture(const Area& area);
    int delayOf(std::int64_t index) const;

    std::filesystem::path file_;
    int width_;
    int height_;
    int fps_;
    GifFileType* gif_ = nullptr;
    std::int64_t written_ = 0;
    bool finished_ = false;
    // RGBA of this picture and of the one before.
    std::vector<std::uint8_t> current_;
    std::vector<std::uint8_t> previous_;
    std::vector<std::uint8_t> crop_;
    std::vector<std::uint8_t> indices_;
};

} // namespace recorder
