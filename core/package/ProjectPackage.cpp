#include "package/ProjectPackage.h"

#include "brand/Brand.h"
#include "json/JsonText.h"
#include "package/PackageError.h"
#include "package/ProjectMigrator.h"
#include "package/Utf8Text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace recorder::ProjectPackage {

namespace fs = std::filesystem;

namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

void writeAll(int fd, const std::string& bytes, const Path& path) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) throw PackageError("write", path, lastError());
        written += static_cast<std::size_t>(n);
    }
}

// Written and flushed to the disk before the rename: a power cut then leaves
// either the old manifest or the new one, never half of one.
void writeDurably(const Path& path, const std::string& bytes) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) throw PackageError("write", path, lastError());
    try {
        writeAll(fd, bytes, path);
        if (::fsync(fd) != 0) throw PackageError("write", path, lastError());
    } catch (...) {
        ::close(fd);
        ::unlink(path.c_str());
        throw;
    }
    ::close(fd);
}

void syncDirectory(const Path& directory) {
    int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

void replaceManifest(const Path& temporary, const Path& manifest) {
    struct stat info {};
    // rename(2) would happily put a file over an empty directory's name; a
    // directory standing at the manifest's place is a damaged package.
    if (::lstat(manifest.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        ::unlink(temporary.c_str());
        throw PackageError("replace", manifest, std::make_error_code(std::errc::is_a_directory));
    }
    if (::rename(temporary.c_str(), manifest.c_str()) != 0) {
        auto error = lastError();
        ::unlink(temporary.c_str());
        throw PackageError("replace", manifest, error);
    }
}

// "Demo.reel/" names the same package as "Demo.reel", but has no file name
// of its own to take the stem, extension or parent from.
Path withoutTrailingSeparator(const Path& package) {
    return package.has_filename() ? package : package.parent_path();
}

bool sameFile(const Path& a, const Path& b) {
    struct stat first {}, second {};
    if (::stat(a.c_str(), &first) != 0 || ::stat(b.c_str(), &second) != 0) return false;
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool somethingAt(const Path& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

std::string readFile(const Path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw PackageError("read", path, errno ? lastError() : std::make_error_code(std::errc::io_error));
    std::ostringstream bytes;
    bytes << in.rdbuf();
    if (in.bad()) throw PackageError("read", path, std::make_error_code(std::errc::io_error));
    return bytes.str();
}

std::string replaceAll(std::string text, char from, char to) {
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

std::vector<char32_t> withoutControlCharacters(const std::vector<char32_t>& text) {
    std::vector<char32_t> out;
    out.reserve(text.size());
    for (char32_t c : text) out.push_back(Utf8Text::isControl(c) ? U' ' : c);
    return out;
}

std::vector<char32_t> withoutLeadingDots(std::vector<char32_t> text) {
    auto firstKept = std::find_if(text.begin(), text.end(), [](char32_t c) { return c != U'.'; });
    text.erase(text.begin(), firstKept);
    return text;
}

std::string numberedAssetName(const std::string& name, int n) {
    auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return name + "-" + std::to_string(n);
    return name.substr(0, dot) + "-" + std::to_string(n) + name.substr(dot);
}

} // namespace

Path manifestURL(const Path& package) { return package / "manifest.json"; }

Path assetsURL(const Path& package) { return package / "assets"; }

Path assetURL(const Asset& asset, const Path& package) { return assetsURL(package) / asset.relativePath; }

std::string encode(const Project& project) { return JsonText::pretty(project.toJson()); }

void createAssetsFolder(const Path& package) {
    std::error_code error;
    fs::create_directories(assetsURL(package), error);
    if (error) throw PackageError("create the folder", assetsURL(package), error);
}

int lowestSchemaVersion(const Project& project) {
    bool needsTwelve = std::any_of(project.media.begin(), project.media.end(), [](const MediaItem& item) {
        return item.kind == AssetKind::shape || item.inAnimation == MediaAnimation::draw ||
               item.outAnimation == MediaAnimation::draw;
    });
    return needsTwelve ? 12 : 11;
}

void save(Project project, const Path& package) {
    createAssetsFolder(package);
    project.modifiedAt = Date::now();
    project.schemaVersion = lowestSchemaVersion(project);
    if (const auto& version = Brand::shared().version; !version.empty()) project.appVersion = version;
    project.packageFileName = withoutTrailingSeparator(package).stem().string();
    std::string bytes = encode(project);
    Path temporary = package / (".manifest." + Uuid::random().string() + ".tmp");
    writeDurably(temporary, bytes);
    replaceManifest(temporary, manifestURL(package));
    syncDirectory(package);
}

Project load(const Path& package) { return ProjectMigrator::migrate(readFile(manifestURL(package))); }

NameSync nameSync(const Project& project, const std::string& stem) {
    if (fileStem(project.name) == stem) return {NameSync::Kind::inSync, {}};
    if (!project.packageFileName || *project.packageFileName == stem) return {NameSync::Kind::renameFile, {}};
    return {NameSync::Kind::adoptFileName, displayName(stem)};
}

std::string fileStem(const std::string& name) {
    auto text = withoutControlCharacters(Utf8Text::decode(name));
    std::replace(text.begin(), text.end(), U':', U'-');
    std::replace(text.begin(), text.end(), U'/', U':');
    text = Utf8Text::trimmedBlanks(withoutLeadingDots(Utf8Text::trimmedBlanks(text)));
    std::string stem = Utf8Text::encode(text);
    while (stem.size() > 200) {
        Utf8Text::removeLastCharacter(text);
        stem = Utf8Text::encode(text);
    }
    return stem.empty() ? "Untitled" : stem;
}

std::string displayName(const std::string& stem) { return replaceAll(stem, ':', '/'); }

Path rename(const Path& packageURL, const std::string& name) {
    const Path package = withoutTrailingSeparator(packageURL);
    std::string stem = fileStem(name);
    std::string extension = package.extension().string();
    Path parent = package.parent_path();
    Path target = parent / (stem + extension);
    for (int n = 2; somethingAt(target); ++n) {
        if (sameFile(target, package)) break; // a change of letter case on a case-insensitive disk
        target = parent / (stem + " " + std::to_string(n) + extension);
    }
    if (target == package) return package;
    if (::rename(package.c_str(), target.c_str()) != 0) throw PackageError("rename", package, lastError());
    return target;
}

std::string importAsset(const Path& source, const Path& package, const std::optional<std::string>& preferredName) {
    createAssetsFolder(package);
    std::string chosen = replaceAll(preferredName.value_or(source.filename().string()), '/', '-');
    std::string name = chosen;
    for (int n = 2; somethingAt(assetsURL(package) / name); ++n) name = numberedAssetName(chosen, n);
    std::error_code error;
    fs::copy_file(source, assetsURL(package) / name, fs::copy_options::none, error);
    if (error) throw PackageError("copy", source, error);
    return name;
}

void removeOrphanAssets(const Path& package, const Project& project) {
    std::set<std::string> kept;
    for (const auto& asset : project.assets) kept.insert(asset.relativePath);
    std::error_code error;
    std::vector<Path> orphans;
    for (fs::directory_iterator it(assetsURL(package), error), end; !error && it != end; it.increment(error))
        if (!kept.count(it->path().filename().string())) orphans.push_back(it->path());
    for (const auto& orphan : orphans) {
        std::error_code ignored;
        fs::remove_all(orphan, ignored);
    }
}

} // namespace recorder::ProjectPackage
