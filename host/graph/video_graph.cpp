// Builds one graph for each way to read the input, until one of them suits.

#include "host/graph/video_graph.h"

#include <dvdmedia.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "host/avi/planar_layout.h"
#include "host/filters/avi_source_filter.h"
#include "host/filters/video_type.h"
#include "host/graph/error_text.h"
#include "host/graph/graph_pins.h"
#include "host/graph/settings_names.h"
#include "host/graph/type_text.h"

namespace tavo {
namespace {

enum class Route { Platform, OwnReader };

struct Attempt {
    std::unique_ptr<VideoGraph> graph;  // null on failure
    HRESULT result = S_OK;
    std::wstring error;
    // Failed where the source should have led to the filter's input pin.
    bool inputRefused = false;
};

std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

// Makes a filter of ours and takes the first reference to it.
template <typename Filter, typename... Arguments>
HRESULT MakeFilter(Filter*& object, ComPtr<IBaseFilter>& reference, Arguments&&... arguments) {
    HRESULT hr = S_OK;
    object = new (std::nothrow) Filter(std::forward<Arguments>(arguments)..., &hr);
    if (object == nullptr) return E_OUTOFMEMORY;
    reference = ComPtr<IBaseFilter>(object);
    return hr;
}

// Without Direct3D, as under Wine where no OpenGL is, this renderer crashes instead of refusing.
bool CanRun(const CLSID& renderer) {
    if (renderer != CLSID_VideoRendererDefault) return true;
    const HMODULE library = LoadLibraryW(L"d3d9.dll");
    if (library == nullptr) return false;
    using CreateDirect3D = IUnknown*(WINAPI*)(UINT);
    constexpr UINT kVersion = 32;
    const auto create = reinterpret_cast<CreateDirect3D>(
        reinterpret_cast<void*>(GetProcAddress(library, "Direct3DCreate9")));
    IUnknown* const direct3d = create != nullptr ? create(kVersion) : nullptr;
    if (direct3d != nullptr) direct3d->Release();
    return direct3d != nullptr;
}

class Builder {
  public:
    Builder(const RunOptions& options, const FilterFactory& factory, const InputFile& input)
        : options_(options), factory_(factory), input_(input) {}

    Attempt Build(Route route) {
        attempt_ = {};
        attempt_.graph = std::make_unique<VideoGraph>();
        if (!AddScalingFilter() || !ConnectSource(route) || !SetSize() || !ConnectEnd()) {
            attempt_.graph.reset();
            return std::move(attempt_);
        }
        if (attempt_.graph->sink != nullptr) InsertCounter();
        FindDuration(route);
        return std::move(attempt_);
    }

  private:
    bool Fail(HRESULT hr, const std::wstring& what) {
        attempt_.result = hr;
        attempt_.error = what + L": " + ErrorText(hr);
        return false;
    }

    // The settings come before any connection: types are tested against them. The size has to wait
    // for the source's.
    bool AddScalingFilter() {
        VideoGraph& graph = *attempt_.graph;
        HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IGraphBuilder, graph.builder.PutVoid());
        if (FAILED(hr)) return Fail(hr, L"DirectShow is not available");
        hr = factory_.Create(graph.filter);
        if (FAILED(hr)) return Fail(hr, L"the filter Mira Vantrel cannot be created");
        graph.settings = graph.filter.As<IVantrelSettings>(IID_IVantrelSettings);
        if (!graph.settings) return Fail(E_NOINTERFACE, L"the filter has no settings");
        graph.settings->SetScaleMethod(options_.method);
        graph.settings->SetOutputFormat(options_.format);
        graph.settings->SetVideoType(options_.type);
        graph.settings->SetFrameRate(options_.fps);
        hr = graph.builder->AddFilter(graph.filter.Get(), L"Mira Vantrel");
        return SUCCEEDED(hr) || Fail(hr, L"the filter Mira Vantrel cannot join the graph");
    }

