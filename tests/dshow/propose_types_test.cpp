// Which types the leading pin proposes, in which order, and which failure is told in the end.
#include <vector>

#include "tests/dshow/connect_fixture.h"
#include "tests/dshow/fakes.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

class Proposals : public Connect {
  protected:
    // The widths of all types that reached the receiving pin, in order.
    std::vector<LONG> Widths() const { return widths_; }
    void Refuse(LONG onlyAccepted = 0) {
        sink_->pin().config.accept = [this, onlyAccepted](const AM_MEDIA_TYPE& type) {
            widths_.push_back(MediaType(type).Bitmap()->biWidth);
            return widths_.back() == onlyAccepted;
        };
    }
    using List = std::vector<LONG>;
    List widths_;
};

TEST_F(Proposals, PeersTypesComeFirst) {
    sink_->pin().offered = {MakeVideoType({.width = 64}), MakeVideoType({.width = 72})};
    pin_->types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32})};
    Refuse();
    EXPECT_EQ(ConnectTo(nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(Widths(), List({64, 72, 16, 32}));
    ExpectUnconnected();
    // One BreakConnect for each attempt, and one at the end.
    EXPECT_EQ(pin_->log.Count("CheckConnect"), 4);
    EXPECT_EQ(pin_->log.Count("BreakConnect+"), 4);
    EXPECT_EQ(pin_->log.Count("BreakConnect-"), 1);
}

TEST_F(Proposals, OwnTypesFirstOnRequest) {
    sink_->pin().offered = {MakeVideoType({.width = 64})};
    pin_->types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32})};
    pin_->m_bTryMyTypesFirst = true;
    Refuse();
    EXPECT_EQ(ConnectTo(nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(Widths(), List({16, 32, 64}));
}

TEST_F(Proposals, FirstSuccessWins) {
    sink_->pin().offered = {MakeVideoType({.width = 64})};
    pin_->types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32}),
                   MakeVideoType({.width = 48})};
    Refuse(32);
    EXPECT_EQ(ConnectTo(nullptr), NOERROR);
    EXPECT_EQ(Widths(), List({64, 16, 32}));
    EXPECT_EQ(pin_->m_mt.Format() ? MediaType(pin_->m_mt).Bitmap()->biWidth : 0, 32);
}

