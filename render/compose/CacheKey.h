#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>

// Cache keys are text: each double written so that it reads back exactly,
// so equal keys mean equal values.
namespace recorder::CacheKey {

inline std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

inline std::string join(std::initializer_list<std::string> parts, const char* separator) {
    std::string key;
    for (const auto& part : parts) {
        if (!key.empty()) key += separator;
        key += part;
    }
    return key;
}

} // namespace recorder::CacheKey
