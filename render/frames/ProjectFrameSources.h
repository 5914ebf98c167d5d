#pragma once

#include "compose/FrameInputs.h"
#include "compose/FrameRenderer.h"
#include "model/Project.h"
#include "sources/FrameSource.h"
#include "sources/StillImageSource.h"
#include "sources/TextImageSource.h"
#include "sources/VideoFrameSource.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace recorder {

// The random-access sources of one package, for a still frame at any time:
// the screen and camera recordings, the avatar, each media item's file, and
// the picture of the background. Opened when first needed; a file that is
// missing or can't be read leaves its layer out.
class ProjectFrameSources {
public:
    explicit ProjectFrameSources(std::filesystem::path package) : package_(std::move(package)) {}

    // The decoded pictures of the frame at project time `time`.
    FrameInputs inputs(const Project& project, double time);

    // Gives the renderer the file of the project's background picture when
    // the background style changed since the last call.
    void prepareBackground(FrameRenderer& renderer, const Project& project);

private:
    template <class Source>
    Source* open(std::unique_ptr<Source>& slot, bool& tried, const Asset* asset, bool skipsBlackFrames = false);
    SourceImage mediaImage(const Project& project, const MediaItem& item, double time);
    SourceImage picture(const Project& project, const Uuid& assetID) const;
    SourceImage textImage(const MediaItem& item);

    std::filesystem::path package_;
    std::unique_ptr<VideoFrameSource> screen_;
    std::unique_ptr<VideoFrameSource> camera_;
    std::unique_ptr<StillImageSource> avatar_;
    bool triedScreen_ = false;
    bool triedCamera_ = false;
    bool triedAvatar_ = false;
    // Items whose file failed stay here as null, so it isn't tried again.
    std::map<Uuid, std::unique_ptr<FrameSource>> media_;
    std::string backgroundKey_;
    // A text item's raster, remade only when its text or look changes; the
    // picture keeps its shrunk levels from frame to frame.
    struct Text {
        TextImageSource source;
        SourceImage image;
    };
    std::map<Uuid, Text> texts_;
};

} // namespace recorder
