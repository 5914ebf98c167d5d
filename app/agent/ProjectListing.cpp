#include "agent/ProjectListing.h"

#include "package/ProjectPackage.h"

#include <algorithm>
#include <cmath>
#include <sys/stat.h>
#include <vector>

namespace recorder::ProjectListing {

namespace fs = std::filesystem;

namespace {

struct Entry {
    fs::path path;
    std::optional<Date> modified;
};

std::string lowercase(std::string text) {
    for (auto& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::optional<Date> modificationDate(const fs::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::nullopt;
    return Date(info.st_mtim.tv_sec);
}

std::vector<Entry> packagesIn(const fs::path& folder, const std::string& extension) {
    std::vector<Entry> entries;
    std::error_code error;
    std::string wanted = "." + lowercase(extension);
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (lowercase(it->path().extension().string()) == wanted)
            entries.push_back({it->path(), modificationDate(it->path())});
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.modified.value_or(Date()) > b.modified.value_or(Date());
    });
    return entries;
}

nlohmann::json describeOne(const Entry& entry) {
    nlohmann::json item{{"path", entry.path.string()}, {"name", entry.path.stem().string()}};
    if (entry.modified) item["modified"] = entry.modified->iso8601();
    try {
        Project project = ProjectPackage::load(entry.path);
        if (double duration = project.duration(); std::isfinite(duration))
            item["duration_seconds"] = roundedSeconds(duration);
        item["has_captions"] = project.captions.has_value();
    } catch (const std::exception&) {
        // An unreadable package is still listed, without what only its manifest can tell.
    }
    return item;
}

} // namespace

double roundedSeconds(double seconds) { return std::round(seconds * 100) / 100; }

nlohmann::json describe(const fs::path& folder, const std::string& extension, std::size_t limit) {
    auto entries = packagesIn(folder, extension);
    nlohmann::json projects = nlohmann::json::array();
    for (std::size_t i = 0; i < entries.size() && i < limit; ++i) projects.push_back(describeOne(entries[i]));
    return projects;
}

} // namespace recorder::ProjectListing
