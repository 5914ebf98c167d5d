#pragma once

#include "model/RGBAColor.h"
#include "model/TextStyle.h"

#include <QImage>

#include <optional>
#include <string>

// The picture of a text item: drawn once at a font size of 160 and scaled
// into the item's box when placed.
namespace recorder::TextRaster {

constexpr double fontSize = 160;
// Text is laid out within this many pixels each way; more is cut off.
constexpr double largestText = 4000;

// The text, "|", the colour's four components, "|", the style's hash or "-":
// equal keys draw equal pictures.
std::string key(const std::string& text, const RGBAColor& colour, const std::optional<TextStyle>& style);

// Premultiplied 32-bit; null when no fonts can be had (no QGuiApplication).
QImage make(const std::string& text, const RGBAColor& colour, const std::optional<TextStyle>& style);

} // namespace recorder::TextRaster
