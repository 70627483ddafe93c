// The lines that a run prints at its end.

#include "host/graph_run.h"
#include "host/progress_text.h"
#include "host/video_type.h"

namespace tavo {
namespace {

std::wstring Count(uint64_t count) { return std::to_wstring(count); }

std::wstring FrameLine(const RunResult& result) {
    std::wstring line = L"Frames     ";
    if (result.input) line += Count(result.input->frames) + L" in, ";
    line += Count(result.file.frames) + L" out";
    if (result.input) {
        line += L", " + Count(result.input->dropped) + L" dropped, " +
                Count(result.input->repeated) + L" repeated";
    }
    return line + L"\n";
}

std::wstring TypeLines(const VideoGraph& graph) {
    return L"Input      " + DescribeType(graph.inputType) + L"\nOutput     " +
           DescribeType(graph.outputType) + L"\n";
}

std::wstring FilterLines(const FilterFigures& figures) {
    const std::wstring text = L"Filter     " + NumberText(figures.moduleMs) + L" ms per frame, " +
                              NumberText(figures.systemFps) + L" fps\n";
    if (figures.frameRate <= 0.0) return text + L"Regulator  off\n";
    return text + L"Regulator  " + NumberText(figures.frameRate) + L" fps set, " +
           NumberText(figures.generateFps) + L" fps generated\n";
}

std::wstring StampLine(const RunResult& result) {
    const TimeStamps& stamps = result.input ? result.input->stamps : result.file.stamps;
    std::wstring text;
    if (stamps.IsIrregular()) {
        text += L"Note       the input's time stamps are irregular: " +
                NumberText(stamps.ShortestMs()) + L" to " + NumberText(stamps.LongestMs()) +
                L" ms apart, " + NumberText(stamps.MeanMs()) + L" on average\n";
        if (result.figures.frameRate <= 0.0) {
            text += L"           the file plays all frames at " +
                    NumberText(result.file.rate.Fps()) + L" fps; --fps keeps their timing\n";
        }
    }
    if (stamps.Unknown() > 0) {
        text += L"Note       " + Count(stamps.Unknown()) + L" frames had no time stamp\n";
    }
    return text;
}

}  // namespace

FilterFigures ReadFigures(IVantrelSettings& settings) {
    FilterFigures figures;
    settings.GetModuleTime(&figures.moduleMs);
    settings.GetSystemFps(&figures.systemFps);
    settings.GetGenerateFps(&figures.generateFps);
    settings.GetFrameRate(&figures.frameRate);
    return figures;
}

std::wstring FiguresText(const VideoGraph& graph, const FilterFigures& figures) {
    return TypeLines(graph) + FilterLines(figures);
}

std::wstring StatisticsText(const VideoGraph& graph, const RunResult& result) {
    const CAviSink::Result& file = result.file;
    const double frames = static_cast<double>(file.frames);
    std::wstring text = TypeLines(graph) + FrameLine(result) + FilterLines(result.figures);
    text += L"File       " + BytesText(file.bytes) + L", " + ClockText(frames / file.rate.Fps()) +
            L" at " + NumberText(file.rate.Fps()) + L" fps\n";
    text += L"Time       " + NumberText(result.seconds) + L" s";
    if (result.seconds > 0) text += L", " + NumberText(frames / result.seconds) + L" fps";
    text += L"\n";
    return text + StampLine(result);
}

}  // namespace tavo