    bool ConnectSource(Route route) {
        VideoGraph& graph = *attempt_.graph;
        ComPtr<IBaseFilter> source;
        HRESULT hr = AddSource(route, source);
        if (FAILED(hr)) return Fail(hr, Quoted(options_.input) + L" cannot be opened");
        const ComPtr<IPin> input = FirstPin(graph.filter.Get(), PINDIR_INPUT);
        if (!input) return Fail(E_UNEXPECTED, L"the filter has no input pin");
        hr = VFW_E_CANNOT_CONNECT;
        // A file may have sound too: its pins lead nowhere and are passed over.
        for (const ComPtr<IPin>& pin : PinsOf(source.Get(), PINDIR_OUTPUT)) {
            hr = graph.builder->Connect(pin.Get(), input.Get());
            if (SUCCEEDED(hr) && ConnectionTypeOf(input.Get(), graph.inputType)) return true;
        }
        attempt_.inputRefused = true;
        attempt_.result = FAILED(hr) ? hr : VFW_E_CANNOT_CONNECT;
        attempt_.error = WhyNotDecodedHere(input_);
        return false;
    }

    // The format is known now, and so is what sizes it can hold.
    bool SetSize() {
        VideoGraph& graph = *attempt_.graph;
        const auto type = ReadVideoType(graph.inputType);
        // What is no type of ours is for the filter to judge.
        const VideoFormat video = type ? type->video : VideoFormat{};
        const BITMAPINFOHEADER* const bitmap = BitmapHeaderOf(graph.inputType);
        if (bitmap == nullptr || bitmap->biHeight == LONG_MIN) return true;
        const PictureSize source = {bitmap->biWidth, std::abs(bitmap->biHeight)};
        const AspectRatio shown = ShownAspect(graph.inputType, source);
        const bool square = !shown.IsKnown() || IsSameShape(shown, source);
        graph.rotation = input_.facts.rotation;
        const AspectRatio pixel =
            square ? AspectRatio{}
                   : Reduced(uint64_t{shown.x} * static_cast<uint32_t>(source.height),
                             uint64_t{shown.y} * static_cast<uint32_t>(source.width));
        const SizeChoice choice = ChooseSize(options_, video.format, source, pixel);
        graph.wanted = choice.wanted;
        graph.size = choice.rounded;
        // A size that has the shape itself says all.
        if (!square && !IsSameShape(shown, choice.rounded)) graph.shown = shown;
        graph.settings->SetOutputSize(choice.setting.width, choice.setting.height);
        return true;
    }

    // As the type says, or else the file itself.
    AspectRatio ShownAspect(const CMediaType& type, PictureSize source) const {
        if (type.formattype == FORMAT_VideoInfo2 && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
            const auto* const header = reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat);
            const AspectRatio aspect =
                Reduced(header->dwPictAspectRatioX, header->dwPictAspectRatioY);
            if (aspect.IsKnown() && !IsSameShape(aspect, source)) return aspect;
        }
        return DisplayAspect(source, input_.facts.pixel);
    }

    // Ratios are rounded on their way: a hundredth does not show.
    static bool IsSameShape(AspectRatio aspect, PictureSize size) {
        const double shown = static_cast<double>(aspect.x) / aspect.y;
        const double lies = static_cast<double>(size.width) / std::max(size.height, 1);
        return std::abs(shown / lies - 1.0) < 0.01;
    }

    HRESULT AddSource(Route route, ComPtr<IBaseFilter>& source) {
        IGraphBuilder& builder = *attempt_.graph->builder.Get();
        if (route == Route::Platform) {
            // Source filters may run with another idea of the current folder.
            std::error_code error;
            const std::filesystem::path full = std::filesystem::absolute(options_.input, error);
            return builder.AddSourceFilter(error ? options_.input.c_str() : full.c_str(), L"Source",
                                           source.Put());
        }
        CAviSource* object = nullptr;
        const HRESULT hr = MakeFilter(object, source, input_.movie);
        return SUCCEEDED(hr) ? builder.AddFilter(source.Get(), L"AVI source") : hr;
    }