TEST_F(Proposals, PartialTypeFilters) {
    pin_->types = {MakeVideoType({.width = 16}),
                   MakeVideoType({.subtype = MEDIASUBTYPE_YUY2, .width = 32}),
                   MakeVideoType({.majortype = MEDIATYPE_Audio, .width = 48}),
                   MakeVideoType({.formattype = FORMAT_VideoInfo2, .width = 64})};
    Refuse();
    EXPECT_EQ(ConnectTo(MakePartialType(MEDIATYPE_Video).Get()), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(Widths(), List({16, 32, 64}));
    EXPECT_EQ(pin_->log.Count("CheckMediaType"), 3);
    widths_.clear();
    ConnectTo(MakePartialType(MEDIATYPE_Video, MEDIASUBTYPE_YUY2).Get());
    EXPECT_EQ(Widths(), List({32}));
    widths_.clear();
    ConnectTo(MakePartialType(GUID_NULL, MEDIASUBTYPE_RGB24).Get());
    EXPECT_EQ(Widths(), List({16, 48, 64}));
    widths_.clear();
    ConnectTo(MakePartialType(GUID_NULL, GUID_NULL, FORMAT_VideoInfo2).Get());
    EXPECT_EQ(Widths(), List());  // the block must be equal too
}

TEST_F(Proposals, NothingOffered) {
    EXPECT_EQ(ConnectTo(nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(log_.Text(), "sink.EnumMediaTypes GetMediaType(0) BreakConnect-");
}

TEST_F(Proposals, TheSecondListUsuallyDecidesTheCode) {
    const MediaType peers = MakeVideoType({.width = 64});
    const MediaType own = MakeVideoType({.width = 16});
    const auto failing = [](HRESULT forPeers, HRESULT forOwn) {
        return [=](const CMediaType& type) {
            return MediaType(type).Bitmap()->biWidth == 64 ? forPeers : forOwn;
        };
    };
    sink_->pin().offered = {peers};
    pin_->types = {own};
    const struct {
        HRESULT peers, own, expected;
    } rows[] = {
        {E_OUTOFMEMORY, E_ABORT, E_ABORT},
        {E_OUTOFMEMORY, E_FAIL, VFW_E_NO_ACCEPTABLE_TYPES},
        {E_FAIL, E_ABORT, E_ABORT},
        {E_FAIL, S_FALSE, VFW_E_NO_ACCEPTABLE_TYPES},
    };
    for (const auto& row : rows) {
        pin_->check = failing(row.peers, row.own);
        EXPECT_EQ(ConnectTo(nullptr), row.expected) << std::hex << row.peers << ' ' << row.own;
        ExpectUnconnected();
    }
    pin_->types.clear();
    EXPECT_EQ(ConnectTo(nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    // A list that cannot be had is passed over.
    pin_->types = {own};
    pin_->m_bTryMyTypesFirst = true;
    pin_->check = failing(E_FAIL, E_ABORT);
    sink_->pin().calls().Inject("EnumMediaTypes", E_NOTIMPL);
    EXPECT_EQ(ConnectTo(nullptr), E_ABORT);
    pin_->m_bTryMyTypesFirst = false;
    EXPECT_EQ(ConnectTo(nullptr), E_ABORT);
}

TEST_F(Proposals, FirstTellingFailureOfAListIsKept) {
    pin_->types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32}),
                   MakeVideoType({.width = 48})};
    pin_->check = [](const CMediaType& type) {
        const LONG width = MediaType(type).Bitmap()->biWidth;
        return width == 16 ? E_FAIL : width == 32 ? E_ABORT : E_OUTOFMEMORY;
    };
    EXPECT_EQ(ConnectTo(nullptr), E_ABORT);
    EXPECT_EQ(pin_->log.Count("CheckMediaType"), 3);
}

// A list of two types whose methods can be made to fail.
class FakeTypes final : public StackObject<IEnumMediaTypes> {
  public:
    CallLog log;
    std::vector<MediaType> types;
    size_t position = 0;

    STDMETHODIMP Next(ULONG, AM_MEDIA_TYPE** out, ULONG* fetched) override {
        if (const auto injected = log.Enter("Next")) return *injected;
        if (position >= types.size()) return S_FALSE;
        *out = CreateMediaType(types[position++].Get());
        if (fetched) *fetched = 1;
        return S_OK;
    }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Reset() override {
        position = 0;
        return log.Enter("Reset").value_or(S_OK);
    }
    STDMETHODIMP Clone(IEnumMediaTypes**) override { return E_NOTIMPL; }

  private:
    void* Find(REFIID) override { return nullptr; }
};

TEST_F(Proposals, PlainRefusalOfALaterListIsNotTold) {
    FakeTypes list;
    list.log.Inject("Reset", E_FAIL);
    sink_->pin().offered = {MakeVideoType({.width = 64})};
    pin_->check = [](const CMediaType&) { return E_ABORT; };
    pin_->ownList = &list;
    EXPECT_EQ(ConnectTo(nullptr), E_ABORT);
    EXPECT_EQ(list.log.Count("Reset"), 1);
    EXPECT_EQ(list.references, 0);
    list.log.Inject("Reset", E_UNEXPECTED);
    EXPECT_EQ(ConnectTo(nullptr), E_UNEXPECTED);
}

TEST_F(Proposals, TryMediaTypes) {
    const long blocks = LiveTaskBlocks();
    FakeTypes list;
    list.types = {MakeVideoType({.width = 16}), MakeVideoType({.width = 32})};
    const long own = LiveTaskBlocks() - blocks;
    Refuse();
    const auto attempt = [&] {
        CAutoLock held(&host_->lock);
        return pin_->TryMediaTypes(&sink_->pin(), nullptr, &list);
    };
    EXPECT_EQ(attempt(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(Widths(), List({16, 32}));
    list.log.Inject("Reset", E_ABORT);
    EXPECT_EQ(attempt(), E_ABORT);
    EXPECT_EQ(Widths(), List({16, 32}));
    list.log.ClearInjections();
    list.log.Inject("Next", E_OUTOFMEMORY, -1, 1);  // in error after the first
    EXPECT_EQ(attempt(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(Widths(), List({16, 32, 16}));
    list.log.Inject("Next", E_OUTOFMEMORY, -1, 1);
    sink_->pin().calls().Inject("ReceiveConnection", E_ABORT);
    EXPECT_EQ(attempt(), E_ABORT);
    EXPECT_EQ(list.references, 0);
    pin_->m_mt.ResetFormatBuffer();
    EXPECT_EQ(LiveTaskBlocks(), blocks + own);  // every record was deleted
}

}  // namespace
