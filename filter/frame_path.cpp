// One frame: from an input sample to an output sample.

#include "filter/video_regulator.h"

#include <algorithm>
#include <cstring>

#include "filter/vantrel_pins.h"

using tavo::FrameSpan;

namespace {

// The media type that a sample carries, freed at the end of its scope.
class SampleType {
  public:
    explicit SampleType(IMediaSample* sample) {
        if (sample->GetMediaType(&type_) != S_OK) type_ = nullptr;
    }
    ~SampleType() { DeleteMediaType(type_); }
    SampleType(const SampleType&) = delete;
    SampleType& operator=(const SampleType&) = delete;

    const AM_MEDIA_TYPE* Get() const { return type_; }

  private:
    AM_MEDIA_TYPE* type_ = nullptr;
};

HRESULT SpanOf(IMediaSample* sample, FrameSpan* span) {
    const HRESULT result = sample->GetPointer(&span->data);
    if (FAILED(result)) return result;
    const LONG size = sample->GetSize();
    if (!span->data || size < 0) return E_FAIL;
    span->size = static_cast<size_t>(size);
    return S_OK;
}

size_t CopyFrame(FrameSpan to, FrameSpan from) {
    const size_t bytes = (std::min)(to.size, from.size);
    std::memcpy(to.data, from.data, bytes);
    return bytes;
}

// Copies a flag of the input sample: S_OK sets it, S_FALSE clears it, anything else is no answer.
HRESULT CopyFlag(IMediaSample* input, IMediaSample* output,
                 HRESULT (STDMETHODCALLTYPE IMediaSample::*ask)(),
                 HRESULT (STDMETHODCALLTYPE IMediaSample::*set)(BOOL)) {
    const HRESULT answer = (input->*ask)();
    if (answer != S_OK && answer != S_FALSE) return E_UNEXPECTED;
    (output->*set)(answer == S_OK);
    return S_OK;
}

}  // namespace

HRESULT CVantrelFilter::Transform(IMediaSample* input, IMediaSample* output) {
    CheckPointer(input, E_POINTER);
    CheckPointer(output, E_POINTER);
    const DWORD began = timeGetTime();
    const HRESULT result = ProcessFrame(input, output);
    const DWORD ended = timeGetTime();
    lastTime_ = ended;
    processingTime_ += ended - began;
    return result;
}

HRESULT CVantrelFilter::ProcessFrame(IMediaSample* input, IMediaSample* output) {
    HRESULT result = FollowOutputSampleType(output);
    if (FAILED(result)) return result;
    if (!conversion_) return E_FAIL;

    FrameSpan from;
    FrameSpan to;
    result = SpanOf(input, &from);
    if (SUCCEEDED(result)) result = SpanOf(output, &to);
    if (FAILED(result)) return result;

    const bool regulated = regulator_.isRegulating && conversion_->WorkBuffer().data;
    result = regulated ? ProcessRegulatedFrame(to, from) : ScaleFrame(to, from);
    if (FAILED(result)) return result;
    output->SetActualDataLength(
        static_cast<LONG>((std::min)(to.size, conversion_->OutputFrameBytes())));
    const HRESULT stamped =
        regulated ? StampRegulatedSample(input, output) : StampPlainSample(input, output);
    return FAILED(stamped) ? stamped : result;
}

// A type on a sample counts from its frame on. Only this thread replaces the pins' types while
// frames flow, so it may read them without a lock. The pin's test has passed the type already.
HRESULT CVantrelFilter::FollowInputSampleType(IMediaSample* sample) {
    const SampleType carried(sample);
    if (!carried.Get()) return S_OK;
    HRESULT result = S_OK;
    const CMediaType type(*carried.Get(), &result);
    if (FAILED(result)) return result;
    if (type == m_pInput->CurrentMediaType()) return S_OK;
    if (CheckInputType(&type) != S_OK) return E_FAIL;
    return m_pInput->SetMediaType(&type);
}

// A sink may ask for another type through the buffers that it hands out; nobody has tested it yet.
HRESULT CVantrelFilter::FollowOutputSampleType(IMediaSample* sample) {
    const SampleType carried(sample);
    if (!carried.Get()) return S_OK;
    HRESULT result = S_OK;
    CMediaType type(*carried.Get(), &result);
    if (FAILED(result)) return result;
    if (type == m_pOutput->CurrentMediaType()) return S_OK;
    if (CheckTransform(&m_pInput->CurrentMediaType(), &type) != S_OK) return E_FAIL;
    result = SetOutputType(type);
    if (SUCCEEDED(result)) static_cast<CVantrelOutputPin*>(m_pOutput)->KeepType(type);
    return result;
}

HRESULT CVantrelFilter::ScaleFrame(FrameSpan output, FrameSpan input) {
    const HRESULT result = conversion_->Scale(output, input, scaleMethod_);
    if (SUCCEEDED(result)) ++processedFrames_;
    return result;
}

HRESULT CVantrelFilter::ProcessRegulatedFrame(FrameSpan output, FrameSpan input) {
    const FrameSpan kept = conversion_->WorkBuffer();
    if (!regulator_.bufferEmpty && output.size < conversion_->OutputPictureBytes()) return E_FAIL;

    if (regulator_.repeatFrame) {
        if (!regulator_.bufferEmpty) {
            CopyFrame(output, kept);
            return S_OK;
        }
        const HRESULT scaled = ScaleFrame(output, input);
        if (FAILED(scaled)) return scaled;
        CopyFrame(kept, output);
        regulator_.MarkFrameKept();
        return S_OK;
    }

    // The output runs one frame behind the input, so the first one delivers nothing.
    const bool hasKeptFrame = !regulator_.bufferEmpty;
    if (hasKeptFrame) CopyFrame(output, kept);
    const HRESULT scaled = ScaleFrame(kept, input);
    if (FAILED(scaled)) return scaled;
    regulator_.MarkFrameKept();
    return hasKeptFrame ? S_OK : S_FALSE;
}

HRESULT CVantrelFilter::StampPlainSample(IMediaSample* input, IMediaSample* output) {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (input->GetTime(&start, &stop) == S_OK) output->SetTime(&start, &stop);
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    if (input->GetMediaTime(&mediaStart, &mediaStop) == S_OK) {
        output->SetMediaTime(&mediaStart, &mediaStop);
    }
    HRESULT result =
        CopyFlag(input, output, &IMediaSample::IsSyncPoint, &IMediaSample::SetSyncPoint);
    if (SUCCEEDED(result)) {
        result = CopyFlag(input, output, &IMediaSample::IsPreroll, &IMediaSample::SetPreroll);
    }
    if (SUCCEEDED(result)) {
        result = CopyFlag(input, output, &IMediaSample::IsDiscontinuity,
                          &IMediaSample::SetDiscontinuity);
    }
    return result;
}

HRESULT CVantrelFilter::StampRegulatedSample(IMediaSample* input, IMediaSample* output) {
    output->SetTime(&regulator_.outputStart, &regulator_.outputStop);
    LONGLONG start = 0;
    LONGLONG stop = 0;
    if (input->GetMediaTime(&start, &stop) == S_OK) {
        start = generatedFrames_.load();
        stop = start + 1;
        output->SetMediaTime(&start, &stop);
    }
    output->SetSyncPoint(regulator_.syncPoint);
    output->SetPreroll(regulator_.preroll);
    output->SetDiscontinuity(regulator_.discontinuity);
    return S_OK;
}
