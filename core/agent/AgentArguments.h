#pragma once

#include "model/RGBAColor.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace recorder {

// A tool's arguments. The soft accessors never fail: a missing key or a value
// of another JSON type gives nothing. The required ones throw AgentError.
struct AgentArguments {
    nlohmann::json raw = nlohmann::json::object();

    AgentArguments() = default;
    // Anything but an object gives empty arguments.
    explicit AgentArguments(const nlohmann::json& arguments);

    std::optional<std::string> string(const std::string& key) const;
    std::optional<bool> boolean(const std::string& key) const;
    std::optional<double> number(const std::string& key) const;
    std::optional<std::int64_t> integer(const std::string& key) const;
    std::optional<nlohmann::json> object(const std::string& key) const;
    std::string requiredString(const std::string& key) const;
    double requiredNumber(const std::string& key) const;
    std::optional<RGBAColor> color(const std::string& key) const;

    // Whether a tool may write or reveal `path`: inside the home folder or a
    // temporary folder, after dot segments are resolved.
    static bool allowedFile(const std::filesystem::path& path, const std::filesystem::path& home,
                            const std::filesystem::path& temporary);

private:
    const nlohmann::json* find(const std::string& key) const;
};

} // namespace recorder
