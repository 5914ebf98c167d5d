// Makes the background pictures that ship in resources/backgrounds. Run it
// after changing a design and commit the pictures it writes:
//   make-backgrounds resources/backgrounds [--preview DIR] [--only ID]
#include "Designs.h"

#include <QCoreApplication>
#include <QImageWriter>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

constexpr int width = 3840;
constexpr int height = 2160;

// Quality 95 rather than 90: below it the encoder drops the grain that
// dithers the slow gradients, and the steps come back. Files stay < 0.5 MB.
bool writeJpeg(const QImage& image, const std::filesystem::path& file) {
    QImageWriter writer(QString::fromStdString(file.string()), "jpg");
    writer.setQuality(95);
    writer.setOptimizedWrite(true);
    return writer.write(image);
}

bool writePreview(const QImage& image, const std::filesystem::path& file) {
    return image.scaled(960, 540, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).save(QString::fromStdString(file.string()));
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "Usage: make-backgrounds OUTPUT_DIR [--preview DIR] [--only ID]\n");
        return 2;
    }
    std::filesystem::path output = argv[1], preview;
    std::string only;
    for (int i = 2; i + 1 < argc; i += 2) {
        std::string option = argv[i];
        if (option == "--preview") preview = argv[i + 1];
        if (option == "--only") only = argv[i + 1];
    }
    std::filesystem::create_directories(output);
    if (!preview.empty()) std::filesystem::create_directories(preview);
    for (const auto& design : designs()) {
        if (!only.empty() && design.id != only) continue;
        QImage image = design.render(width, height);
        auto file = output / (design.id + ".jpg");
        if (!writeJpeg(image, file)) {
            std::fprintf(stderr, "Could not write %s.\n", file.c_str());
            return 1;
        }
        if (!preview.empty()) {
            QImage written(QString::fromStdString(file.string()));
            writePreview(written, preview / (design.id + ".png"));
        }
        std::printf("%s %ju bytes\n", file.c_str(), std::uintmax_t(std::filesystem::file_size(file)));
    }
    return 0;
}
