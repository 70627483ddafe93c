// Prints when the frames of a video begin and end, as they come and as the regulator sends them:
//
//   slot_times.exe VIDEO FPS
//   in,PICTURE,START,STOP
//   out,PICTURE,START,STOP
//
// Pictures are numbered as they come in; times are in units of 100 ns. scripts/draw_timeline.py
// makes a picture of it.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/support/graph.h"

using namespace tavo_test;

namespace {

struct Frame {
    uint64_t digest;
    REFERENCE_TIME start;
    REFERENCE_TIME stop;
};

uint64_t DigestOf(IMediaSample* sample) {
    BYTE* data = nullptr;
    uint64_t digest = 14695981039346656037u;
    if (FAILED(sample->GetPointer(&data))) return 0;
    for (const BYTE* p = data; p < data + sample->GetActualDataLength(); ++p) {
        digest = (digest ^ *p) * 1099511628211u;
    }
    return digest;
}

bool ConnectSource(const Graph& graph, IBaseFilter* source, IPin* input) {
    ComPtr<IEnumPins> pins;
    if (FAILED(source->EnumPins(pins.Put()))) return false;
    ComPtr<IPin> pin;
    while (pins->Next(1, pin.Put(), nullptr) == S_OK) {
        if (SUCCEEDED(graph.builder()->Connect(pin.Get(), input))) return true;
    }
    return false;
}

// The frames behind the filter; empty when the video cannot be played.
std::vector<Frame> Play(const std::wstring& path, double fps) {
    std::vector<Frame> frames;
    const auto sink = TestSink::Create({.keepBytes = false, .onReceive = [&](IMediaSample* sample) {
                                            Frame frame = {DigestOf(sample), -1, -1};
                                            sample->GetTime(&frame.start, &frame.stop);
                                            frames.push_back(frame);
                                            return S_OK;
                                        }});
    const auto filter = CreateFilter();
    filter.As<IVantrelSettings>(IID_IVantrelSettings)->SetFrameRate(fps);
    Graph graph;
    ComPtr<IBaseFilter> source;
    if (FAILED(graph.Add(filter.Get(), L"vantrel")) || FAILED(graph.Add(sink.Get(), L"sink")) ||
        FAILED(graph.builder()->AddSourceFilter(path.c_str(), L"source", source.Put())) ||
        !ConnectSource(graph, source.Get(), GetPin(filter.Get(), PINDIR_INPUT).Get()) ||
        FAILED(graph.Connect(GetPin(filter.Get(), PINDIR_OUTPUT).Get(), &sink->pin())) ||
        FAILED(graph.Run())) {
        return frames;
    }
    while (sink->pin().calls().Count("EndOfStream") == 0) Sleep(10);
    graph.Stop();
    return frames;
}

void Print(const char* direction, const std::vector<Frame>& frames,
           const std::map<uint64_t, int>& numbers) {
    for (const Frame& frame : frames) {
        const auto number = numbers.find(frame.digest);
        std::printf("%s,%d,%lld,%lld\n", direction, number == numbers.end() ? -1 : number->second,
                    static_cast<long long>(frame.start), static_cast<long long>(frame.stop));
    }
}

}  // namespace

int main(int count, char** values) {
    const double fps = count == 3 ? std::atof(values[2]) : 0.0;
    if (fps <= 0.0) {
        std::fprintf(stderr, "usage: slot_times VIDEO FPS\n");
        return 2;
    }
    const ComApartment com;
    std::wstring path;
    for (const char* c = values[1]; *c; ++c) path += static_cast<unsigned char>(*c);
    const std::vector<Frame> plain = Play(path, 0.0);
    const std::vector<Frame> regulated = Play(path, fps);
    if (plain.empty() || regulated.empty()) {
        std::fprintf(stderr, "slot_times: the video cannot be played\n");
        return 1;
    }
    std::map<uint64_t, int> numbers;
    for (size_t i = 0; i < plain.size(); ++i) {
        numbers.emplace(plain[i].digest, static_cast<int>(i) + 1);
    }
    Print("in", plain, numbers);
    Print("out", regulated, numbers);
    return 0;
}
