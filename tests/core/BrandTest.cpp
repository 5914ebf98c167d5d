#include "brand/Brand.h"
#include "json/JsonText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace recorder;

TEST(Brand, AnEmptyOrDamagedProductFileLeavesEveryDefault) {
    for (const char* text : {"", "{", "[1,2]", "{\"ProductNameDisplay\": 7}"}) {
        Brand brand = Brand::fromProductFileText(text);
        EXPECT_EQ(brand.compact, "Product") << text;
        EXPECT_EQ(brand.display, "Product") << text;
        EXPECT_EQ(brand.urlScheme, "product") << text;
        EXPECT_EQ(brand.documentExtension, "product") << text;
        EXPECT_EQ(brand.version, "0.0.0") << text;
        EXPECT_EQ(brand.build, "0") << text;
        EXPECT_EQ(brand.watermarkName, "Product") << text;
    }
}

TEST(Brand, DerivedFieldsFollowTheNamesTheyDefaultTo) {
    Brand brand = Brand::fromProductFileText(R"({"ProductNameCompact": "ReelMaker", "ProductNameDisplay": "Reel Maker"})");
    EXPECT_EQ(brand.urlScheme, "reelmaker");
    EXPECT_EQ(brand.documentExtension, "reelmaker");
    EXPECT_EQ(brand.watermarkName, "Reel Maker");
    brand = Brand::fromProductFileText(R"({"ProductNameCompact": "A", "ProductDocumentExtension": "areel",
                                           "ProductURLScheme": "a-app", "ProductWatermarkName": "Made by A"})");
    EXPECT_EQ(brand.documentExtension, "areel");
    EXPECT_EQ(brand.urlScheme, "a-app");
    EXPECT_EQ(brand.watermarkName, "Made by A");
}

TEST(Brand, SharedIsTheProductFileBesideTheProgram) {
    std::ifstream in(std::string(RECORDER_SOURCE_DIR) + "/resources/product.json");
    std::stringstream text;
    text << in.rdbuf();
    auto shipped = JsonText::parse(text.str());
    EXPECT_EQ(Brand::shared().display, shipped["ProductNameDisplay"]);
    EXPECT_EQ(Brand::shared().version, shipped["CFBundleShortVersionString"]);
    EXPECT_EQ(&Brand::shared(), &Brand::shared());
}
