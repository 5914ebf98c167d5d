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
    std::optional<timespec> modified;
};

std::string lowercase(std::string text) {
    for (auto& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::optional<timespec> modificationTime(const fs::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::nullopt;
    return info.st_mtim;
}

// Nanoseconds order packages saved within the same second.
bool newer(const std::optional<timespec>& a, const std::optional<timespec>& b) {
    if (!a || !b) return a.has_value() && !b.has_value();
    return a->tv_sec != b->tv_sec ? a->tv_sec > b->tv_sec : a->tv_nsec > b->tv_nsec;
}

std::vector<Entry> packagesIn(const fs::path& folder, const std::string& extension) {
    std::vector<Entry> entries;
    std::error_code error;
    std::string wanted = "." + lowercase(extension);
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (lowercase(it->path().extension().string()) == wanted)
            entries.push_back({it->path(), modificationTime(it->path())});
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return newer(a.modified, b.modified); });
    return entries;
}

nlohmann::json describeOne(const Entry& entry) {
    nlohmann::json item{{"path", entry.path.string()}, {"name", entry.path.stem().string()}};
    if (entry.modified) item["modified"] = Date(entry.modified->tv_sec).iso8601();
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
