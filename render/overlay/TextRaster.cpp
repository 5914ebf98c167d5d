#include "overlay/TextRaster.h"

#include "compose/CacheKey.h"
#include "effects/GaussianBlur.h"
#include "overlay/EmojiRuns.h"
#include "overlay/FontLookup.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace recorder::TextRaster {

namespace {

const QString emojiFamily = QStringLiteral("Noto Color Emoji");

double unit(double v) { return std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0.0; }

QColor colourOf(const RGBAColor& c, std::optional<double> alpha = std::nullopt) {
    return QColor::fromRgbF(float(unit(c.r)), float(unit(c.g)), float(unit(c.b)), float(unit(alpha.value_or(c.a))));
}

std::uint64_t fnv(const std::string& text) {
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : text) {
        h ^= c;
        h *= 1099511628211ull;
    }
    return h;
}

struct PlacedRun {
    QGlyphRun run;
    QPointF offset;
    bool emoji = false;
};

// Lines centred on the widest, top at 0.
struct TextBlock {
    std::vector<PlacedRun> runs;
    QSizeF size;
};

bool isColourFont(const QRawFont& font) { return font.familyName().contains(QLatin1String("Emoji"), Qt::CaseInsensitive); }

QList<QTextLayout::FormatRange> emojiFormats(const QString& text) {
    QList<QTextLayout::FormatRange> formats;
    for (auto [start, length] : EmojiRuns::find(text)) {
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = length;
        range.format.setFontFamilies(QStringList{emojiFamily});
        formats.append(range);
    }
    return formats;
}

TextBlock layOut(QString text, const QFont& font) {
    if (text.isEmpty()) text = QStringLiteral(" ");
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    QTextLayout layout(text, font);
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setFormats(emojiFormats(text));
    layout.beginLayout();
    double y = 0, width = 0;
    while (y < largestText) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) break;
        line.setLineWidth(largestText);
        line.setPosition(QPointF(0, y));
        y += line.height();
        width = std::max(width, line.naturalTextWidth());
    }
    layout.endLayout();
    TextBlock block{{}, QSizeF(std::min(width, largestText), std::min(y, largestText))};
    for (int i = 0; i < layout.lineCount(); ++i) {
        QTextLine line = layout.lineAt(i);
        QPointF offset((block.size.width() - line.naturalTextWidth()) / 2, 0);
        for (const QGlyphRun& run : line.glyphRuns())
            block.runs.push_back({run, offset, isColourFont(run.rawFont())});
    }
    return block;
}

// Outlines from the glyphs themselves: QPainterPath::addText would make Qt
// lose colour emoji at this size for good. Emoji have no outline.
QPainterPath outline(const TextBlock& block) {
    QPainterPath path;
    for (const PlacedRun& placed : block.runs) {
        if (placed.emoji) continue;
        QRawFont font = placed.run.rawFont();
        QList<quint32> glyphs = placed.run.glyphIndexes();
        QList<QPointF> positions = placed.run.positions();
        for (qsizetype i = 0; i < glyphs.size() && i < positions.size(); ++i)
            path.addPath(font.pathForGlyph(glyphs[i]).translated(positions[i] + placed.offset));
    }
    return path;
}

void drawText(QPainter& painter, const TextBlock& block, QPointF origin, QColor colour) {
    painter.setPen(colour);
    for (const PlacedRun& placed : block.runs) painter.drawGlyphRun(origin + placed.offset, placed.run);
}

QImage blank(QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QPainter& prepared(QPainter& painter) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    return painter;
}

