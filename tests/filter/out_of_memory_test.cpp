// The filter linked into this program, where its own allocations can be made to fail one by one.
#include "filter/vantrel_filter.h"

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

class OutOfMemoryTest : public FilterTest {
  protected:
    void TearDown() override {
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        FilterTest::TearDown();
    }

    // Null without memory.
    static ComPtr<IBaseFilter> Create(HRESULT* result) {
        CUnknown* const made = CVantrelFilter::CreateInstance(nullptr, result);
        if (!made) return nullptr;
        made->NonDelegatingAddRef();
        return ComPtr<IBaseFilter>::Adopt(
            static_cast<IBaseFilter*>(static_cast<CVantrelFilter*>(made)));
    }

    // Calls step(rig) with ever more allocations allowed, until none is refused any more; each time
    // the rig must work afterwards.
    template <typename Prepare, typename Step>
    void WithEveryRefusal(Prepare prepare, Step step) {
        bool refused = true;
        int count = 0;
        for (; refused; ++count) {
            SCOPED_TRACE(count);
            ASSERT_LT(count, 100);
            HRESULT created = S_OK;
            FilterRig rig;
            rig.Use(Create(&created));
            prepare(rig);
            {
                const FailNothrowNew fail(count);
                step(rig, fail);
                refused = fail.refused() > 0;
            }
            rig.Stop();
            rig.DisconnectOutput();
            rig.DisconnectInput();
            rig.settings->SetOutputSize(40, 36);
            ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            EXPECT_EQ(rig.Deliver(frame_), S_OK);
        }
        EXPECT_GT(count, 1) << "nothing was allocated: nothing was tested";
    }

    const std::vector<BYTE> frame_ = RandomFrame(Format("YV12"), 64, 48);
};

TEST_F(OutOfMemoryTest, CreationGivesNoObject) {
    bool refused = true;
    for (int after = 0; refused; ++after) {
        ASSERT_LT(after, 20);
        HRESULT result = S_OK;
        const FailNothrowNew fail(after);
        const ComPtr<IBaseFilter> filter = Create(&result);
        refused = fail.refused() > 0;
        EXPECT_EQ(result, refused ? E_OUTOFMEMORY : S_OK);
        if (after == 0) {
            EXPECT_FALSE(filter);
        }
    }
}

TEST_F(OutOfMemoryTest, NoPinWithoutTheOther) {
    bool refused = true;
    int count = 0;
    for (; refused; ++count) {
        ASSERT_LT(count, 20);
        HRESULT result = S_OK;
        const ComPtr<IBaseFilter> filter = Create(&result);
        auto* const inside = static_cast<CVantrelFilter*>(filter.Get());
        {
            const FailNothrowNew fail(count);
            CBasePin* const pin = inside->GetPin(0);
            refused = fail.refused() > 0;
            EXPECT_EQ(pin == nullptr, refused);
        }
        EXPECT_NE(inside->GetPin(1), nullptr) << "with memory they can be made";
    }
    EXPECT_GT(count, 2);
}

TEST_F(OutOfMemoryTest, Connecting) {
    WithEveryRefusal([](FilterRig& rig) { rig.settings->SetOutputSize(40, 36); },
                     [](FilterRig& rig, const FailNothrowNew& fail) {
                         const HRESULT result = rig.Connect(TypeOf(Format("YV12"), 64, 48));
                         EXPECT_EQ(FAILED(result), fail.refused() > 0) << std::hex << result;
                     });
}

TEST_F(OutOfMemoryTest, SettlingAnOutputTypeWithoutASink) {
    WithEveryRefusal(
        [](FilterRig& rig) { ASSERT_EQ(rig.ConnectInput(TypeOf(Format("YV12"), 64, 48)), S_OK); },
        [](FilterRig& rig, const FailNothrowNew& fail) {
            const int result = rig.settings->ApplySettings();
            EXPECT_EQ(result == 1, fail.refused() == 0) << result;
        });
}

TEST_F(OutOfMemoryTest, FollowingATypeOnASample) {
    WithEveryRefusal(
        [](FilterRig& rig) {
            rig.settings->SetOutputSize(40, 36);
            ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
        },
        [](FilterRig& rig, const FailNothrowNew& fail) {
            const SampleSpec spec = {.type = TypeOf(Format("YV12"), 100, 80),
                                     .freestanding = SampleConfig{.size = 100 * 80 * 3 / 2}};
            const HRESULT result = rig.Deliver(spec);
            EXPECT_EQ(SUCCEEDED(result), fail.refused() == 0) << std::hex << result;
            EXPECT_EQ(rig.samples().size(), SUCCEEDED(result) ? 1u : 0u);
        });
}

