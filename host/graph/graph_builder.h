// Builds a graph that reads the input in a given way.

#pragma once

#include <memory>
#include <string>

#include "host/filters/avi_source_filter.h"
#include "host/graph/filter_factory.h"
#include "host/graph/input_file.h"
#include "host/graph/output_size.h"
#include "host/graph/run_options.h"
#include "host/graph/video_graph.h"

namespace tavo {

// Who reads the file.
enum class Route { Platform, OwnReader };

struct Attempt {
    std::unique_ptr<VideoGraph> graph;  // null on failure
    std::wstring error;
    // The source could not be connected with the filter.
    bool inputRefused = false;
};

// Its arguments outlive it. May throw std::bad_alloc.
class GraphBuilder {
  public:
    GraphBuilder(const RunOptions& options, const FilterFactory& factory, const InputFile& input)
        : options_(options), factory_(factory), input_(input) {}

    // OwnReader is only for an input with a movie.
    Attempt Build(Route route);

  private:
    bool Fail(HRESULT hr, const std::wstring& what);
    bool AddScalingFilter();
    HRESULT AddSource(Route route, ComPtr<IBaseFilter>& source);
    HRESULT AddPlatformSource(const wchar_t* name, ComPtr<IBaseFilter>& source);
    bool ConnectSource(Route route);
    bool SetSize();
    bool ConnectEnd();
    bool ConnectSink(IPin* output);
    void InsertCounter();
    void TakeSound(Route route);
    bool ConnectSoundSource();
    ComPtr<IPin> Input() const;
    ComPtr<IMediaSeeking> UpstreamSeeking() const;
    void FindDuration(Route route);
    bool TakeSection(Route route);

    const RunOptions& options_;
    const FilterFactory& factory_;
    const InputFile& input_;
    CAviSource* ownSource_ = nullptr;  // the graph's, of Route::OwnReader
    ComPtr<IBaseFilter> soundSource_;  // the platform's, beside that one
    Attempt attempt_;
};

}  // namespace tavo
