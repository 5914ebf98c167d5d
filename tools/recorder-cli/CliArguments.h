#pragma once

#include "model/Rect.h"

#include <QGuiApplication>

#include <charconv>
#include <memory>
#include <string>

namespace recorder::cli {

// The whole text is the number, or it isn't one.
template <class T>
bool parseNumber(const std::string& text, T& value) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

// "X,Y,W,H" with a positive width and height.
bool parseArea(const std::string& text, Rect& rect);

// Pictures and text are drawn without a display, on Qt's offscreen platform.
// None when an application already exists.
std::unique_ptr<QGuiApplication> headlessGui();

} // namespace recorder::cli
