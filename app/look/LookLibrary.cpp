#include "look/LookLibrary.h"

#include "json/JsonText.h"
#include "look/BundledBackgrounds.h"
#include "look/StyleError.h"
#include "package/PackageError.h"
#include "package/ProjectPackage.h"

#include <QCollator>
#include <QLocale>
#include <QLoggingCategory>
#include <QString>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace recorder {

namespace fs = std::filesystem;

namespace {

Q_LOGGING_CATEGORY(editorLog, "editor")

constexpr const char* presetFileName = "preset.json";
constexpr const char* lastFolderName = "last";

std::optional<LookPreset> readPreset(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    try {
        return LookPreset::fromJson(JsonReader(JsonText::parse(bytes.str()), ""));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void writeAtomically(const fs::path& file, const std::string& bytes) {
    fs::path temporary = file;
    temporary += ".saving";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << bytes;
        out.close();
        if (!out) throw PackageError("write", temporary, std::make_error_code(std::errc::io_error));
    }
    std::error_code error;
    fs::rename(temporary, file, error);
    if (error) {
        fs::remove(temporary, error);
        throw PackageError("replace", file, error);
    }
}

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

void createFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw PackageError("create", folder, error);
}

// The asset's own name when it came from outside, else its file's name.
std::string copyName(const Asset& asset) {
    std::string name = fs::path(asset.originalFilename.value_or(asset.relativePath)).filename().string();
    if (name.empty() || name == "." || name == "..") name = fs::path(asset.relativePath).filename().string();
    return name.empty() || name == "." || name == ".." ? "file" : name;
}

// A preset's paths come from a file on disk; one that climbs out of the
// preset's folder isn't followed.
bool staysInside(const fs::path& relative) {
    if (relative.empty() || relative.is_absolute()) return false;
    return std::none_of(relative.begin(), relative.end(), [](const fs::path& part) { return part == ".."; });
}

bool sameNameIgnoringCase(const std::string& a, const std::string& b) {
    return QString::fromStdString(a).compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

// The "C" locale compares code points and ignores numeric mode, so a
// person's language is used, and English when the environment names none.
QCollator fileManagerCollator() {
    QLocale locale;
    if (locale.language() == QLocale::C) locale = QLocale(QLocale::English);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

void sortByName(std::vector<LookPreset>& presets) {
    QCollator collator = fileManagerCollator();
    std::sort(presets.begin(), presets.end(), [&](const LookPreset& a, const LookPreset& b) {
        int order = collator.compare(QString::fromStdString(a.name), QString::fromStdString(b.name));
        return order != 0 ? order < 0 : a.id < b.id;
    });
}

void removeUnusedFileFolders(const fs::path& filesFolder, const std::map<Uuid, std::string>& files) {
    std::vector<fs::path> unused;
    std::error_code error;
    for (fs::directory_iterator it(filesFolder, error), end; !error && it != end; it.increment(error)) {
        auto id = Uuid::parse(it->path().filename().string());
        if (id && !files.count(*id)) unused.push_back(it->path());
    }
    for (const auto& folder : unused) fs::remove_all(folder, error);
}

// Only the files that the applied parts use are brought in: a video import
// takes the captions and watermark and has no use for the frame's picture.
LookPreset withFilesFor(LookPreset preset, Look::Parts parts) {
    Look used = preset.look;
    if (!parts.contains(Look::Parts::frame)) {
        used.style.background = BackgroundStyle::defaultGradient();
        used.camera.avatarAssetID.reset();
    }
    if (!parts.contains(Look::Parts::watermark)) used.watermark.reset();
    auto ids = used.assetIDs();
    std::erase_if(preset.files, [&](const auto& entry) {
        return std::find(ids.begin(), ids.end(), entry.first) == ids.end();
    });
    return preset;
}

} // namespace

LookLibrary::LookLibrary(Path supportFolder) : supportFolder_(std::move(supportFolder)) {
    reload();
}

const LookPreset* LookLibrary::presetNamed(const std::string& name) const {
    auto it = std::find_if(presets_.begin(), presets_.end(),
                           [&](const LookPreset& preset) { return sameNameIgnoringCase(preset.name, name); });
    return it == presets_.end() ? nullptr : &*it;
}

LookLibrary::Path LookLibrary::stylesFolder() const {
    return supportFolder_ / "Styles";
}

LookLibrary::Path LookLibrary::folder(const LookPreset& preset) const {
    return stylesFolder() / preset.id.string();
}

LookLibrary::Path LookLibrary::lastFolder() const {
    return stylesFolder() / lastFolderName;
}

std::optional<LookPreset> LookLibrary::lastPreset() const {
    return readPreset(lastFolder() / presetFileName);
}

void LookLibrary::reload() {
    presets_.clear();
    std::error_code error;
    for (fs::directory_iterator it(stylesFolder(), error), end; !error && it != end; it.increment(error)) {
        std::string name = it->path().filename().string();
        std::error_code notFolder;
        if (name == lastFolderName || !it->is_directory(notFolder)) continue;
        // A preset in a folder not named by its id is someone else's copy.
        auto preset = readPreset(it->path() / presetFileName);
        if (preset && preset->id.string() == name) presets_.push_back(std::move(*preset));
    }
    sortByName(presets_);
    if (onPresetsChanged) onPresetsChanged();
}

LookPreset LookLibrary::save(const std::string& name, const Project& project, const Path& package) {
    const LookPreset* existing = presetNamed(name);
    LookPreset preset{existing ? existing->id : Uuid::random(), name, Date::now(), Look(project), {}};
    Path target = folder(preset);
    try {
        preset = writePreset(std::move(preset), target, project, package);
    } catch (const std::exception& error) {
        throw StyleError("Couldn't save the style \"" + name + "\". " + error.what() +
                         " Check that the folder can be written and try again.");
    }
    reload();
    return preset;
}

void LookLibrary::remember(const Project& project, const Path& package) {
    try {
        Look look(project);
        auto last = lastPreset();
        // An imported video adds its captions and watermark, never its frame.
        if (project.fromVideo == true) {
            if (!last) return;
            Look kept = last->look;
            kept.watermark = look.watermark;
            if (look.captionStyle) kept.captionStyle = look.captionStyle;
            look = std::move(kept);
        }
        if (last && last->look == look) return;
        writePreset({Uuid::random(), "Last used", Date::now(), std::move(look), {}}, lastFolder(), project, package);
    } catch (const std::exception& error) {
        qCWarning(editorLog).noquote() << "remember style:" << error.what();
    }
}

void LookLibrary::deletePreset(const LookPreset& preset) {
    std::error_code error;
    fs::remove_all(folder(preset), error);
    reload();
    if (error)
        throw StyleError("Couldn't delete the style \"" + preset.name + "\": " + error.message() +
                         ". Check that " + stylesFolder().string() + " can be written.");
}

LookLibrary::BroughtIn LookLibrary::bringIn(const LookPreset& preset, const Path& presetFolder,
                                            const Project& project, const Path& package) const {
    BroughtIn result;
    for (const Uuid& id : preset.look.assetIDs()) {
        auto file = preset.files.find(id);
        if (file == preset.files.end() || result.assetMap.count(id)) continue;
        // Applied to the project it was saved from: the asset is still there.
        if (const Asset* own = project.asset(id); own && isFile(ProjectPackage::assetURL(*own, package))) {
            result.assetMap[id] = id;
            continue;
        }
        fs::path source = presetFolder / file->second;
        if (!staysInside(file->second) || !isFile(source)) continue;
        try {
            Asset asset;
            asset.id = Uuid::random();
            asset.kind = AssetKind::image;
            std::string name = source.filename().string();
            asset.relativePath = ProjectPackage::importAsset(source, package, name);
            asset.originalFilename = name;
            result.assetMap[id] = asset.id;
            result.assets.push_back(std::move(asset));
        } catch (const std::exception&) {
            // A copy that fails leaves that part as apply leaves it.
        }
    }
    return result;
}

bool LookLibrary::applyLast(Project& project, const Path& package, Look::Parts parts) const {
    auto last = lastPreset();
    if (!last) return false;
    auto brought = bringIn(withFilesFor(*last, parts), lastFolder(), project, package);
    project.assets.insert(project.assets.end(), brought.assets.begin(), brought.assets.end());
    last->look.apply(project, parts, brought.assetMap);
    return true;
}

void LookLibrary::applyStyle(const LookPreset& preset, Project& project, const Path& package) const {
    auto brought = bringIn(preset, folder(preset), project, package);
    project.assets.insert(project.assets.end(), brought.assets.begin(), brought.assets.end());
    preset.look.apply(project, Look::Parts::all, brought.assetMap);
    project.styleName = preset.name;
}

void LookLibrary::resetStyle(Project& project, const Path& package) {
    Asset picture = BundledBackgrounds::importInto(BundledBackgrounds::defaultBackground(), package);
    project.assets.push_back(picture);
    Look fresh{Project()};
    fresh.style.background = {BackgroundStyle::Image{picture.id}};
    fresh.apply(project, Look::Parts::all, {{picture.id, picture.id}});
    project.styleName.reset();
}

LookPreset LookLibrary::writePreset(LookPreset preset, const Path& presetFolder, const Project& project,
                                    const Path& package) const {
    createFolder(presetFolder);
    auto existing = readPreset(presetFolder / presetFileName);
    preset.files.clear();
    for (const Uuid& id : preset.look.assetIDs()) {
        if (const Asset* asset = project.asset(id))
            preset.files[id] = copyIntoPreset(*asset, presetFolder, package);
        else if (existing && existing->files.count(id))
            preset.files[id] = existing->files.at(id); // keeps a file through re-saves elsewhere
    }
    removeUnusedFileFolders(presetFolder / "files", preset.files);
    writeAtomically(presetFolder / presetFileName, JsonText::pretty(preset.toJson()));
    return preset;
}

std::string LookLibrary::copyIntoPreset(const Asset& asset, const Path& presetFolder, const Path& package) const {
    std::string relative = "files/" + asset.id.string() + "/" + copyName(asset);
    fs::path target = presetFolder / relative;
    if (isFile(target)) return relative;
    createFolder(target.parent_path());
    fs::path source = ProjectPackage::assetURL(asset, package);
    std::error_code error;
    fs::copy_file(source, target, error);
    if (error) throw PackageError("copy", source, error);
    return relative;
}

} // namespace recorder
