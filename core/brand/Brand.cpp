#include "brand/Brand.h"

#include "json/JsonText.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace recorder {

namespace {

std::string lowercase(std::string text) {
    for (auto& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

void readKey(const nlohmann::json& object, const char* key, std::string& field) {
    auto it = object.find(key);
    if (it != object.end() && it->is_string()) field = it->get<std::string>();
}

std::filesystem::path executableDirectory() {
    std::error_code error;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : exe.parent_path();
}

} // namespace

Brand Brand::fromProductFileText(const std::string& text) {
    Brand brand;
    std::string urlScheme, documentExtension, watermarkName;
    try {
        auto object = JsonText::parse(text);
        if (object.is_object()) {
            readKey(object, "ProductNameCompact", brand.compact);
            readKey(object, "ProductNameDisplay", brand.display);
            readKey(object, "CFBundleIdentifier", brand.bundleID);
            readKey(object, "ProductDomain", brand.domain);
            readKey(object, "ProductURLScheme", urlScheme);
            readKey(object, "ProductDocumentExtension", documentExtension);
            readKey(object, "CFBundleShortVersionString", brand.version);
            readKey(object, "CFBundleVersion", brand.build);
            readKey(object, "ProductWatermarkName", watermarkName);
        }
    } catch (const std::exception&) {
        // A damaged product file leaves the defaults: the program must still start.
    }
    brand.urlScheme = urlScheme.empty() ? lowercase(brand.compact) : urlScheme;
    brand.documentExtension = documentExtension.empty() ? lowercase(brand.compact) : documentExtension;
    brand.watermarkName = watermarkName.empty() ? brand.display : watermarkName;
    return brand;
}

Brand Brand::fromProductFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return fromProductFileText("");
    std::stringstream text;
    text << in.rdbuf();
    return fromProductFileText(text.str());
}

std::filesystem::path Brand::locateProductFile() {
    if (const char* fromEnvironment = std::getenv("RECORDER_PRODUCT_FILE"); fromEnvironment && *fromEnvironment)
        return fromEnvironment;
    auto directory = executableDirectory();
    for (auto candidate : {directory / ".." / "share" / "recorder" / "product.json", directory / "product.json"}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate.lexically_normal();
    }
    return {};
}

const Brand& Brand::shared() {
    static const Brand brand = fromProductFile(locateProductFile());
    return brand;
}

} // namespace recorder
