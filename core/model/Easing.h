#pragma once

#include "json/EnumNames.h"

#include <string_view>

namespace recorder {

enum class Easing { linear, easeInOut, easeOut, spring };

template <>
struct EnumNames<Easing> {
    static constexpr std::array<std::string_view, 4> names{"linear", "easeInOut", "easeOut", "spring"};
};

// The curve at t, with t clamped to 0...1 first. `spring` overshoots on purpose.
double apply(Easing easing, double t);
std::string_view label(Easing easing);

} // namespace recorder
