#include "agent/AgentArguments.h"

#include "agent/AgentError.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace recorder {

namespace {

std::string withTrailingSlash(std::string path) {
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

std::string standardised(const std::filesystem::path& path) {
    auto absolute = path.is_absolute() ? path : std::filesystem::current_path() / path;
    std::string text = absolute.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

bool liesWithin(const std::string& path, const std::string& root) {
    std::string folder = withTrailingSlash(root);
    return path == root || withTrailingSlash(path).rfind(folder, 0) == 0;
}

} // namespace

AgentArguments::AgentArguments(const nlohmann::json& arguments)
    : raw(arguments.is_object() ? arguments : nlohmann::json::object()) {}

const nlohmann::json* AgentArguments::find(const std::string& key) const {
    auto it = raw.find(key);
    return it == raw.end() ? nullptr : &*it;
}

std::optional<std::string> AgentArguments::string(const std::string& key) const {
    const auto* value = find(key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

std::optional<bool> AgentArguments::boolean(const std::string& key) const {
    const auto* value = find(key);
    if (!value || !value->is_boolean()) return std::nullopt;
    return value->get<bool>();
}

std::optional<double> AgentArguments::number(const std::string& key) const {
    const auto* value = find(key);
    if (!value || !value->is_number()) return std::nullopt;
    return value->get<double>();
}

std::optional<std::int64_t> AgentArguments::integer(const std::string& key) const {
    const auto* value = find(key);
    if (!value || !value->is_number()) return std::nullopt;
    if (value->is_number_integer() && !value->is_number_unsigned()) return value->get<std::int64_t>();
    // Fractions are cut toward zero; numbers beyond the range stop at its ends.
    double number = std::trunc(value->get<double>());
    constexpr double limit = 9.2e18;
    return static_cast<std::int64_t>(std::clamp(number, -limit, limit));
}

std::optional<nlohmann::json> AgentArguments::object(const std::string& key) const {
    const auto* value = find(key);
    if (!value || !value->is_object()) return std::nullopt;
    return *value;
}

std::string AgentArguments::requiredString(const std::string& key) const {
    auto value = string(key);
    if (!value || value->empty()) throw AgentError::badArgument(key, "is required.");
    return *value;
}

double AgentArguments::requiredNumber(const std::string& key) const {
    auto value = number(key);
    if (!value) throw AgentError::badArgument(key, "is required and must be a number.");
    return *value;
}

std::optional<RGBAColor> AgentArguments::color(const std::string& key) const {
    auto text = string(key);
    if (!text) return std::nullopt;
    auto parsed = RGBAColor::fromHex(*text);
    if (!parsed) throw AgentError::badArgument(key, "must be a hex color like #1C1C1E.");
    return parsed;
}

bool AgentArguments::allowedFile(const std::filesystem::path& path, const std::filesystem::path& home,
                                 const std::filesystem::path& temporary) {
    std::string target = standardised(path);
    std::string temporaryRoot = standardised(temporary);
    for (const std::string& root : {standardised(home), temporaryRoot, "/private" + temporaryRoot,
                                    std::string("/tmp"), std::string("/private/tmp")})
        if (liesWithin(target, root)) return true;
    return false;
}

} // namespace recorder
