// A filter that is linked into the test, so that its own members can be called.
#pragma once

// Before the tests' own headers: the base classes bring their platform headers in their own order.
#include "filter/vantrel_filter.h"

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"

namespace tavo_test {

class InsideFilterTest : public FilterTest {
  protected:
    InsideFilterTest() { Make(); }

    void Make() {
        HRESULT result = S_OK;
        CUnknown* const made = CVantrelFilter::CreateInstance(nullptr, &result);
        EXPECT_EQ(result, S_OK);
        made->NonDelegatingAddRef();
        inside = static_cast<CVantrelFilter*>(made);
        owner = ComPtr<IBaseFilter>::Adopt(static_cast<IBaseFilter*>(inside));
    }

    void TearDown() override {
        owner.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        FilterTest::TearDown();
    }

    static CMediaType TypeFor(const char* name, int width = 64, int height = 48) {
        return CMediaType(*TypeOf(Format(name), width, height).Get());
    }

    CVantrelFilter* inside = nullptr;
    ComPtr<IBaseFilter> owner;
};

}  // namespace tavo_test