TEST_F(OutOfMemoryTest, ATypeThatCouldNotBeFollowedLeavesTheOldOneAndIsFollowedLater) {
    const PixelFormat& format = Format("YV12");
    const std::vector<BYTE> larger = RandomFrame(format, 100, 80);
    const SampleSpec change = {.bytes = larger,
                               .type = TypeOf(format, 100, 80),
                               .freestanding = SampleConfig{.size = 100 * 80 * 3 / 2}};
    bool refused = true;
    int count = 0;
    for (; refused; ++count) {
        SCOPED_TRACE(count);
        ASSERT_LT(count, 100);
        HRESULT created = S_OK;
        FilterRig rig;
        rig.Use(Create(&created));
        rig.settings->SetOutputSize(40, 36);
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        {
            const FailNothrowNew fail(count);
            rig.Deliver(change);
            refused = fail.refused() > 0;
        }
        rig.sink->pin().ClearSamples();
        if (refused) {
            ASSERT_EQ(rig.Deliver(frame_), S_OK);
            EXPECT_TRUE(Matches(NearestPlanar(format, frame_, {64, 48}, {40, 36}),
                                rig.samples().at(0).bytes))
                << "the old type does not go on";
            rig.sink->pin().ClearSamples();
        }
        ASSERT_EQ(rig.Deliver(change), S_OK);
        EXPECT_TRUE(
            Matches(NearestPlanar(format, larger, {100, 80}, {40, 36}), rig.samples().at(0).bytes));
    }
    EXPECT_GT(count, 1) << "nothing was allocated: nothing was tested";
}

TEST_F(OutOfMemoryTest, ABuffersTypeThatCouldNotBeFollowedLeavesTheOldOne) {
    const PixelFormat& format = Format("YV12");
    bool refused = true;
    int count = 0;
    for (; refused; ++count) {
        SCOPED_TRACE(count);
        ASSERT_LT(count, 100);
        HRESULT created = S_OK;
        FilterRig rig({.allocator = SinkAllocator::kOwn});
        rig.Use(Create(&created));
        rig.settings->SetOutputSize(40, 36);
        rig.settings->SetScaleMethod(VantrelMethodNearest);
        ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
        ASSERT_EQ(rig.Start(), S_OK);
        rig.sink->pin().ownAllocator()->AttachTypeOnce(*TypeOf(format, 32, 24));
        HRESULT result = S_OK;
        {
            const FailNothrowNew fail(count);
            result = rig.Deliver(frame_);
            refused = fail.refused() > 0;
        }
        EXPECT_EQ(SUCCEEDED(result), !refused);
        rig.sink->pin().ClearSamples();
        const Size size = refused ? Size{40, 36} : Size{32, 24};
        ASSERT_EQ(rig.Deliver(frame_), S_OK);
        EXPECT_TRUE(
            Matches(NearestPlanar(format, frame_, {64, 48}, size), rig.samples().at(0).bytes));
    }
    EXPECT_GT(count, 1) << "nothing was allocated: nothing was tested";
}

// No frame is lost: it is of the old type or of the new one, which comes when there is memory.
TEST_F(OutOfMemoryTest, AnAppliedTypeThatCouldNotBeMadeLeavesTheOldOne) {
    const PixelFormat& format = Format("YV12");
    for (const bool isLarger : {false, true}) {
        const Size to = isLarger ? Size{72, 52} : Size{32, 24};
        bool refused = true;
        int count = 0;
        for (; refused; ++count) {
            SCOPED_TRACE(count);
            ASSERT_LT(count, 100);
            HRESULT created = S_OK;
            FilterRig rig({.allocator = SinkAllocator::kOwn, .typeChangeWhileConnected = true});
            rig.Use(Create(&created));
            rig.settings->SetOutputSize(40, 36);
            rig.settings->SetScaleMethod(VantrelMethodNearest);
            ASSERT_EQ(rig.Connect(TypeOf(format, 64, 48)), S_OK);
            ASSERT_EQ(rig.Start(), S_OK);
            rig.settings->SetOutputSize(to.width, to.height);
            ASSERT_EQ(rig.settings->ApplySettings(), 1);
            {
                const FailNothrowNew fail(count);
                EXPECT_EQ(rig.Deliver(frame_), S_OK);
                refused = fail.refused() > 0;
            }
            const Size size = refused ? Size{40, 36} : to;
            EXPECT_EQ(rig.OutputSize(), std::pair(size.width, size.height));
            ASSERT_EQ(rig.Deliver(frame_), S_OK);
            ASSERT_EQ(rig.samples().size(), 2u);
            for (const ReceivedSample& sample : rig.samples()) {
                EXPECT_TRUE(Matches(NearestPlanar(format, frame_, {64, 48}, size), sample.bytes));
            }
        }
        EXPECT_GT(count, 1) << "nothing was allocated: nothing was tested";
    }
}

TEST_F(OutOfMemoryTest, RegulatingWithoutAClock) {
    WithEveryRefusal(
        [](FilterRig& rig) {
            rig.settings->SetOutputSize(40, 36);
            rig.settings->SetFrameRate(25.0);
            ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
        },
        [this](FilterRig& rig, const FailNothrowNew&) {
            rig.Start();
            const HRESULT result = rig.Deliver(SampleSpec{.bytes = frame_});
            EXPECT_TRUE(SUCCEEDED(result)) << std::hex << result;
            rig.settings->SetFrameRate(0.0);
        });
}

}  // namespace
