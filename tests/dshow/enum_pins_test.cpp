// CEnumPins: every result, versions bumped in the middle, references.
#include <vector>

#include "tests/dshow/probes.h"
#include "tests/support/nothrow_new.h"

using namespace tavo_test;

namespace {

class PinEnumerator : public DshowTest {
  protected:
    PinEnumerator() {
        for (const wchar_t* name : {L"a", L"b", L"c"}) AddPin<PlainPin>(*host_, PINDIR_INPUT, name);
        EXPECT_EQ(host_->EnumPins(pins_.Put()), S_OK);
    }
    // The indices of the pins that Next hands out; the references are given back.
    std::vector<int> Next(ULONG count, HRESULT expected) {
        std::vector<IPin*> got(count + 1, nullptr);
        ULONG fetched = 99;
        EXPECT_EQ(pins_->Next(count, got.data(), &fetched), expected);
        std::vector<int> indices;
        for (ULONG i = 0; i < fetched && i < count; ++i) {
            for (size_t n = 0; n < host_->pins.size(); ++n)
                if (host_->pins[n] == got[i]) indices.push_back(static_cast<int>(n));
            got[i]->Release();
        }
        EXPECT_EQ(indices.size(), fetched);
        return indices;
    }

    using Indices = std::vector<int>;
    ComPtr<HostFilter> host_ = MakeHost();
    ComPtr<IEnumPins> pins_;
};

TEST_F(PinEnumerator, NextWithEveryCount) {
    EXPECT_EQ(Next(0, S_OK), Indices());
    EXPECT_EQ(Next(1, S_OK), Indices({0}));
    EXPECT_EQ(Next(2, S_OK), Indices({1, 2}));
    EXPECT_EQ(Next(0, S_OK), Indices());
    EXPECT_EQ(Next(1, S_FALSE), Indices());
    EXPECT_EQ(pins_->Reset(), S_OK);
    EXPECT_EQ(Next(3, S_OK), Indices({0, 1, 2}));
    EXPECT_EQ(pins_->Reset(), S_OK);
    EXPECT_EQ(Next(2, S_OK), Indices({0, 1}));
    EXPECT_EQ(Next(2, S_FALSE), Indices({2}));
}

TEST_F(PinEnumerator, NextChecksItsPointers) {
    ULONG fetched = 7;
    IPin* pin[2] = {};
    EXPECT_EQ(pins_->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(fetched, 7u);
    EXPECT_EQ(pins_->Next(2, pin, nullptr), E_INVALIDARG);
    EXPECT_EQ(pin[0], nullptr);
    EXPECT_EQ(pins_->Next(1, pin, nullptr), S_OK);
    EXPECT_EQ(pin[0], host_->pins[0]);
    pin[0]->Release();
    EXPECT_EQ(pins_->Next(0, pin, nullptr), S_OK);
}

TEST_F(PinEnumerator, ReferencesAreTheFilters) {
    EXPECT_EQ(RefCount(host_.Get()), 2u);
    ComPtr<IPin> pin;
    ASSERT_EQ(pins_->Next(1, pin.Put(), nullptr), S_OK);
    EXPECT_EQ(RefCount(host_.Get()), 3u);
    pin.Reset();
    EXPECT_EQ(pins_->AddRef(), 2u);
    EXPECT_EQ(pins_->Release(), 1u);
    EXPECT_EQ(pins_->Release(), 0u);
    pins_.Detach();
    EXPECT_EQ(RefCount(host_.Get()), 1u);
}

TEST_F(PinEnumerator, IsNoModuleObject) {
    const LONG objects = CBaseObject::ObjectsActive();
    pins_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects);
}

TEST_F(PinEnumerator, AnswersTwoInterfaces) {
    EXPECT_TRUE(pins_.As<IUnknown>());
    EXPECT_EQ(pins_.As<IEnumPins>().Get(), pins_.Get());
    EXPECT_FALSE(pins_.As<IEnumMediaTypes>());
    EXPECT_FALSE(pins_.As<IBaseFilter>());
    void* object = &object;
    EXPECT_EQ(pins_->QueryInterface(IID_IPin, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(pins_->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(PinEnumerator, ChangedVersionStartsOverWithoutRepeating) {
    EXPECT_EQ(Next(2, S_OK), Indices({0, 1}));
    AddPin<PlainPin>(*host_, PINDIR_INPUT, L"d");
    host_->IncrementPinVersion();
    EXPECT_EQ(Next(3, S_FALSE), Indices({2, 3}));
    host_->IncrementPinVersion();
    EXPECT_EQ(Next(1, S_FALSE), Indices());
    EXPECT_EQ(pins_->Reset(), S_OK);  // empties the list
    EXPECT_EQ(Next(4, S_OK), Indices({0, 1, 2, 3}));
}

TEST_F(PinEnumerator, ResetTakesANewCount) {
    AddPin<PlainPin>(*host_, PINDIR_INPUT, L"d");
    EXPECT_EQ(Next(4, S_FALSE), Indices({0, 1, 2}));  // the count of its creation
    EXPECT_EQ(pins_->Reset(), S_OK);
    EXPECT_EQ(Next(4, S_OK), Indices({0, 1, 2, 3}));
}

TEST_F(PinEnumerator, MissingPinIsOutOfSync) {
    host_->extraPins = 1;
    pins_->Reset();
    IPin* pin[4] = {};
    ULONG fetched = 0;
    EXPECT_EQ(pins_->Next(4, pin, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    for (ULONG i = 0; i < fetched; ++i) pin[i]->Release();
    pins_.Reset();
    EXPECT_EQ(RefCount(host_.Get()), 1u);
}

TEST_F(PinEnumerator, Skip) {
    EXPECT_EQ(pins_->Skip(4), S_FALSE);
    EXPECT_EQ(Next(1, S_OK), Indices({0}));  // the position did not move
    EXPECT_EQ(pins_->Skip(1), S_OK);
    EXPECT_EQ(Next(1, S_OK), Indices({2}));
    EXPECT_EQ(pins_->Skip(0), S_OK);
    EXPECT_EQ(pins_->Skip(1), S_FALSE);
    pins_->Reset();
    EXPECT_EQ(pins_->Skip(3), S_OK);  // exactly to the end
    EXPECT_EQ(Next(1, S_FALSE), Indices());
    host_->IncrementPinVersion();
    EXPECT_EQ(pins_->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(Next(3, S_OK), Indices({0, 1, 2}));  // skipped pins are not in the list
}

TEST_F(PinEnumerator, SkipWithAHugeCount) {
    EXPECT_EQ(Next(1, S_OK), Indices({0}));
    EXPECT_EQ(pins_->Skip(0xFFFFFFFF), S_FALSE);
    EXPECT_EQ(Next(1, S_OK), Indices({1}));
}

TEST_F(PinEnumerator, CloneHasTheWholeState) {
    EXPECT_EQ(Next(1, S_OK), Indices({0}));
    ComPtr<IEnumPins> clone;
    ASSERT_EQ(pins_->Clone(clone.Put()), S_OK);
    EXPECT_EQ(RefCount(host_.Get()), 3u);
    EXPECT_EQ(Next(2, S_OK), Indices({1, 2}));
    std::swap(pins_, clone);
    EXPECT_EQ(Next(1, S_OK), Indices({1}));
    host_->IncrementPinVersion();
    EXPECT_EQ(Next(3, S_FALSE), Indices({2}));  // 0 and 1 are in its list
    EXPECT_EQ(pins_->Clone(nullptr), E_POINTER);
}

TEST_F(PinEnumerator, CloneOutOfSync) {
    host_->IncrementPinVersion();
    IEnumPins* clone = pins_.Get();
    EXPECT_EQ(pins_->Clone(&clone), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(clone, nullptr);
    EXPECT_EQ(pins_->Reset(), S_OK);
    ASSERT_EQ(pins_->Clone(&clone), S_OK);
    clone->Release();
}

TEST_F(PinEnumerator, WithoutMemory) {
    IEnumPins* clone = pins_.Get();
    for (int after = 0; after < 4; ++after) {
        FailNothrowNew fail(after);
        const HRESULT hr = pins_->Clone(&clone);
        if (fail.refused() == 0) {
            EXPECT_EQ(hr, S_OK);
            clone->Release();
            break;
        }
        EXPECT_EQ(hr, E_OUTOFMEMORY);
        EXPECT_EQ(clone, nullptr);
    }
    EXPECT_EQ(RefCount(host_.Get()), 2u);
}

}  // namespace
