// CEnumMediaTypes: every result, versions bumped in the middle, references, memory.
#include <vector>

#include "tests/dshow/probes.h"
#include "tests/support/nothrow_new.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

class TypeEnumerator : public DshowTest {
  protected:
    TypeEnumerator() {
        pin_ = AddPin<PlainPin>(*host_, PINDIR_OUTPUT, L"a");
        for (LONG width : {16, 32, 48}) pin_->types.push_back(MakeVideoType({.width = width}));
        EXPECT_EQ(pin_->EnumMediaTypes(types_.Put()), S_OK);
        blocks_ = LiveTaskBlocks();
    }
    void TearDown() override {
        types_.Reset();
        EXPECT_EQ(LiveTaskBlocks(), blocks_);
        EXPECT_EQ(RefCount(host_.Get()), 1u);
    }
    // The widths of the types that Next hands out, all of them deleted.
    std::vector<int> Next(ULONG count, HRESULT expected) {
        std::vector<AM_MEDIA_TYPE*> got(count + 1, nullptr);
        ULONG fetched = 99;
        EXPECT_EQ(types_->Next(count, got.data(), &fetched), expected);
        std::vector<int> widths;
        for (ULONG i = 0; i < fetched && i < count; ++i) {
            widths.push_back(MediaType(*got[i]).Bitmap()->biWidth);
            DeleteType(got[i]);
        }
        return widths;
    }

    using Widths = std::vector<int>;
    ComPtr<HostFilter> host_ = MakeHost();
    PlainPin* pin_;
    ComPtr<IEnumMediaTypes> types_;
    long blocks_;  // the types of the pin are task memory as well
};

TEST_F(TypeEnumerator, NextWithEveryCount) {
    EXPECT_EQ(Next(0, S_OK), Widths());
    EXPECT_EQ(Next(1, S_OK), Widths({16}));
    EXPECT_EQ(Next(2, S_OK), Widths({32, 48}));
    EXPECT_EQ(Next(1, S_FALSE), Widths());
    types_->Reset();
    EXPECT_EQ(Next(3, S_OK), Widths({16, 32, 48}));
    types_->Reset();
    EXPECT_EQ(Next(2, S_OK), Widths({16, 32}));
    EXPECT_EQ(Next(3, S_FALSE), Widths({48}));
}

TEST_F(TypeEnumerator, NextChecksItsPointers) {
    ULONG fetched = 7;
    AM_MEDIA_TYPE* type[2] = {};
    EXPECT_EQ(types_->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(types_->Next(2, type, nullptr), E_INVALIDARG);
    EXPECT_EQ(types_->Next(1, type, nullptr), S_OK);
    EXPECT_EQ(MediaType(*type[0]), pin_->types[0]);
    EXPECT_NE(type[0]->pbFormat, pin_->types[0]->pbFormat);
    DeleteType(type[0]);
}

TEST_F(TypeEnumerator, AnythingButOkEndsTheList) {
    for (const HRESULT end : {S_FALSE, VFW_S_NO_MORE_ITEMS, E_FAIL, E_OUTOFMEMORY}) {
        pin_->log.Inject("GetMediaType(1)", end);
        types_->Reset();
        EXPECT_EQ(Next(3, S_FALSE), Widths({16})) << std::hex << end;
    }
}

TEST_F(TypeEnumerator, ChangedVersionIsOutOfSync) {
    EXPECT_EQ(Next(1, S_OK), Widths({16}));
    pin_->IncrementTypeVersion();
    AM_MEDIA_TYPE* type = nullptr;
    ULONG fetched = 7;
    EXPECT_EQ(types_->Next(1, &type, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(fetched, 7u);
    EXPECT_EQ(types_->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(types_->Next(2, &type, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types_->Skip(0), S_OK);
    EXPECT_EQ(types_->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    IEnumMediaTypes* clone = types_.Get();
    EXPECT_EQ(types_->Clone(&clone), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(clone, nullptr);
    EXPECT_EQ(types_->Reset(), S_OK);
    EXPECT_EQ(Next(1, S_OK), Widths({16}));
}

TEST_F(TypeEnumerator, Skip) {
    EXPECT_EQ(types_->Skip(1), S_OK);
    EXPECT_EQ(Next(1, S_OK), Widths({32}));
    EXPECT_EQ(types_->Skip(1), S_OK);  // the last one exists
    EXPECT_EQ(Next(1, S_FALSE), Widths());
    types_->Reset();
    EXPECT_EQ(types_->Skip(3), S_OK);
    types_->Reset();
    EXPECT_EQ(types_->Skip(4), S_FALSE);  // moves all the same
    EXPECT_EQ(Next(1, S_FALSE), Widths());
}

TEST_F(TypeEnumerator, Clone) {
    EXPECT_EQ(types_->Clone(nullptr), E_POINTER);
    EXPECT_EQ(Next(1, S_OK), Widths({16}));
    ComPtr<IEnumMediaTypes> clone;
    ASSERT_EQ(types_->Clone(clone.Put()), S_OK);
    EXPECT_EQ(RefCount(host_.Get()), 3u);
    EXPECT_EQ(Next(1, S_OK), Widths({32}));
    std::swap(types_, clone);
    EXPECT_EQ(Next(1, S_OK), Widths({32}));
}

TEST_F(TypeEnumerator, AnswersTwoInterfaces) {
    EXPECT_TRUE(types_.As<IUnknown>());
    EXPECT_TRUE(types_.As<IEnumMediaTypes>());
    EXPECT_FALSE(types_.As<IEnumPins>());
    const LONG objects = CBaseObject::ObjectsActive();
    types_.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objects);
    EXPECT_EQ(RefCount(host_.Get()), 1u);
}

TEST_F(TypeEnumerator, WithoutMemoryNothingLeaks) {
    for (int after = 0; after < 8; ++after) {
        types_->Reset();
        AM_MEDIA_TYPE* type[3] = {};
        ULONG fetched = 0;
        FailTaskMemory fail(after);
        types_->Next(3, type, &fetched);
        for (ULONG i = 0; i < fetched; ++i) DeleteType(type[i]);
        EXPECT_EQ(LiveTaskBlocks(), blocks_) << after;
    }
    IEnumMediaTypes* clone = types_.Get();
    FailNothrowNew fail;
    EXPECT_EQ(types_->Clone(&clone), E_OUTOFMEMORY);
    EXPECT_EQ(clone, nullptr);
    EXPECT_EQ(pin_->EnumMediaTypes(&clone), E_OUTOFMEMORY);
    EXPECT_EQ(clone, nullptr);
    IEnumPins* pins = nullptr;
    EXPECT_EQ(host_->EnumPins(&pins), E_OUTOFMEMORY);
    EXPECT_EQ(pins, nullptr);
}

}  // namespace