    // Only now: while it was being looked for a way to the filter, the end might have been one.
    bool ConnectEnd() {
        VideoGraph& graph = *attempt_.graph;
        const ComPtr<IPin> output = FirstPin(graph.filter.Get(), PINDIR_OUTPUT);
        if (!output) return Fail(E_UNEXPECTED, L"the filter has no output pin");
        const bool connected =
            options_.ToScreen() ? ConnectRenderer(output.Get()) : ConnectSink(output.Get());
        if (connected) ConnectionTypeOf(output.Get(), graph.outputType);
        return connected;
    }

    // Systems differ in which of their renderers shows what.
    bool ConnectRenderer(IPin* output) {
        VideoGraph& graph = *attempt_.graph;
        HRESULT hr = VFW_E_CANNOT_RENDER;
        for (const CLSID& clsid : {CLSID_VideoRenderer, CLSID_VideoRendererDefault}) {
            ComPtr<IBaseFilter> renderer;
            if (!CanRun(clsid) ||
                FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                        renderer.PutVoid())) ||
                FAILED(graph.builder->AddFilter(renderer.Get(), L"Video renderer"))) {
                continue;
            }
            const ComPtr<IPin> input = FirstPin(renderer.Get(), PINDIR_INPUT);
            hr = input ? graph.builder->Connect(output, input.Get()) : E_UNEXPECTED;
            if (SUCCEEDED(hr)) {
                graph.sinkFilter = renderer;
                return true;
            }
            graph.builder->RemoveFilter(renderer.Get());
        }
        return Fail(hr, L"nothing on this system shows the filter's output");
    }

    bool ConnectSink(IPin* output) {
        VideoGraph& graph = *attempt_.graph;
        HRESULT hr = MakeFilter(graph.sink, graph.sinkFilter);
        if (SUCCEEDED(hr)) hr = graph.builder->AddFilter(graph.sinkFilter.Get(), L"AVI sink");
        if (FAILED(hr)) return Fail(hr, L"the AVI writer cannot join the graph");
        const ComPtr<IPin> input = FirstPin(graph.sinkFilter.Get(), PINDIR_INPUT);
        if (!input) return Fail(E_UNEXPECTED, L"the AVI writer has no input pin");
        hr = graph.builder->ConnectDirect(output, input.Get(), nullptr);
        return SUCCEEDED(hr) || Fail(hr, L"the filter offers no output that can be written");
    }

    // Between the filter's input and its source. Who knows a source that will not connect a second
    // time? Then the first connection is put back, and the run goes without the counter.
    void InsertCounter() {
        VideoGraph& graph = *attempt_.graph;
        const ComPtr<IPin> input = FirstPin(graph.filter.Get(), PINDIR_INPUT);
        const ComPtr<IPin> upstream = PeerOf(input.Get());
        CFrameCounter* counter = nullptr;
        ComPtr<IBaseFilter> reference;
        if (!upstream || FAILED(MakeFilter(counter, reference, *graph.sink)) ||
            FAILED(graph.builder->AddFilter(reference.Get(), L"Frame counter"))) {
            return;
        }
        IGraphBuilder& builder = *graph.builder.Get();
        const CMediaType type = graph.inputType;
        builder.Disconnect(upstream.Get());
        builder.Disconnect(input.Get());
        if (SUCCEEDED(builder.ConnectDirect(&counter->Output(), input.Get(), &type)) &&
            SUCCEEDED(builder.ConnectDirect(upstream.Get(), &counter->Input(), &type))) {
            graph.counter = counter;
            graph.counterFilter = reference;
            return;
        }
        builder.Disconnect(upstream.Get());
        builder.RemoveFilter(reference.Get());
        builder.ConnectDirect(upstream.Get(), input.Get(), &type);
    }

    void FindDuration(Route route) {
        VideoGraph& graph = *attempt_.graph;
        if (route == Route::OwnReader) {
            graph.duration = input_.movie->Duration();
            return;
        }
        const ComPtr<IPin> output = FirstPin(graph.filter.Get(), PINDIR_OUTPUT);
        const ComPtr<IPin> upstream =
            PeerOf(graph.counter != nullptr ? &graph.counter->Input()
                                            : FirstPin(graph.filter.Get(), PINDIR_INPUT).Get());
        const auto seeking = upstream.As<IMediaSeeking>(IID_IMediaSeeking);
        LONGLONG duration = 0;
        if (!seeking || FAILED(seeking->GetDuration(&duration)) || duration <= 0) return;
        GUID unit = TIME_FORMAT_NONE;
        if (SUCCEEDED(seeking->GetTimeFormat(&unit)) && unit == TIME_FORMAT_MEDIA_TIME) {
            graph.duration = duration;
        }
    }

    const RunOptions& options_;
    const FilterFactory& factory_;
    const InputFile& input_;
    Attempt attempt_;
};

