#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace recorder {

// Each enumeration written to files specialises this with its case names, in
// declaration order; the enumerator's value is its index.
template <class E>
struct EnumNames;

template <class E>
concept NamedEnum = requires { EnumNames<E>::names; };

template <NamedEnum E>
constexpr std::string_view enumName(E value) {
    return EnumNames<E>::names[static_cast<std::size_t>(value)];
}

template <NamedEnum E>
constexpr std::optional<E> enumFromName(std::string_view name) {
    const auto& names = EnumNames<E>::names;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == name) return static_cast<E>(i);
    return std::nullopt;
}

} // namespace recorder
