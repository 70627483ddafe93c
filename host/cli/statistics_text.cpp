// Formats the statistics.

#include "host/cli/statistics_text.h"

#include "host/graph/number_text.h"
#include "host/graph/type_text.h"

namespace tavo {
namespace {

std::wstring Count(uint64_t count) { return std::to_wstring(count); }

std::wstring FrameLine(const RunResult& result) {
    std::wstring line = L"Frames     ";
    if (result.input) line += Count(result.input->frames) + L" in, ";
    line += Count(result.file.frames + result.file.repeats) + L" out";
    if (result.input) {
        line += L", " + Count(result.input->dropped) + L" dropped, " +
                Count(result.input->repeated + result.file.repeats) + L" repeated";
    }
    return line + L"\n";
}

std::wstring FilterLines(const FilterFigures& figures) {
    const std::wstring text = L"Filter     " + NumberText(figures.moduleMs) + L" ms per frame, " +
                              NumberText(figures.systemFps) + L" fps\n";
    if (figures.frameRate <= 0.0) return text + L"Regulator  off\n";
    return text + L"Regulator  " + NumberText(figures.frameRate) + L" fps set, " +
           NumberText(figures.generateFps) + L" fps generated\n";
}

constexpr wchar_t kNote[] = L"Note       ";
constexpr wchar_t kMore[] = L"\n           ";

std::wstring SizeText(PictureSize size) {
    return std::to_wstring(size.width) + L" x " + std::to_wstring(size.height);
}

std::wstring Distances(const TimeStamps& stamps) {
    return NumberText(stamps.ShortestMs()) + L" to " + NumberText(stamps.LongestMs()) +
           L" ms apart, " + NumberText(stamps.MeanMs()) + L" on average";
}

std::wstring TimingNotes(const RunResult& result) {
    const TimeStamps& stamps = result.input ? result.input->stamps : result.file.stamps;
    const std::wstring rate = NumberText(result.file.rate.Fps()) + L" fps";
    std::wstring text;
    if (result.file.repeats > 0 && stamps.HasIntervals()) {
        text += kNote + (L"the input's frames are " + Distances(stamps)) + L":" + kMore +
                L"the file has " + rate + L" and shows them for as long as they last;" + kMore +
                L"--as-is writes frame for frame\n";
    } else if (stamps.IsIrregular() && result.figures.frameRate <= 0.0) {
        text += kNote + (L"the input's frames are " + Distances(stamps)) + L":" + kMore +
                L"the file has one after the other at " + rate + L"\n";
    }
    if (stamps.Unknown() > 0) {
        text += kNote + Count(stamps.Unknown()) + L" frames had no time stamp\n";
    }
    return text;
}

}  // namespace

std::wstring TypeLines(const VideoGraph& graph) {
    std::wstring text = L"Input      " + DescribeType(graph.inputType) + L"\nOutput     " +
                        DescribeType(graph.outputType) + L"\n";
    if (graph.sound.IsKnown()) text += L"Sound      " + SoundText(graph.sound) + L"\n";
    return text;
}

std::wstring PictureNotes(const VideoGraph& graph) {
    std::wstring text;
    if (graph.size != graph.wanted) {
        text += kNote + SizeText(graph.size) + L" and not " + SizeText(graph.wanted) +
                L": the format has no such size\n";
    }
    if (graph.displayAspect.IsKnown()) {
        text += kNote +
                (L"the pixels are not square: the file tells players to show " +
                 std::to_wstring(graph.displayAspect.x)) +
                L":" + std::to_wstring(graph.displayAspect.y) + L"\n";
    }
    if (graph.rotation != 0) {
        text += kNote +
                (L"the input is marked to be turned by " + std::to_wstring(graph.rotation)) +
                L" degrees clockwise; an AVI file has no such mark\n";
    }
    return text;
}

std::wstring FiguresText(const VideoGraph& graph, const FilterFigures& figures) {
    return TypeLines(graph) + FilterLines(figures);
}

std::wstring StatisticsText(const VideoGraph& graph, const RunResult& result) {
    const CAviSink::Result& file = result.file;
    const double slots = static_cast<double>(file.frames + file.repeats);
    std::wstring text = TypeLines(graph) + FrameLine(result) + FilterLines(result.figures);
    text += L"File       " + BytesText(file.bytes) + L", " + ClockText(slots / file.rate.Fps()) +
            L" at " + NumberText(file.rate.Fps()) + L" fps";
    if (file.sound.IsKnown()) {
        const double blocks = static_cast<double>(file.soundBlocks);
        text += L", sound " + ClockText(blocks / file.sound.rate);
    }
    text += L"\n";
    text += L"Time       " + NumberText(result.seconds) + L" s";
    if (result.seconds > 0)
        text += L", " + NumberText(static_cast<double>(file.frames) / result.seconds) + L" fps";
    text += L"\n";
    return text + TimingNotes(result) + PictureNotes(graph);
}

}  // namespace tavo
