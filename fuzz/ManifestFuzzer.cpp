// Any bytes as a manifest: migration and decoding must end in a typed error
// or a project, never a crash, a hang or an unexpected exception type.
#include "json/DecodingError.h"
#include "json/JsonText.h"
#include "package/MigrationError.h"
#include "package/ProjectMigrator.h"
#include "package/ProjectPackage.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace recorder;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        Project project = ProjectMigrator::migrate(bytes);
        // What decodes must encode and decode again to the same value.
        std::string text = ProjectPackage::encode(project);
        if (!(ProjectMigrator::migrate(text) == project)) std::abort();
    } catch (const JsonParseError&) {
    } catch (const DecodingError&) {
    } catch (const MigrationError&) {
    } catch (const JsonEncodeError&) {
    }
    return 0;
}
