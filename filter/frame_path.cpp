// The way of a frame, from the source's sample to the sink's.
//
//   1. CTransformInputPin::Receive    the base: stopped or flushing? It reads the sample's
//                                     properties, and a type that it carries is tested by
//                                     CVantrelInputPin::CheckMediaType.
//   2. CVantrelFilter::Receive        (streaming.cpp) follows that type, and with the regulator on
//                                     settles the slots: the next hops run once for each.
//                                     SendFrame (format_change.cpp) takes an output type that
//                                     ApplySettings has posted.
//   3. CTransformFilter::Receive      the base: takes a buffer of the sink's allocator and copies
//                                     the sample's properties to it.
//   4. CVantrelFilter::Transform      follows a type that the sink put on the buffer, a new size
//                                     or the pitch of a surface. It scales or repeats, and stamps:
//                                     regulated frames get the times of their slot, others once
//                                     more the input's times and flags, which 3 has copied.
//   5. IMemInputPin::Receive          of the sink.

#include "filter/vantrel_filter.h"

#include <algorithm>

#include "filter/type_picture.h"

using tavo::FrameBranch;
using tavo::FrameSpan;
using tavo::TimeWindow;

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

// S_OK with a copy of a type that is not the present one; S_FALSE when there is none to follow.
HRESULT CopyNewType(const AM_MEDIA_TYPE* carried, const CMediaType& present, CMediaType* copy) {
    if (!carried) return S_FALSE;
    const HRESULT copied = copy->Set(*carried);
    if (FAILED(copied)) return copied;
    return *copy == present ? S_FALSE : S_OK;
}

HRESULT SpanOf(IMediaSample* sample, FrameSpan* span) {
    const HRESULT result = sample->GetPointer(&span->data);
    if (FAILED(result)) return result;
    const LONG size = sample->GetSize();
    if (!span->data || size < 0) return E_FAIL;
    span->size = static_cast<size_t>(size);
    return S_OK;
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
    statistics_.AddWork(began, ended);
    return result;
}

HRESULT CVantrelFilter::ProcessFrame(IMediaSample* input, IMediaSample* output) {
    HRESULT result = change_ ? MakeChangeWith(output) : FollowOutputSampleType(output);
    if (FAILED(result)) return result;
    if (!conversion_) return E_FAIL;

    FrameSpan from;
    FrameSpan to;
    result = SpanOf(input, &from);
    if (SUCCEEDED(result)) result = SpanOf(output, &to);
    if (FAILED(result)) return result;

    const bool regulated = regulator_.IsInSlot() && conversion_->WorkBuffer().data;
    result = regulated ? ProcessRegulatedFrame(to, from) : ScaleFrame(to, from);
    if (FAILED(result)) return result;
    output->SetActualDataLength(
        static_cast<LONG>((std::min)(to.size, conversion_->OutputFrameBytes())));
    const HRESULT stamped =
        regulated ? StampRegulatedSample(input, output) : StampPlainSample(input, output);
    return FAILED(stamped) ? stamped : result;
}

// A type on a sample counts from its frame on. The output keeps its type and size: only the
// conversion to it is built anew. Only this thread replaces the pins' types while
// frames flow, so it may read them without a lock. The pin has tested the type already.
HRESULT CVantrelFilter::FollowInputSampleType() {
    const AM_SAMPLE2_PROPERTIES& sample = *m_pInput->SampleProps();
    const bool isCarried = (sample.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0;
    CMediaType type;
    const HRESULT changed =
        CopyNewType(isCarried ? sample.pMediaType : nullptr, m_pInput->CurrentMediaType(), &type);
    if (changed != S_OK) return FAILED(changed) ? changed : S_OK;
    return m_pInput->SetMediaType(&type);
}

// A sink may ask for another type through the buffers that it hands out; nobody has tested it yet.
HRESULT CVantrelFilter::FollowOutputSampleType(IMediaSample* sample) {
    const SampleType carried(sample);
    CMediaType type;
    const HRESULT changed = CopyNewType(carried.Get(), m_pOutput->CurrentMediaType(), &type);
    if (changed != S_OK) return FAILED(changed) ? changed : S_OK;
    if (CheckTransform(&m_pInput->CurrentMediaType(), &type) != S_OK) return E_FAIL;
    const tavo::Picture picture =
        conversion_ ? ReadSurfacePicture(type, conversion_->Output()) : ReadPicture(type);
    const HRESULT result = SetOutputType(type, picture);
    if (SUCCEEDED(result)) static_cast<CVantrelOutputPin*>(m_pOutput)->KeepType(type);
    return result;
}

HRESULT CVantrelFilter::ScaleFrame(FrameSpan output, FrameSpan input) {
    if (!conversion_->Scale(output, input, scaleMethod_)) return E_FAIL;
    statistics_.CountProcessedFrame();
    return S_OK;
}

HRESULT CVantrelFilter::ProcessRegulatedFrame(FrameSpan output, FrameSpan input) {
    const FrameSpan kept = conversion_->WorkBuffer();
    const FrameBranch branch = regulator_.Branch();
    const bool sendsKept = branch == FrameBranch::Repeat || branch == FrameBranch::OneBehind;
    if (sendsKept) {
        if (output.size < conversion_->OutputPictureBytes()) return E_FAIL;
        conversion_->CopyOutput(output, kept);
    }
    if (branch == FrameBranch::Repeat) return S_OK;

    const bool scalesToOutput = branch == FrameBranch::ScaleAndKeep;
    const HRESULT scaled = ScaleFrame(scalesToOutput ? output : kept, input);
    if (FAILED(scaled)) return scaled;
    if (scalesToOutput) conversion_->CopyOutput(kept, output);
    regulator_.MarkPictureKept();
    return branch == FrameBranch::KeepOnly ? S_FALSE : S_OK;
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
    TimeWindow slot = regulator_.Slot();
    output->SetTime(&slot.start, &slot.end);
    LONGLONG start = 0;
    LONGLONG stop = 0;
    if (input->GetMediaTime(&start, &stop) == S_OK) {
        start = statistics_.GeneratedFrames();
        stop = start + 1;
        output->SetMediaTime(&start, &stop);
    }
    // Deliberate: every regulated frame is a sync point without preroll or discontinuity, whatever
    // the input says.
    output->SetSyncPoint(TRUE);
    output->SetPreroll(FALSE);
    output->SetDiscontinuity(FALSE);
    return S_OK;
}
