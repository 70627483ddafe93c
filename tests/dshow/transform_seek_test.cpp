// Quality notices and seeking on their way upstream.
#include "tests/dshow/fakes.h"
#include "tests/dshow/transform_probe.h"
#include "tests/support/source_seeking.h"

using namespace tavo_test;

namespace {

class TransformQuality : public TransformTest {
  protected:
    const Quality quality_ = {Flood, 1500, 11, 22};
    HRESULT Notify() { return filter_->output()->Notify(sink_.Get(), quality_); }
};

TEST_F(TransformQuality, PassedOnToThePeer) {
    ConnectBoth();
    source_->pin().calls().Inject("Notify", S_FALSE, 1);
    EXPECT_EQ(Notify(), S_FALSE);
    EXPECT_EQ(Notify(), S_OK);
    ASSERT_EQ(source_->pin().notices().size(), 1u);
    EXPECT_EQ(source_->pin().notices()[0].sender, static_cast<IBaseFilter*>(filter_.Get()));
    EXPECT_EQ(source_->pin().notices()[0].quality.Type, Flood);
    EXPECT_EQ(source_->pin().notices()[0].quality.Late, 11);
    ASSERT_EQ(filter_->qualities.size(), 2u);
    EXPECT_EQ(filter_->qualities[0].TimeStamp, 22);
}

TEST_F(TransformQuality, TakenByTheFilter) {
    ConnectBoth();
    for (const HRESULT answer : {S_OK, E_FAIL, E_NOTIMPL, HRESULT(9)}) {
        filter_->log.Inject("AlterQuality", answer);
        EXPECT_EQ(Notify(), answer);
    }
    EXPECT_EQ(source_->pin().notices().size(), 0u);
}

TEST_F(TransformQuality, OnlyASinkOnTheInputPinCounts) {
    ConnectBoth();
    FakeQualitySink ignored, asked;
    EXPECT_EQ(filter_->output()->SetSink(&ignored), NOERROR);
    EXPECT_EQ(Notify(), S_OK);
    EXPECT_EQ(ignored.notices, 0);
    EXPECT_EQ(source_->pin().notices().size(), 1u);
    EXPECT_EQ(filter_->input()->SetSink(&asked), NOERROR);
    EXPECT_EQ(Notify(), S_OK);
    EXPECT_EQ(asked.notices, 1);
    EXPECT_EQ(asked.sender, static_cast<IBaseFilter*>(filter_.Get()));
    EXPECT_EQ(source_->pin().notices().size(), 1u);
    EXPECT_EQ(asked.references, 0);
}

TEST_F(TransformQuality, NobodyUpstream) {
    EXPECT_EQ(filter_->output()->Notify(filter_.Get(), quality_), VFW_E_NOT_FOUND);
    MakeSource({.qualityControl = false});
    ConnectBoth();
    EXPECT_EQ(Notify(), VFW_E_NOT_FOUND);
    EXPECT_EQ(filter_->input()->Notify(nullptr, quality_), E_POINTER);
    EXPECT_EQ(filter_->input()->Notify(sink_.Get(), quality_), NOERROR);
}

class TransformSeeking : public TransformTest {
  protected:
    ComPtr<IMediaSeeking> Seeking() {
        return ComPtr<IPin>(static_cast<IPin*>(filter_->output())).As<IMediaSeeking>();
    }
};

TEST_F(TransformSeeking, PassesUpstream) {
    MakeSource({.seeking = true});
    ConnectBoth();
    ComPtr<IMediaSeeking> seeking = Seeking();
    ASSERT_TRUE(seeking);
    LONGLONG duration = 0;
    EXPECT_EQ(seeking->GetDuration(&duration), S_OK);
    EXPECT_EQ(duration, kSourceDuration);
    LONGLONG current = 700, stop = 900;
    EXPECT_EQ(seeking->SetPositions(&current, AM_SEEKING_AbsolutePositioning, &stop,
                                    AM_SEEKING_AbsolutePositioning),
              S_OK);
    EXPECT_EQ(source_->pin().calls().Count("SetPositions"), 1);
    ComPtr<IMediaSeeking> upstream =
        ComPtr<IPin>(static_cast<IPin*>(&source_->pin())).As<IMediaSeeking>();
    LONGLONG position = 0;
    EXPECT_EQ(upstream->GetStopPosition(&position), S_OK);
    EXPECT_EQ(position, 900);
}

TEST_F(TransformSeeking, BelongsToThePin) {
    MakeSource({.seeking = true});
    ConnectBoth();
    EXPECT_EQ(filter_->output()->m_pPosition, nullptr);
    const ULONG before = RefCount(filter_.Get());
    ComPtr<IMediaSeeking> seeking = Seeking();
    ASSERT_TRUE(seeking);
    EXPECT_NE(filter_->output()->m_pPosition, nullptr);
    EXPECT_EQ(RefCount(filter_.Get()), before + 1);
    const ComPtr<IPin> pin(static_cast<IPin*>(filter_->output()));
    EXPECT_EQ(seeking.As<IPin>().Get(), pin.Get());
    EXPECT_EQ(seeking.As<IUnknown>().Get(), pin.As<IUnknown>().Get());
    IUnknown* made = filter_->output()->m_pPosition;
    const ComPtr<IMediaPosition> position = pin.As<IMediaPosition>(IID_IMediaPosition);
    EXPECT_TRUE(position);
    EXPECT_EQ(filter_->output()->m_pPosition, made);
    const ComPtr<IMediaSeeking> again = Seeking();
    EXPECT_EQ(again.Get(), seeking.Get());
}

TEST_F(TransformSeeking, MakingItAddsNoReference) {
    const ULONG before = RefCount(filter_.Get());
    EXPECT_TRUE(Seeking());
    EXPECT_EQ(RefCount(filter_.Get()), before);
}

TEST_F(TransformSeeking, NothingUpstream) {
    ComPtr<IMediaSeeking> seeking = Seeking();
    ASSERT_TRUE(seeking);
    LONGLONG duration = 0;
    EXPECT_TRUE(FAILED(seeking->GetDuration(&duration)));
    ASSERT_EQ(ConnectInput(), S_OK);  // a source that cannot seek
    EXPECT_TRUE(FAILED(seeking->GetDuration(&duration)));
}

TEST_F(TransformSeeking, OnlyTheOutputPinHasIt) {
    ConnectBoth();
    const ComPtr<IPin> input(static_cast<IPin*>(filter_->input()));
    EXPECT_FALSE(input.As<IMediaSeeking>());
    EXPECT_FALSE(input.As<IMediaPosition>(IID_IMediaPosition));
    EXPECT_EQ(filter_->output()->m_pPosition, nullptr);
    EXPECT_EQ(filter_->output()->NonDelegatingQueryInterface(IID_IMediaSeeking, nullptr),
              E_POINTER);
    EXPECT_FALSE(ComPtr<IPin>(static_cast<IPin*>(filter_->output())).As<IMemInputPin>());
}

TEST_F(TransformSeeking, CreatePosPassThru) {
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, filter_->input(), nullptr), E_POINTER);
    IUnknown* object = nullptr;
    ASSERT_EQ(CreatePosPassThru(nullptr, FALSE, filter_->input(), &object), S_OK);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(RefCount(object), 1u);
    object->Release();
}

// On purpose without COM on any thread: the object cannot be made.
TEST(TransformSeekingWithoutCom, FailureLeavesNothing) {
    IUnknown* object = reinterpret_cast<IUnknown*>(1);
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, nullptr, &object), CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
    const ComPtr<ProbeTransform> filter = MakeTransform();
    void* seeking = &seeking;
    EXPECT_EQ(filter->output()->QueryInterface(IID_IMediaSeeking, &seeking), CO_E_NOTINITIALIZED);
    EXPECT_EQ(seeking, nullptr);
    EXPECT_EQ(filter->output()->m_pPosition, nullptr);
    EXPECT_EQ(RefCount(filter.Get()), 1u);
}

}  // namespace
