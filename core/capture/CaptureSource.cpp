#include "capture/CaptureSource.h"

namespace recorder {

namespace {

template <class... F>
struct Overload : F... {
    using F::operator()...;
};
template <class... F>
Overload(F...) -> Overload<F...>;

} // namespace

std::string CaptureSource::displayName(const std::vector<ShareableContent::Display>& displays) const {
    return std::visit(
        Overload{
            [&](const Display& d) -> std::string {
                for (const auto& known : displays)
                    if (known.id == d.id) return known.name;
                return "Display";
            },
            [](const Window& w) -> std::string { return w.title.empty() ? w.app : w.app + " — " + w.title; },
            [](const Area& a) -> std::string {
                return "Area " + std::to_string(long(a.rect.width)) + "×" + std::to_string(long(a.rect.height));
            },
            [](const Device& d) -> std::string { return d.name; },
        },
        value);
}

} // namespace recorder
