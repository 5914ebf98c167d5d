#pragma once

#include "model/TextStyle.h"

#include <QFont>

#include <optional>

// The font a text item is drawn in, through fontconfig.
namespace recorder::FontLookup {

// The style's family with its weight and slant when the machine has it;
// a heavy sans when the family it names is missing (names given are display
// faces, which are heavy); the system's sans otherwise, bold unless the
// style says not. Sized in pixels.
QFont font(const std::optional<TextStyle>& style, double pixelSize);

// Whether text can be laid out at all: fonts need a QGuiApplication.
bool available();

} // namespace recorder::FontLookup
