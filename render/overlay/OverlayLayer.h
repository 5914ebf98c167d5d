#pragma once

#include "compose/FrameInputs.h"
#include "compose/ShadowCache.h"
#include "model/Project.h"
#include "overlay/ItemAnimation.h"
#include "overlay/ShapeCache.h"

#include <QImage>
#include <QPainter>

namespace recorder {

// The media items of a frame over everything but captions and marks:
// pictures, GIF and video frames and text from the frame's inputs, shapes
// drawn here. Blur regions belong to the stage and are left to it.
class OverlayLayer {
public:
    // Draws the items visible at `inputs.time` over `target`, lowest
    // `zIndex` first. An item without a picture is left out.
    void draw(QImage& target, const Project& project, const FrameInputs& inputs, ShadowCache& shadows);

    // `shapeImages`: shape rasters by look, size and draw step.
    const ShapeCache& shapeImages() const { return shapeImages_; }

private:
    // How an item sits on the canvas, in canvas pixels with the origin at the top left.
    struct Look {
        QRectF box;
        double radius = 0;
        bool shadow = false;
        double border = 0;
        RGBAColor borderColor;
    };

    void drawShape(QPainter& painter, const MediaItem& item, double time, QSize canvas);
    void drawPlaced(QPainter& painter, const MediaItem& item, const SourceImage& image, const Look& look,
                    const ItemAnimation& motion, QSize canvas, ShadowCache* shadows);
    static Look lookOf(const MediaItem& item, QSize canvas);

    ShapeCache shapeImages_;
};

} // namespace recorder
