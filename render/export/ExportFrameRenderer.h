#pragma once

#include "compose/FrameRenderer.h"
#include "events/EventLog.h"
#include "export/ExportFrameDrawer.h"
#include "export/ForwardVideoSource.h"
#include "frames/ProjectFrameSources.h"
#include "model/Project.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace recorder {

// The export's own FrameRenderer with its own sources: screen and camera
// read forwards, media items through ProjectFrameSources. Shares nothing
// with a preview.
class ExportFrameRenderer : public ExportFrameDrawer {
public:
    ExportFrameRenderer(Project project, std::filesystem::path package, int width, int height);

    void open() override;
    void draw(std::int64_t index, double time, std::uint8_t* bgra, int stride) override;

    // The decoded pictures of the frame at project time `time`.
    FrameInputs inputs(double time);

private:
    std::unique_ptr<ForwardVideoSource> openRecording(AssetKind kind, bool skipsBlackFrames) const;
    void openAvatar();

    Project project_;
    // The project without screen, camera and avatar, so that the random
    // access sources serve the media items only.
    Project mediaOnly_;
    std::filesystem::path package_;
    int width_;
    int height_;
    FrameRenderer renderer_;
    ProjectFrameSources media_;
    std::optional<EventLog> events_;
    std::unique_ptr<ForwardVideoSource> screen_;
    std::unique_ptr<ForwardVideoSource> camera_;
    SourceImage avatar_;
};

} // namespace recorder
