// Builds a graph for each way to read the input until one is suitable.

#include "host/graph/video_graph.h"

#include <utility>

#include "host/avi/planar_layout.h"
#include "host/filters/video_type.h"
#include "host/graph/graph_builder.h"
#include "host/graph/setting_lookup.h"
#include "host/graph/type_text.h"

namespace tavo {
namespace {

bool IsRestricted(const RunOptions& options) { return options.format != 0 || options.type != 0; }

// Finds out what the source gives when the filter accepts anything.
std::wstring ExplainRefusal(const RunOptions& options, const FilterFactory& factory,
                            const InputFile& input, const std::wstring& otherwise) {
    RunOptions open = options;
    open.format = 0;
    open.type = 0;
    const Attempt attempt = GraphBuilder(open, factory, input).Build(Route::Platform);
    if (!attempt.graph) return otherwise;
    std::wstring wanted;
    if (options.format != 0) {
        wanted = L"--format " + std::wstring(SettingText(FormatNames(), options.format));
    }
    if (options.type != 0) {
        if (!wanted.empty()) wanted += L" with ";
        wanted += L"--type " + std::wstring(SettingText(TypeNames(), options.type));
    }
    return wanted + L" is refused: " + input.Name() + L" gives " +
           DescribeType(attempt.graph->inputType) + L", and nothing here converts it";
}

// Formats that the platform converts or does not offer.
bool IsRareFormat(PixelFormat format) {
    return format == PixelFormat::RGB555 || format == PixelFormat::RGB565 ||
           format == PixelFormat::YVU9 || format == PixelFormat::YVYU;
}

bool KeepsFormat(const VideoGraph& graph, PixelFormat format) {
    const auto type = ReadVideoType(graph.inputType);
    return type && type->video.format == format;
}

// The platform expects padded rows at such sizes; few files have them.
bool IsMisread(const VideoFormat& video) {
    return InfoOf(video.format).group == FormatGroup::Planar && LayoutsDiffer(video);
}

// Prefers the reader that keeps the format of the file: the platform's or this program's.
Attempt BuildForRawMovie(GraphBuilder& builder, const RunOptions& options,
                         const VideoFormat& video) {
    const PixelFormat native = video.format;
    const bool nativeWanted =
        options.format == 0 || static_cast<PixelFormat>(options.format) == native;
    const bool ownFirst = nativeWanted && (IsRareFormat(native) || IsMisread(video));
    Attempt first = builder.Build(ownFirst ? Route::OwnReader : Route::Platform);
    if (first.graph && (ownFirst || !nativeWanted || KeepsFormat(*first.graph, native)))
        return first;
    Attempt second = builder.Build(ownFirst ? Route::Platform : Route::OwnReader);
    return second.graph || !first.graph ? std::move(second) : std::move(first);
}

Attempt BuildByAnyRoute(const RunOptions& options, const FilterFactory& factory,
                        const InputFile& input) {
    GraphBuilder builder(options, factory, input);
    return input.movie ? BuildForRawMovie(builder, options, input.movie->reader.Video())
                       : builder.Build(Route::Platform);
}

// Renderers show few formats and the filter converts none. If the source's first choice cannot be
// shown, it is asked for RGB24. Once connected, any format is allowed again.
Attempt BuildForScreen(const RunOptions& options, const FilterFactory& factory,
                       const InputFile& input) {
    Attempt first = BuildByAnyRoute(options, factory, input);
    if (first.graph || first.inputRefused || options.format != 0) return first;
    RunOptions rgb = options;
    rgb.format = static_cast<int>(PixelFormat::RGB24);
    Attempt second = BuildByAnyRoute(rgb, factory, input);
    if (!second.graph) return first;
    second.graph->settings->SetOutputFormat(options.format);
    return second;
}

Attempt BuildForOutput(const RunOptions& options, const FilterFactory& factory,
                       const InputFile& input) {
    return options.ToScreen() ? BuildForScreen(options, factory, input)
                              : BuildByAnyRoute(options, factory, input);
}

bool GivesI420(const VideoGraph& graph) {
    const auto type = ReadVideoType(graph.inputType);
    return type && type->video.compression == kCompressionI420;
}

// I420 has the pictures of IYUV, but no setting of the filter names it: only AUTO takes it.
Attempt BuildForI420(const RunOptions& options, const FilterFactory& factory,
                     const InputFile& input) {
    RunOptions open = options;
    open.format = VantrelFormatAuto;
    Attempt attempt = BuildForOutput(open, factory, input);
    if (attempt.graph && !GivesI420(*attempt.graph)) attempt.graph.reset();
    return attempt;
}

}  // namespace

// The last release of the graph takes out its filters, which may hold each other. So the interfaces
// here are released first.
VideoGraph::~VideoGraph() {
    settings.Reset();
    builder.Reset();
}

std::unique_ptr<VideoGraph> BuildVideoGraph(const RunOptions& options, const FilterFactory& factory,
                                            const InputFile& input, std::wstring& error) {
    Attempt attempt = BuildForOutput(options, factory, input);
    if (attempt.inputRefused && options.format == VantrelFormatIyuv) {
        Attempt other = BuildForI420(options, factory, input);
        if (other.graph) attempt = std::move(other);
    }
    if (attempt.graph) return std::move(attempt.graph);
    error = attempt.error;
    if (attempt.inputRefused && IsRestricted(options)) {
        error = ExplainRefusal(options, factory, input, error);
    }
    return nullptr;
}

}  // namespace tavo
