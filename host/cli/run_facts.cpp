// Names and units of the members.

#include "host/cli/run_facts.h"

#include <cstdlib>

#include "host/avi/frame_rate.h"
#include "host/filters/video_type.h"
#include "host/graph/type_text.h"

namespace tavo {
namespace {

JsonObject VideoFacts(const AM_MEDIA_TYPE& type) {
    JsonObject facts;
    facts.Text(L"format", SubtypeText(type.subtype));
    const BITMAPINFOHEADER* const bitmap = BitmapHeaderOf(type);
    if (bitmap == nullptr) return facts;
    facts.Number(L"width", bitmap->biWidth).Number(L"height", std::abs(double(bitmap->biHeight)));
    const REFERENCE_TIME duration = FrameDurationOf(type);
    if (duration <= 0) return facts.Null(L"fps");
    return facts.Number(L"fps", RateFromDuration(duration).Fps());
}

JsonObject SoundFacts(const SoundFormat& sound) {
    JsonObject facts;
    facts.Text(L"format", sound.isFloat ? L"float" : L"PCM").Count(L"channels", sound.channels);
    return facts.Count(L"rate", sound.rate).Count(L"bits", sound.bits);
}

void AddCount(JsonObject& facts, const wchar_t* name, const std::optional<uint64_t>& count) {
    if (count) {
        facts.Count(name, *count);
    } else {
        facts.Null(name);
    }
}

}  // namespace

void AddGraphFacts(JsonObject& facts, const VideoGraph& graph) {
    facts.Object(L"source", VideoFacts(graph.inputType));
    facts.Object(L"target", VideoFacts(graph.outputType));
    if (graph.sound.IsKnown()) {
        facts.Object(L"sound", SoundFacts(graph.sound));
    } else {
        facts.Null(L"sound");
    }
    if (graph.duration > 0) {
        facts.Number(L"sourceSeconds", static_cast<double>(graph.duration) / kUnitsPerSecond);
    } else {
        facts.Null(L"sourceSeconds");
    }
    facts.Number(L"rotation", graph.rotation);
}

void AddRunFacts(JsonObject& facts, const RunResult& result) {
    const uint64_t out = result.file.frames + result.file.repeats;
    JsonObject frames;
    if (result.input) frames.Count(L"in", result.input->frames);
    frames.Count(L"out", out);
    if (result.input) {
        frames.Count(L"dropped", result.input->dropped);
        frames.Count(L"repeated", result.input->repeated + result.file.repeats);
        frames.Count(L"withoutTime", result.input->stamps.Unknown());
    }
    facts.Object(L"frames", frames);
    JsonObject filter;
    filter.Number(L"msPerFrame", result.figures.moduleMs).Number(L"fps", result.figures.systemFps);
    filter.Number(L"fpsSet", result.figures.frameRate);
    filter.Number(L"fpsGenerated", result.figures.generateFps);
    facts.Object(L"filter", filter);
    JsonObject file;
    file.Count(L"bytes", result.file.bytes).Number(L"fps", result.file.rate.Fps());
    file.Number(L"seconds", static_cast<double>(out) / result.file.rate.Fps());
    if (result.file.sound.IsKnown()) {
        const double blocks = static_cast<double>(result.file.soundBlocks);
        file.Number(L"soundSeconds", blocks / result.file.sound.rate);
    }
    facts.Object(L"file", file);
    facts.Number(L"runSeconds", result.seconds);
}

void AddPlanFacts(JsonObject& facts, const RunPlan& plan) {
    facts.Texts(L"path", plan.path);
    AddCount(facts, L"estimatedFrames", plan.output.frames);
    AddCount(facts, L"estimatedBytes", plan.output.bytes);
}

}  // namespace tavo
