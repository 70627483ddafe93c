// Adds and connects the filters one after the other, from the scaling filter outwards.

#include "host/graph/graph_builder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <utility>

#include "host/filters/video_type.h"
#include "host/graph/display_aspect.h"
#include "host/graph/error_text.h"
#include "host/graph/graph_pins.h"
#include "host/graph/movie_section.h"
#include "host/graph/sound_connection.h"
#include "host/graph/video_renderer.h"
#include "host/graph/wine.h"

namespace tavo {
namespace {

// Creates a filter of this program, with its first reference.
template <typename Filter, typename... Arguments>
HRESULT MakeFilter(Filter*& object, ComPtr<IBaseFilter>& reference, Arguments&&... arguments) {
    HRESULT hr = S_OK;
    object = new (std::nothrow) Filter(std::forward<Arguments>(arguments)..., &hr);
    if (object == nullptr) return E_OUTOFMEMORY;
    reference = ComPtr<IBaseFilter>(object);
    return hr;
}

constexpr REFERENCE_TIME kSeekMargin = 2 * kUnitsPerSecond;

}  // namespace

Attempt GraphBuilder::Build(Route route) {
    attempt_ = {};
    soundSource_.Reset();
    attempt_.graph = std::make_unique<VideoGraph>();
    if (!AddScalingFilter() || !ConnectSource(route) || !SetSize() || !ConnectEnd()) {
        attempt_.graph.reset();
        return std::move(attempt_);
    }
    if (attempt_.graph->sink != nullptr) {
        InsertCounter();
        if (!options_.noSound) TakeSound(route);
    }
    FindDuration(route);
    if (!options_.section.IsAll() && !TakeSection(route)) attempt_.graph.reset();
    return std::move(attempt_);
}

bool GraphBuilder::Fail(HRESULT hr, const std::wstring& what) {
    attempt_.error = what + L": " + ErrorText(hr);
    return false;
}

// Settings come before any connection: types are tested against them. Only the size waits for the
// source's.
bool GraphBuilder::AddScalingFilter() {
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

bool GraphBuilder::ConnectSource(Route route) {
    VideoGraph& graph = *attempt_.graph;
    ComPtr<IBaseFilter> source;
    HRESULT hr = AddSource(route, source);
    if (FAILED(hr)) return Fail(hr, input_.Name() + L" cannot be opened");
    const ComPtr<IPin> input = FirstPin(graph.filter.Get(), PINDIR_INPUT);
    if (!input) return Fail(E_UNEXPECTED, L"the filter has no input pin");
    // Pins of sound do not connect, and are passed over.
    for (const ComPtr<IPin>& pin : PinsOf(source.Get(), PINDIR_OUTPUT)) {
        hr = graph.builder->Connect(pin.Get(), input.Get());
        if (SUCCEEDED(hr) && ConnectionTypeOf(input.Get(), graph.inputType)) return true;
    }
    attempt_.inputRefused = true;
    attempt_.error = WhyNotDecodedHere(input_);
    return false;
}

// Now that the format is known, and with it the sizes that it can hold.
bool GraphBuilder::SetSize() {
    VideoGraph& graph = *attempt_.graph;
    const auto type = ReadVideoType(graph.inputType);
    // Other types are for the filter to judge.
    const VideoFormat video = type ? type->video : VideoFormat{};
    const BITMAPINFOHEADER* const bitmap = BitmapHeaderOf(graph.inputType);
    if (bitmap == nullptr || bitmap->biHeight == LONG_MIN) return true;
    const PictureSize source = {bitmap->biWidth, std::abs(bitmap->biHeight)};
    const AspectRatio aspect = DisplayAspectOf(graph.inputType, source, input_.facts.pixelAspect);
    const bool square = !aspect.IsKnown() || IsSameShape(aspect, source);
    graph.rotation = input_.facts.rotation;
    const AspectRatio pixel =
        square ? AspectRatio{}
               : Reduced(uint64_t{aspect.x} * static_cast<uint32_t>(source.height),
                         uint64_t{aspect.y} * static_cast<uint32_t>(source.width));
    const SizeChoice choice = ChooseSize(options_, video.format, source, pixel);
    graph.wanted = choice.wanted;
    graph.size = choice.rounded;
    // A size of the right shape needs no mark.
    if (!square && !IsSameShape(aspect, choice.rounded)) graph.displayAspect = aspect;
    graph.settings->SetOutputSize(choice.setting.width, choice.setting.height);
    return true;
}

HRESULT GraphBuilder::AddSource(Route route, ComPtr<IBaseFilter>& source) {
    if (route == Route::Platform) return AddPlatformSource(L"Source", source);
    const HRESULT hr = MakeFilter(ownSource_, source, input_.movie);
    return SUCCEEDED(hr) ? attempt_.graph->builder->AddFilter(source.Get(), L"AVI source") : hr;
}

HRESULT GraphBuilder::AddPlatformSource(const wchar_t* name, ComPtr<IBaseFilter>& source) {
    // Source filters may have another current folder.
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(options_.input, error);
    return attempt_.graph->builder->AddSourceFilter(error ? options_.input.c_str() : full.c_str(),
                                                    name, source.Put());
}

// After the source: intelligent connect could have led the source to the sink or the renderer.
bool GraphBuilder::ConnectEnd() {
    VideoGraph& graph = *attempt_.graph;
    const ComPtr<IPin> output = FirstPin(graph.filter.Get(), PINDIR_OUTPUT);
    if (!output) return Fail(E_UNEXPECTED, L"the filter has no output pin");
    if (options_.ToScreen()) {
        const HRESULT hr = ConnectRenderer(*graph.builder, output.Get(), graph.sinkFilter);
        if (FAILED(hr)) return Fail(hr, L"nothing on this system shows the filter's output");
    } else if (!ConnectSink(output.Get())) {
        return false;
    }
    ConnectionTypeOf(output.Get(), graph.outputType);
    return true;
}

bool GraphBuilder::ConnectSink(IPin* output) {
    VideoGraph& graph = *attempt_.graph;
    HRESULT hr = MakeFilter(graph.sink, graph.sinkFilter);
    if (SUCCEEDED(hr)) hr = graph.builder->AddFilter(graph.sinkFilter.Get(), L"AVI sink");
    if (FAILED(hr)) return Fail(hr, L"the AVI writer cannot join the graph");
    const ComPtr<IPin> input = FirstPin(graph.sinkFilter.Get(), PINDIR_INPUT);
    if (!input) return Fail(E_UNEXPECTED, L"the AVI writer has no input pin");
    hr = graph.builder->ConnectDirect(output, input.Get(), nullptr);
    return SUCCEEDED(hr) || Fail(hr, L"the filter offers no output that can be written");
}

// Between the filter's input and its source. If the source does not connect a second time, the
// first connection is restored and the run goes without the counter.
void GraphBuilder::InsertCounter() {
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

// Without its sound, the video is still worth writing.
void GraphBuilder::TakeSound(Route route) {
    VideoGraph& graph = *attempt_.graph;
    std::vector<ComPtr<IPin>> pins;
    if (route == Route::Platform) pins = OpenSoundPins(Input().Get());
    const bool isThere = input_.facts.hasSound || !pins.empty();
    if (route == Route::OwnReader ? input_.facts.hasSound && ConnectSoundSource()
                                  : ConnectSound(*graph.builder.Get(), pins, *graph.sink)) {
        graph.sound = graph.sink->SoundPin().Sound();
        if (RunsUnderWine()) {
            // Wine ends all streams with the first one, and stamps without the edits of the file.
            ReadLongestStream(&graph.sink->SoundPin());
            graph.sink->SoundPin().SetDelay(input_.facts.videoLead - input_.facts.soundLead);
        }
    } else if (isThere) {
        graph.soundNote =
            L"nothing on this system decodes the sound in " + input_.Name() + L": it is left out";
    }
}

// This program's reader has no sound. The platform reads it beside.
bool GraphBuilder::ConnectSoundSource() {
    VideoGraph& graph = *attempt_.graph;
    IGraphBuilder& builder = *graph.builder.Get();
    if (FAILED(AddPlatformSource(L"Sound source", soundSource_))) return false;
    if (ConnectSound(builder, PinsOf(soundSource_.Get(), PINDIR_OUTPUT), *graph.sink)) {
        graph.sink->KeepTogether();
        return true;
    }
    builder.RemoveFilter(soundSource_.Get());
    soundSource_.Reset();
    return false;
}

// The scaling filter's input, or that of the counter in front of it.
ComPtr<IPin> GraphBuilder::Input() const {
    const VideoGraph& graph = *attempt_.graph;
    if (graph.counter != nullptr) return ComPtr<IPin>(&graph.counter->Input());
    return FirstPin(graph.filter.Get(), PINDIR_INPUT);
}

ComPtr<IMediaSeeking> GraphBuilder::UpstreamSeeking() const {
    return PeerOf(Input().Get()).As<IMediaSeeking>(IID_IMediaSeeking);
}

void GraphBuilder::FindDuration(Route route) {
    VideoGraph& graph = *attempt_.graph;
    if (route == Route::OwnReader) {
        graph.duration = input_.movie->Duration();
        return;
    }
    const ComPtr<IMediaSeeking> seeking = UpstreamSeeking();
    LONGLONG duration = 0;
    if (!seeking || FAILED(seeking->GetDuration(&duration)) || duration <= 0) return;
    GUID unit = TIME_FORMAT_NONE;
    if (SUCCEEDED(seeking->GetTimeFormat(&unit)) && unit == TIME_FORMAT_MEDIA_TIME) {
        graph.duration = duration;
    }
}

// The counter cuts; the source may spare it the frames in front. Decoders stamp a frame that a seek
// meets in its middle with the time of the seek: so the seek goes to well before the section.
bool GraphBuilder::TakeSection(Route route) {
    VideoGraph& graph = *attempt_.graph;
    const TimeSection& section = options_.section;
    if (graph.counter == nullptr) {
        attempt_.error = L"no section can be taken: the source does not connect with the counter";
        return false;
    }
    graph.counter->SetSection(section);
    graph.sink->SoundPin().SetSection(section);
    if (route == Route::OwnReader) {
        ownSource_->StartAt(FirstFrameFrom(*input_.movie, section.start));
    }
    // A source of both streams seeks in both.
    const ComPtr<IMediaSeeking> seeking =
        soundSource_ ? PeerOf(&graph.sink->SoundPin()).As<IMediaSeeking>(IID_IMediaSeeking)
                     : UpstreamSeeking();
    // A source that does not seek is read from its beginning.
    if (seeking && section.start > kSeekMargin) {
        LONGLONG position = section.start - kSeekMargin;
        seeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr,
                              AM_SEEKING_NoPositioning);
    }
    if (graph.duration > 0) {
        const int64_t rest = std::max<int64_t>(graph.duration - section.start, 0);
        graph.duration = std::min(rest, section.duration);
    }
    return true;
}

}  // namespace tavo
