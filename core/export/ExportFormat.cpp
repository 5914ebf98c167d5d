#include "export/ExportFormat.h"

namespace recorder {

std::string_view fileExtension(ExportFormat format) { return format == ExportFormat::gif ? "gif" : "mp4"; }

} // namespace recorder