// Draws with a soft black shadow below, when asked: the shadow follows the
// alpha of what is drawn, as a shadow set on a context would.
void drawShadowed(QImage& canvas, bool shadow, const std::function<void(QPainter&)>& draw) {
    if (!shadow) {
        QPainter painter(&canvas);
        draw(prepared(painter));
        return;
    }
    QImage layer = blank(canvas.size());
    {
        QPainter painter(&layer);
        draw(prepared(painter));
    }
    QImage shade = layer.convertToFormat(QImage::Format_Alpha8);
    // A shadow's blur of 16 spreads about as far as a Gaussian of deviation 8.
    GaussianBlur::blur(shade, 16.0 / 2);
    QPainter painter(&canvas);
    painter.setOpacity(0.55);
    painter.drawImage(QPointF(0, 6), shade);
    painter.setOpacity(1);
    painter.drawImage(0, 0, layer);
}

QImage plain(const TextBlock& block, const RGBAColor& colour) {
    QImage image = blank(QSize(int(std::ceil(block.size.width())) + 24, int(std::ceil(block.size.height())) + 24));
    QPainter painter(&image);
    drawText(prepared(painter), block, QPointF(12, 12), colourOf(colour));
    return image;
}

QImage styled(const TextBlock& block, const RGBAColor& colour, const TextStyle& style, const QFont& font) {
    // Absurd sizes are held to what still makes a picture of sensible size.
    double stroke = std::isfinite(style.strokeWidth) ? std::clamp(style.strokeWidth, 0.0, 1.0) : 0;
    double padding = std::isfinite(style.padding) ? std::clamp(style.padding, 0.0, 2.0) : 0;
    double px = fontSize * (style.boxEnabled ? padding : std::max(stroke, 0.08));
    double py = 0.6 * px;
    QSizeF box(std::ceil(block.size.width()) + 2 * px, std::ceil(block.size.height()) + 2 * py);
    double margin = style.shadow ? 24 : 0;
    QImage image = blank(QSize(int(std::ceil(box.width() + 2 * margin)), int(std::ceil(box.height() + 2 * margin))));
    bool shadowPending = style.shadow;
    if (style.boxEnabled) {
        double lineHeight = QFontMetricsF(font).lineSpacing();
        double corner = std::isfinite(style.cornerRadius) ? std::clamp(style.cornerRadius, 0.0, 0.5) : 0;
        double radius = std::min(corner * lineHeight, box.height() / 2);
        QColor fill = colourOf(style.boxColor, style.boxOpacity);
        drawShadowed(image, shadowPending, [&](QPainter& painter) {
            QPainterPath path;
            path.addRoundedRect(QRectF(QPointF(margin, margin), box), radius, radius);
            painter.fillPath(path, fill);
        });
        shadowPending = false;
    }
    QPointF origin(margin + px, margin + py);
    if (stroke > 0) {
        // The pen is centred on the outline; the fill covers its inner half.
        QPen pen(colourOf(style.strokeColor), 2 * stroke * fontSize);
        pen.setJoinStyle(Qt::RoundJoin);
        QPainterPath path = outline(block).translated(origin);
        drawShadowed(image, shadowPending, [&](QPainter& painter) { painter.strokePath(path, pen); });
        shadowPending = false;
    }
    drawShadowed(image, shadowPending, [&](QPainter& painter) { drawText(painter, block, origin, colourOf(colour)); });
    return image;
}

} // namespace

std::string key(const std::string& text, const RGBAColor& colour, const std::optional<TextStyle>& style) {
    std::string styleHash = "-";
    if (style)
        styleHash = std::to_string(fnv(style->toJson().dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
    return text + "|" + CacheKey::number(colour.r) + "," + CacheKey::number(colour.g) + "," +
           CacheKey::number(colour.b) + "," + CacheKey::number(colour.a) + "|" + styleHash;
}

QImage make(const std::string& text, const RGBAColor& colour, const std::optional<TextStyle>& style) {
    if (!FontLookup::available()) return {};
    QFont font = FontLookup::font(style, fontSize);
    QString shown = QString::fromStdString(text);
    if (style && style->uppercase) shown = shown.toUpper();
    TextBlock block = layOut(shown, font);
    return style ? styled(block, colour, *style, font) : plain(block, colour);
}

} // namespace recorder::TextRaster
