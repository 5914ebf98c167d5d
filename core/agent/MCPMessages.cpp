#include "agent/MCPMessages.h"

#include "json/JsonText.h"

namespace recorder::MCPMessages {

namespace {

std::string lowercase(std::string text) {
    for (auto& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

constexpr const char* instructionLines[] = {
    " records the screen of this computer and edits the recording. Everything runs on this computer; nothing is "
    "uploaded.",
    "Typical flow: get_status → list_sources → start_recording → (the person does their thing, or you do) → "
    "stop_recording → edit (set_canvas, set_background, add_zoom, add_text, add_blur, set_watermark, transcribe + "
    "set_caption_style) → export_project → wait_for_job.",
    "stop_recording already adds zooms from the person's clicks; add_zoom / remove_zooms / regenerate_zooms change "
    "them.",
    "To record one app, pass its window_id from list_sources to start_recording: a window is captured whole even "
    "when other windows cover it, on any display. Without a source the main display is recorded, so whatever is in "
    "front there is in the video.",
    "Long work (transcribe, export_project) returns a job_id at once; poll it with wait_for_job.",
    "export_project's result has file_path: hand that path to any tool that takes a local file (for example a "
    "social scheduler's upload tool) to publish the video.",
    "A recording always shows an on-screen indicator to the person; you cannot record silently, and you cannot "
    "grant the system's permissions — when one is missing, tell the person what to change, as the error's hint "
    "says.",
};

} // namespace

nlohmann::json response(const nlohmann::json& id, const nlohmann::json& result) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"result", result}};
}

nlohmann::json errorResponse(const nlohmann::json& id, int code, const std::string& message) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", message}}}};
}

nlohmann::json initializeResult(const Brand& brand, const std::optional<std::string>& requestedVersion) {
    return {{"protocolVersion", requestedVersion.value_or(std::string(protocolVersion))},
            {"capabilities", {{"tools", {{"listChanged", false}}}}},
            {"serverInfo", {{"name", lowercase(brand.compact)}, {"title", brand.display}, {"version", brand.version}}},
            {"instructions", instructions(brand)}};
}

std::string instructions(const Brand& brand) {
    std::string text = brand.display;
    bool first = true;
    for (const char* line : instructionLines) {
        if (!first) text += "\n";
        text += line;
        first = false;
    }
    return text;
}

nlohmann::json toolResult(const nlohmann::json& reply) {
    auto ok = reply.find("ok");
    if (ok != reply.end() && ok->is_boolean() && ok->get<bool>()) {
        auto result = reply.find("result");
        bool hasObject = result != reply.end() && result->is_object();
        return contentResult(hasObject ? *result : nlohmann::json::object(), false);
    }
    auto error = reply.find("error");
    nlohmann::json body = error != reply.end() ? *error : nlohmann::json{{"message", "Unknown error."}};
    return contentResult({{"error", body}}, true);
}

nlohmann::json contentResult(const nlohmann::json& object, bool isError) {
    std::string text;
    try {
        text = JsonText::write(object, {.pretty = true, .escapeSlashes = false});
    } catch (const std::exception&) {
        text = "{}";
    }
    nlohmann::json result{{"content", nlohmann::json::array({{{"type", "text"}, {"text", text}}})}, {"isError", isError}};
    if (!isError) result["structuredContent"] = object;
    return result;
}

} // namespace recorder::MCPMessages
