// The graph of a run: source -> the platform's filters -> Mira Vantrel -> AVI sink or the
// platform's video renderer.

#pragma once

#include <memory>
#include <string>

#include "dshow/com_ptr.h"
#include "host/filters/avi_sink_filter.h"
#include "host/filters/frame_counter_filter.h"
#include "host/graph/filter_factory.h"
#include "host/graph/input_file.h"
#include "host/graph/output_size.h"
#include "host/graph/run_options.h"
#include "settings/vantrel_settings.h"
#include "streams.h"

namespace tavo {

// A complete graph, connected and stopped. It lives until the last of these references.
struct VideoGraph {
    ComPtr<IGraphBuilder> builder;
    ComPtr<IBaseFilter> filter;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IBaseFilter> sinkFilter;
    ComPtr<IBaseFilter> counterFilter;
    // Owned by the two above. Null during playback; the counter also when the source did not accept
    // it.
    CAviSink* sink = nullptr;
    CFrameCounter* counter = nullptr;

    // Of the filter's pins.
    CMediaType inputType;
    CMediaType outputType;
    SoundFormat sound;            // that is written; unknown without
    std::wstring soundNote;       // why sound of the source is not; one line
    REFERENCE_TIME duration = 0;  // of what is taken of the video; 0 when it is unknown

    PictureSize wanted;         // of the output, before rounding
    PictureSize size;           // rounded for the pixel format
    AspectRatio displayAspect;  // unknown when pixels are square
    int rotation = 0;           // of the source, in degrees clockwise

    VideoGraph() = default;
    ~VideoGraph();
    VideoGraph(const VideoGraph&) = delete;
    VideoGraph& operator=(const VideoGraph&) = delete;
};

// The platform reads an uncompressed AVI if it delivers the format of the file unchanged, else this
// program does. Returns null and one line for the user on failure. May throw std::bad_alloc.
std::unique_ptr<VideoGraph> BuildVideoGraph(const RunOptions& options, const FilterFactory& factory,
                                            const InputFile& input, std::wstring& error);

}  // namespace tavo
