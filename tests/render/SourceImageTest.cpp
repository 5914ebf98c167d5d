#include "compose/ShadowCache.h"
#include "compose/SourceImage.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace recorder;

TEST(SourceImage, WrapsADecodedFrameWithoutACopyAndKeepsItAlive) {
    FrameImage frame = FrameImage::allocate(64, 32, true);
    std::memset(frame.bits(), 0x7F, std::size_t(frame.bytesPerLine()) * 32);
    const std::uint8_t* pixels = frame.data();
    SourceImage image(frame);
    frame = FrameImage();
    EXPECT_EQ(image.image().constBits(), pixels);
    EXPECT_EQ(image.image().pixel(10, 10), 0x7F7F7F7Fu);
    EXPECT_TRUE(image.isOpaque());
}

TEST(SourceImage, DrawsFromAHalvedLevelBelowThreeQuartersAndKeepsIt) {
    QImage picture(400, 200, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    SourceImage image(picture);
    EXPECT_EQ(image.level(0.8).image.width(), 400);
    SourceImage::Level half = image.level(0.7);
    EXPECT_EQ(half.image.width(), 200);
    EXPECT_DOUBLE_EQ(half.scaleX, 2);
    EXPECT_EQ(image.level(0.3).image.width(), 100);
    SourceImage copy = image;
    EXPECT_EQ(copy.level(0.7).image.constBits(), half.image.constBits()) << "copies share the levels";
    EXPECT_EQ(image.level(0.7, 0.5).image.width(), 400);
}

TEST(SourceImage, CountsAPictureOpaqueOnlyWhenEveryPixelIs) {
    QImage picture(50, 50, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    EXPECT_TRUE(SourceImage(picture).isOpaque());
    picture.setPixel(49, 49, 0x80400000);
    EXPECT_FALSE(SourceImage(picture).isOpaque());
}

TEST(ShadowCache, GivesTheSameShadowForTheSameGeometry) {
    ShadowCache cache;
    Shadow first = cache.shadow({100, 100, 300, 200}, 40, 20, 0.45, 16, {1920, 1080});
    Shadow again = cache.shadow({100.4, 100, 300, 200}, 40, 20, 0.45, 16, {1920, 1080});
    EXPECT_EQ(first.image.cacheKey(), again.image.cacheKey()) << "the key takes the rectangle in whole pixels";
    EXPECT_EQ(cache.size(), 1u);
    EXPECT_GT(first.rect.bottom(), 300 + 20 + 100) << "it reaches below the shape, moved down";
}

TEST(ShadowCache, EmptiesItselfWhenItHoldsMoreThanItsBound) {
    ShadowCache cache;
    for (int i = 0; i < 70; ++i) {
        cache.shadow({double(i), 0, 50, 50}, 4, 2, 0.4, 5, {640, 360});
        ASSERT_LE(cache.size(), ShadowCache::bound + 1);
    }
    EXPECT_LT(cache.size(), 10u);
}
