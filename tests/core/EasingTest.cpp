#include "model/Easing.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace recorder;

TEST(Easing, InputsOutsideZeroToOneAreClampedFirst) {
    for (Easing easing : {Easing::linear, Easing::easeInOut, Easing::easeOut, Easing::spring}) {
        EXPECT_EQ(apply(easing, -1), 0) << label(easing);
        EXPECT_EQ(apply(easing, 2), 1) << label(easing);
    }
}

TEST(Easing, CurvesFollowTheirFormulas) {
    EXPECT_DOUBLE_EQ(apply(Easing::linear, 0.3), 0.3);
    EXPECT_DOUBLE_EQ(apply(Easing::easeInOut, 0.25), 4 * 0.25 * 0.25 * 0.25);
    EXPECT_DOUBLE_EQ(apply(Easing::easeInOut, 0.5), 0.5);
    EXPECT_DOUBLE_EQ(apply(Easing::easeInOut, 0.75), 1 - std::pow(0.5, 3) / 2);
    EXPECT_DOUBLE_EQ(apply(Easing::easeOut, 0.5), 0.875);
    EXPECT_DOUBLE_EQ(apply(Easing::spring, 0.5),
                     std::pow(2.0, -5.0) * std::sin((5 - 0.75) * 2.0943951023931953) + 1);
    EXPECT_EQ(apply(Easing::spring, 0), 0);
    EXPECT_EQ(apply(Easing::spring, 1), 1);
}

TEST(Easing, LabelsAreTheMenuWords) {
    EXPECT_EQ(label(Easing::linear), "Linear");
    EXPECT_EQ(label(Easing::easeInOut), "Ease in & out");
    EXPECT_EQ(label(Easing::easeOut), "Ease out");
    EXPECT_EQ(label(Easing::spring), "Spring");
}
