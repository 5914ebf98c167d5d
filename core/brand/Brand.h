#pragma once

#include <filesystem>
#include <string>

namespace recorder {

// The product's identity, read at run time from a product file so that the
// same build can ship under any name. Read once, at first use, never changed.
struct Brand {
    std::string compact = "Product";
    std::string display = "Product";
    std::string bundleID = "org.example.product";
    std::string domain = "product.example";
    std::string urlScheme;         // compact in lower case when absent
    std::string documentExtension; // compact in lower case when absent
    std::string version = "0.0.0";
    std::string build = "0";
    std::string watermarkName; // display when absent

    static const Brand& shared();

    // The product file's keys; absent or unusable keys keep their defaults.
    static Brand fromProductFileText(const std::string& text);
    static Brand fromProductFile(const std::filesystem::path& file);
    // $RECORDER_PRODUCT_FILE, then <exe dir>/../share/recorder/product.json,
    // then beside the executable.
    static std::filesystem::path locateProductFile();
};

} // namespace recorder
