#include "overlay/FontLookup.h"

#include <QFontDatabase>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>

namespace recorder::FontLookup {

namespace {

// fontconfig's generic family: DejaVu Sans on a stock machine.
const char* const systemSans = "sans-serif";

QFont sized(QFont font, double pixelSize) {
    font.setPixelSize(std::max(1, int(std::lround(pixelSize))));
    font.setKerning(true);
    return font;
}

} // namespace

bool available() { return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr; }

QFont font(const std::optional<TextStyle>& style, double pixelSize) {
    QFont font{QString(systemSans)};
    font.setStyleHint(QFont::SansSerif);
    font.setWeight(!style || style->bold ? QFont::Bold : QFont::Normal);
    if (style && style->fontName && !style->fontName->empty()) {
        QString family = QString::fromStdString(*style->fontName);
        if (QFontDatabase::hasFamily(family)) {
            font.setFamily(family);
            font.setWeight(style->bold ? QFont::Bold : QFont::Normal);
        } else {
            font.setWeight(QFont::Black);
        }
    }
    if (style) font.setItalic(style->italic);
    return sized(font, pixelSize);
}

} // namespace recorder::FontLookup
