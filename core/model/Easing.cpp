#include "model/Easing.h"

#include <algorithm>
#include <cmath>

namespace recorder {

double apply(Easing easing, double t) {
    t = std::clamp(t, 0.0, 1.0);
    switch (easing) {
    case Easing::linear: return t;
    case Easing::easeInOut: return t < 0.5 ? 4 * t * t * t : 1 - std::pow(2 - 2 * t, 3) / 2;
    case Easing::easeOut: return 1 - std::pow(1 - t, 3);
    case Easing::spring:
        if (t == 0) return 0;
        if (t == 1) return 1;
        return std::pow(2.0, -10 * t) * std::sin((10 * t - 0.75) * 2.0943951023931953) + 1;
    }
    return t;
}

std::string_view label(Easing easing) {
    switch (easing) {
    case Easing::linear: return "Linear";
    case Easing::easeInOut: return "Ease in & out";
    case Easing::easeOut: return "Ease out";
    case Easing::spring: return "Spring";
    }
    return "";
}

} // namespace recorder
