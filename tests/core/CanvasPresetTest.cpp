#include "model/CanvasPreset.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace recorder;

TEST(CanvasPreset, TheListStandsInMenuOrderWithItsSizes) {
    std::vector<std::string> rows;
    for (const auto& preset : CanvasPreset::all())
        rows.push_back(std::string(preset.id) + " " + std::string(preset.name) + " " + std::to_string(preset.width) +
                       "x" + std::to_string(preset.height));
    EXPECT_EQ(rows, (std::vector<std::string>{
                        "16:9 16:9 · Landscape 1920x1080", "9:16 9:16 · Vertical 1080x1920",
                        "1:1 1:1 · Square 1080x1080", "4:5 4:5 · Portrait 1080x1350", "4:3 4:3 · Classic 1440x1080",
                        "3:2 3:2 1620x1080", "21:9 21:9 · Ultrawide 2520x1080"}));
}

TEST(CanvasPreset, MatchingComparesAspectRatiosWithinOneHundredth) {
    EXPECT_EQ(CanvasPreset::matching({1000, 1000, 30})->id, "1:1");
    EXPECT_EQ(CanvasPreset::matching({3840, 2160, 60})->id, "16:9");
    EXPECT_EQ(CanvasPreset::matching({720, 1280, 30})->id, "9:16");
    EXPECT_EQ(CanvasPreset::matching({1260, 540, 30})->id, "21:9");
    EXPECT_FALSE(CanvasPreset::matching({2560, 1080, 30}));
    EXPECT_FALSE(CanvasPreset::matching({1900, 1080, 30}));
    EXPECT_FALSE(CanvasPreset::matching({1000, 0, 30}));
}
