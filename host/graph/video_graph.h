// Builds the graph of a run: source -> what the platform puts between -> Mira Vantrel -> AVI sink
// or the platform's video renderer.

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

// A whole graph, connected and stopped. It goes with the last of these.
struct VideoGraph {
    ComPtr<IGraphBuilder> builder;
    ComPtr<IBaseFilter> filter;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IBaseFilter> sinkFilter;
    ComPtr<IBaseFilter> counterFilter;
    // Owned by the two above; both are null on the way to the screen, and the counter also when the
    // source would not have it.
    CAviSink* sink = nullptr;
    CFrameCounter* counter = nullptr;

    // Of the filter's pins.
    CMediaType inputType;
    CMediaType outputType;
    REFERENCE_TIME duration = 0;  // of the movie; 0 when nobody knows

    PictureSize wanted;  // of the output, without regard to what its format can hold
    PictureSize size;    // and with it
    AspectRatio shown;   // for a picture whose pixels are not square; else unknown
    int rotation = 0;    // that players give to the source, in degrees clockwise

    VideoGraph() = default;
    ~VideoGraph();
    VideoGraph(const VideoGraph&) = delete;
    VideoGraph& operator=(const VideoGraph&) = delete;
};

// An uncompressed AVI that this program can read itself is left to the platform as long as that
// delivers the file's own format unchanged. Returns null and one line for the user on failure. May
// throw std::bad_alloc.
std::unique_ptr<VideoGraph> BuildVideoGraph(const RunOptions& options, const FilterFactory& factory,
                                            const InputFile& input, std::wstring& error);

}  // namespace tavo
