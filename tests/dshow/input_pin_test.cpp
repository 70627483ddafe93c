// CBaseInputPin: allocators, flushing, quality.
#include "tests/dshow/input_pin_fixture.h"

using namespace tavo_test;

namespace {

TEST_F(InputPinTest, Interfaces) {
    const ComPtr<IPin> pin(static_cast<IPin*>(pin_));
    const ComPtr<IMemInputPin> input = pin.As<IMemInputPin>();
    ASSERT_TRUE(input);
    EXPECT_EQ(input.As<IPin>().Get(), pin.Get());
    EXPECT_EQ(input.As<IUnknown>().Get(), pin.As<IUnknown>().Get());
    EXPECT_EQ(RefCount(input.Get()), RefCount(host_.Get()));
}

TEST_F(InputPinTest, GetAllocatorMakesOneAndKeepsIt) {
    EXPECT_EQ(pin_->GetAllocator(nullptr), E_POINTER);
    ComPtr<IMemAllocator> first, second;
    ASSERT_EQ(pin_->GetAllocator(first.Put()), S_OK);
    ASSERT_EQ(pin_->GetAllocator(second.Put()), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(pin_->m_pAllocator, first.Get());
    second.Reset();
    EXPECT_EQ(RefCount(first.Get()), 2u);
}

TEST_F(InputPinTest, NotifyAllocatorCounts) {
    ComPtr<TestAllocator> first = TestAllocator::Create();
    ComPtr<TestAllocator> second = TestAllocator::Create();
    EXPECT_EQ(pin_->NotifyAllocator(nullptr, FALSE), E_POINTER);
    EXPECT_EQ(pin_->NotifyAllocator(first.Get(), TRUE), NOERROR);
    EXPECT_TRUE(pin_->IsReadOnly());
    EXPECT_EQ(RefCount(first.Get()), 2u);
    EXPECT_EQ(pin_->NotifyAllocator(first.Get(), FALSE), NOERROR);
    EXPECT_EQ(RefCount(first.Get()), 2u);
    EXPECT_FALSE(pin_->IsReadOnly());
    EXPECT_EQ(pin_->NotifyAllocator(second.Get(), FALSE), NOERROR);
    EXPECT_EQ(RefCount(first.Get()), 1u);
    EXPECT_EQ(RefCount(second.Get()), 2u);
    ComPtr<IMemAllocator> given;
    EXPECT_EQ(pin_->GetAllocator(given.Put()), S_OK);
    EXPECT_EQ(given.Get(), second.Get());
}

TEST_F(InputPinTest, DestructorReleasesTheAllocator) {
    ComPtr<TestAllocator> allocator = TestAllocator::Create();
    ComPtr<HostFilter> host = MakeHost();
    AddPin<InputPin>(*host)->NotifyAllocator(allocator.Get(), FALSE);
    EXPECT_EQ(RefCount(allocator.Get()), 2u);
    host.Reset();
    EXPECT_EQ(RefCount(allocator.Get()), 1u);
}

TEST_F(InputPinTest, RequirementsAreNotImplemented) {
    ALLOCATOR_PROPERTIES wish = {1, 2, 3, 4};
    EXPECT_EQ(pin_->GetAllocatorRequirements(&wish), E_NOTIMPL);
    EXPECT_EQ(wish.cBuffers, 1);
    EXPECT_EQ(wish.cbPrefix, 4);
}

TEST_F(InputPinTest, DisconnectDecommitsAndReleases) {
    ASSERT_EQ(pin_->ReceiveConnection(&source_->pin(), type_.Get()), NOERROR);
    ComPtr<TestAllocator> allocator = TestAllocator::Create();
    pin_->NotifyAllocator(allocator.Get(), FALSE);
    allocator->calls().Inject("Decommit", E_ABORT, 1);
    EXPECT_EQ(pin_->Disconnect(), E_ABORT);
    EXPECT_TRUE(pin_->IsConnected());
    EXPECT_EQ(RefCount(allocator.Get()), 2u);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
    EXPECT_EQ(allocator->calls().Count("Decommit"), 2);
    EXPECT_EQ(RefCount(allocator.Get()), 1u);
}

TEST_F(InputPinTest, InactiveEndsFlushingAndErrors) {
    pin_->m_bRunTimeError = true;
    pin_->BeginFlush();
    EXPECT_EQ(pin_->Inactive(), VFW_E_NO_ALLOCATOR);
    EXPECT_FALSE(pin_->m_bRunTimeError);
    EXPECT_TRUE(pin_->IsFlushing());
    ComPtr<TestAllocator> allocator = TestAllocator::Create();
    pin_->NotifyAllocator(allocator.Get(), FALSE);
    EXPECT_EQ(pin_->Active(), NOERROR);
    EXPECT_EQ(allocator->calls().Count("Commit"), 0);  // the output side commits
    EXPECT_EQ(pin_->Inactive(), S_OK);
    EXPECT_FALSE(pin_->IsFlushing());
    EXPECT_EQ(allocator->calls().Count("Decommit"), 1);
    allocator->calls().Inject("Decommit", E_ABORT, 1);
    EXPECT_EQ(pin_->Inactive(), E_ABORT);
}

TEST_F(InputPinTest, CheckStreamingInItsOrder) {
    EXPECT_EQ(pin_->CheckStreaming(), VFW_E_WRONG_STATE);
    pin_->m_bRunTimeError = true;
    pin_->BeginFlush();
    EXPECT_EQ(pin_->CheckStreaming(), VFW_E_WRONG_STATE);
    host_->Pause();
    EXPECT_EQ(pin_->CheckStreaming(), S_FALSE);
    pin_->m_bFlushing = FALSE;
    EXPECT_EQ(pin_->CheckStreaming(), VFW_E_RUNTIME_ERROR);
    pin_->m_bRunTimeError = false;
    EXPECT_EQ(pin_->CheckStreaming(), S_OK);
}

TEST_F(InputPinTest, FlushClearsTheRunTimeError) {
    EXPECT_EQ(pin_->BeginFlush(), S_OK);
    EXPECT_EQ(pin_->m_bFlushing, TRUE);
    pin_->m_bRunTimeError = true;
    EXPECT_EQ(pin_->EndFlush(), S_OK);
    EXPECT_FALSE(pin_->IsFlushing());
    EXPECT_FALSE(pin_->m_bRunTimeError);
}

TEST_F(InputPinTest, NoticesDoNotBelongHere) {
    EXPECT_EQ(pin_->Notify(nullptr, Quality{}), E_POINTER);
    EXPECT_EQ(pin_->Notify(host_.Get(), Quality{}), NOERROR);
}

TEST_F(InputPinTest, PassNotify) {
    Quality quality = {Famine, 800, 12, 34};
    EXPECT_EQ(pin_->PassNotify(quality), VFW_E_NOT_FOUND);
    ASSERT_EQ(pin_->ReceiveConnection(&source_->pin(), type_.Get()), NOERROR);
    source_->pin().calls().Inject("Notify", S_FALSE, 1);
    EXPECT_EQ(pin_->PassNotify(quality), S_FALSE);
    EXPECT_EQ(pin_->PassNotify(quality), S_OK);
    ASSERT_EQ(source_->pin().notices().size(), 1u);
    EXPECT_EQ(source_->pin().notices()[0].sender, static_cast<IBaseFilter*>(host_.Get()));
    EXPECT_EQ(source_->pin().notices()[0].quality.Proportion, 800);
    FakeQualitySink sink;
    sink.result = E_ABORT;
    pin_->SetSink(&sink);
    EXPECT_EQ(pin_->PassNotify(quality), E_ABORT);
    EXPECT_EQ(sink.notices, 1);
    EXPECT_EQ(sink.sender, static_cast<IBaseFilter*>(host_.Get()));
    EXPECT_EQ(sink.last.TimeStamp, 34);
    EXPECT_EQ(source_->pin().notices().size(), 1u);
    EXPECT_EQ(sink.references, 0);
    EXPECT_EQ(source_->references(), 2);
}

TEST_F(InputPinTest, PassNotifyToAPeerWithoutQualityControl) {
    auto deaf = TestSource::Create({.types = {type_}, .qualityControl = false});
    ASSERT_EQ(pin_->ReceiveConnection(&deaf->pin(), type_.Get()), NOERROR);
    Quality quality = {};
    EXPECT_EQ(pin_->PassNotify(quality), VFW_E_NOT_FOUND);
    EXPECT_EQ(pin_->Disconnect(), S_OK);
}

}  // namespace
