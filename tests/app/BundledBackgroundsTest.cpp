#include "brand/Brand.h"
#include "look/BundledBackgrounds.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <set>

using namespace recorder;
using recorder::test::readText;
using recorder::test::TempDir;
namespace fs = std::filesystem;

namespace {

struct JpegSize {
    int width = 0;
    int height = 0;
};

// The frame header's size: enough to know a file is the JPEG it claims to be.
std::optional<JpegSize> jpegSize(const std::string& bytes) {
    if (bytes.size() < 4 || uint8_t(bytes[0]) != 0xFF || uint8_t(bytes[1]) != 0xD8) return std::nullopt;
    std::size_t at = 2;
    while (at + 9 < bytes.size() && uint8_t(bytes[at]) == 0xFF) {
        uint8_t marker = uint8_t(bytes[at + 1]);
        std::size_t length = uint8_t(bytes[at + 2]) << 8 | uint8_t(bytes[at + 3]);
        if (marker >= 0xC0 && marker <= 0xC2)
            return JpegSize{uint8_t(bytes[at + 7]) << 8 | uint8_t(bytes[at + 8]),
                            uint8_t(bytes[at + 5]) << 8 | uint8_t(bytes[at + 6])};
        at += 2 + length;
    }
    return std::nullopt;
}

const fs::path sourceFolder = fs::path(RECORDER_SOURCE_DIR) / "resources" / "backgrounds";

} // namespace

TEST(BundledBackgrounds, EveryPictureIsOursAt3840By2160AndSmall) {
    const auto& all = BundledBackgrounds::all();
    ASSERT_GE(all.size(), 8u);
    std::set<std::string> ids;
    for (const auto& background : all) {
        SCOPED_TRACE(background.id);
        EXPECT_TRUE(ids.insert(background.id).second) << "ids are unique";
        EXPECT_EQ(background.credit, "Generated for " + Brand::shared().display);
        fs::path file = sourceFolder / background.fileName;
        auto size = jpegSize(readText(file));
        ASSERT_TRUE(size);
        EXPECT_EQ(size->width, 3840);
        EXPECT_EQ(size->height, 2160);
        EXPECT_LT(fs::file_size(file), 1'500'000u);
    }
}

TEST(BundledBackgrounds, TheTableAndTheGeneratedFilesAgree) {
    std::set<std::string> listed, generated;
    for (const auto& background : BundledBackgrounds::all()) listed.insert(background.fileName);
    for (const auto& entry : fs::directory_iterator(sourceFolder)) generated.insert(entry.path().filename().string());
    EXPECT_EQ(listed, generated);
}

TEST(BundledBackgrounds, AreFoundBesideTheBuiltProgramsAndFirstIsTheDefault) {
    EXPECT_EQ(&BundledBackgrounds::defaultBackground(), &BundledBackgrounds::all().front());
    for (const auto& background : BundledBackgrounds::all())
        EXPECT_EQ(readText(BundledBackgrounds::url(background)), readText(sourceFolder / background.fileName))
            << background.id;
    EXPECT_EQ(BundledBackgrounds::find("aurora")->fileName, "aurora.jpg");
    EXPECT_FALSE(BundledBackgrounds::find("beach"));
}