bool IsRestricted(const RunOptions& options) { return options.format != 0 || options.type != 0; }

// What the source would give if the filter took anything.
std::wstring ExplainRefusal(const RunOptions& options, const FilterFactory& factory,
                            const InputFile& input, const std::wstring& otherwise) {
    RunOptions open = options;
    open.format = 0;
    open.type = 0;
    const Attempt attempt = Builder(open, factory, input).Build(Route::Platform);
    if (!attempt.graph) return otherwise;
    std::wstring wanted;
    if (options.format != 0) {
        wanted = L"--format " + std::wstring(SettingText(FormatNames(), options.format));
    }
    if (options.type != 0) {
        if (!wanted.empty()) wanted += L" with ";
        wanted += L"--type " + std::wstring(SettingText(TypeNames(), options.type));
    }
    return wanted + L" is refused: " + Quoted(options.input) + L" gives " +
           DescribeType(attempt.graph->inputType) + L", and nothing here converts it";
}

// Formats that platforms neither offer nor hand on as they are.
bool IsRareFormat(PixelFormat format) {
    return format == PixelFormat::RGB555 || format == PixelFormat::RGB565 ||
           format == PixelFormat::YVU9 || format == PixelFormat::YVYU;
}

bool Keeps(const VideoGraph& graph, PixelFormat format) {
    const auto type = ReadVideoType(graph.inputType);
    return type && type->video.format == format;
}

// Platforms take planes of such sizes to lie in padded rows, as few files have them.
bool IsMisread(const VideoFormat& video) {
    return InfoOf(video.format).group == FormatGroup::Planar && LayoutsDiffer(video);
}

// The graph by the platform's readers or by our own one, whichever keeps the file's pictures.
Attempt BuildForRawMovie(Builder& builder, const RunOptions& options, const VideoFormat& video) {
    const PixelFormat native = video.format;
    const bool nativeWanted =
        options.format == 0 || static_cast<PixelFormat>(options.format) == native;
    const bool ownFirst = nativeWanted && (IsRareFormat(native) || IsMisread(video));
    Attempt first = builder.Build(ownFirst ? Route::OwnReader : Route::Platform);
    if (first.graph && (ownFirst || !nativeWanted || Keeps(*first.graph, native))) return first;
    Attempt second = builder.Build(ownFirst ? Route::Platform : Route::OwnReader);
    return second.graph || !first.graph ? std::move(second) : std::move(first);
}

Attempt BuildByAnyRoute(const RunOptions& options, const FilterFactory& factory,
                        const InputFile& input) {
    Builder builder(options, factory, input);
    return input.movie ? BuildForRawMovie(builder, options, input.movie->reader.Video())
                       : builder.Build(Route::Platform);
}

// Renderers show few formats and the filter converts none: a source whose first choice cannot be
// shown is asked for RGB24. Once it is connected the format is free again.
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

}  // namespace

// A graph and its filters hold each other until the filters are taken out, and that is done by the
// graph's last release: the bare references here must go first.
VideoGraph::~VideoGraph() {
    settings.Reset();
    builder.Reset();
}

std::unique_ptr<VideoGraph> BuildVideoGraph(const RunOptions& options, const FilterFactory& factory,
                                            const InputFile& input, std::wstring& error) {
    Attempt attempt = options.ToScreen() ? BuildForScreen(options, factory, input)
                                         : BuildByAnyRoute(options, factory, input);
    if (attempt.graph) return std::move(attempt.graph);
    error = attempt.error;
    if (attempt.inputRefused && IsRestricted(options)) {
        error = ExplainRefusal(options, factory, input, error);
    }
    return nullptr;
}

}  // namespace tavo
