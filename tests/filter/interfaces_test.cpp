// The object: its interfaces, its class, its property pages and its pins.
#include "tests/filter/support/filter_rig.h"
#include "tests/support/graph.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

class InterfacesTest : public FilterTest {};

TEST_F(InterfacesTest, TheFilterHasItsInterfacesAndOneIdentity) {
    FilterRig rig;
    const IID iids[] = {IID_IUnknown,    IID_IPersist,         IID_IMediaFilter,
                        IID_IBaseFilter, IID_IVantrelSettings, IID_ISpecifyPropertyPages};
    const ComPtr<IUnknown> identity = rig.filter.As<IUnknown>();
    for (const IID& from : iids) {
        ComPtr<IUnknown> object;
        ASSERT_EQ(rig.filter->QueryInterface(from, object.PutVoid()), S_OK);
        for (const IID& to : iids) {
            ComPtr<IUnknown> other;
            ASSERT_EQ(object->QueryInterface(to, other.PutVoid()), S_OK);
            EXPECT_EQ(other.As<IUnknown>().Get(), identity.Get());
        }
    }
}

TEST_F(InterfacesTest, NullOutPointerAndUnknownInterfaces) {
    FilterRig rig;
    EXPECT_EQ(rig.filter->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(rig.settings->QueryInterface(IID_IVantrelSettings, nullptr), E_POINTER);
    // A filter with seeking of its own would be taken for a renderer.
    for (const IID& iid : {IID_IMediaSeeking, IID_IMediaPosition, IID_IPin, IID_IMemInputPin,
                           IID_IReferenceClock, IID_NULL}) {
        void* object = &object;
        EXPECT_EQ(rig.filter->QueryInterface(iid, &object), E_NOINTERFACE);
        EXPECT_EQ(object, nullptr);
    }
}

TEST_F(InterfacesTest, TheClassIdentifierIsItsOwn) {
    FilterRig rig;
    CLSID clsid = {};
    EXPECT_EQ(rig.filter->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_VantrelFilter);
    EXPECT_EQ(rig.filter->GetClassID(nullptr), E_POINTER);
}

TEST_F(InterfacesTest, GetPagesNamesTheResamplingPageThenTheRegulatorPage) {
    FilterRig rig;
    const auto pages = rig.filter.As<ISpecifyPropertyPages>();
    ASSERT_TRUE(pages);
    CAUUID list = {};
    ASSERT_EQ(pages->GetPages(&list), S_OK);
    ASSERT_EQ(list.cElems, 2u);
    EXPECT_EQ(list.pElems[0], CLSID_ResamplePropertyPage);
    EXPECT_EQ(list.pElems[1], CLSID_TimeRegulatorPropertyPage);
    CoTaskMemFree(list.pElems);
    EXPECT_EQ(pages->GetPages(nullptr), E_POINTER);
}

TEST_F(InterfacesTest, GetPagesWithoutMemoryLeavesTheCountAtTwo) {
    FilterRig rig;
    const auto pages = rig.filter.As<ISpecifyPropertyPages>();
    CAUUID list = {7, reinterpret_cast<GUID*>(1)};
    const FailTaskMemory fail;
    EXPECT_EQ(pages->GetPages(&list), E_OUTOFMEMORY);
    EXPECT_EQ(fail.refused(), 1);
    EXPECT_EQ(list.cElems, 2u);
    EXPECT_EQ(list.pElems, nullptr);
}

PIN_INFO InfoOf(IPin* pin) {
    PIN_INFO info = {};
    EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
    if (info.pFilter) info.pFilter->Release();
    return info;
}

TEST_F(InterfacesTest, ThereAreTwoPinsInputFirst) {
    FilterRig rig;
    ComPtr<IEnumPins> list;
    ASSERT_EQ(rig.filter->EnumPins(list.Put()), S_OK);
    IPin* found[3] = {};
    ULONG count = 0;
    EXPECT_EQ(list->Next(3, found, &count), S_FALSE);
    ASSERT_EQ(count, 2u);
    const auto first = ComPtr<IPin>::Adopt(found[0]);
    const auto second = ComPtr<IPin>::Adopt(found[1]);
    EXPECT_STREQ(InfoOf(first.Get()).achName, L"Input");
    EXPECT_EQ(InfoOf(first.Get()).dir, PINDIR_INPUT);
    EXPECT_EQ(InfoOf(first.Get()).pFilter, rig.filter.Get());
    EXPECT_STREQ(InfoOf(second.Get()).achName, L"Output");
    EXPECT_EQ(InfoOf(second.Get()).dir, PINDIR_OUTPUT);
    EXPECT_EQ(first.Get(), rig.input.Get()) << "the pins are made once";
    EXPECT_EQ(second.Get(), rig.output.Get());
}

TEST_F(InterfacesTest, PinsAreFoundByTheirIdentifiers) {
    FilterRig rig;
    for (IPin* pin : {rig.input.Get(), rig.output.Get()}) {
        LPWSTR id = nullptr;
        ASSERT_EQ(pin->QueryId(&id), S_OK);
        ComPtr<IPin> found;
        EXPECT_EQ(rig.filter->FindPin(id, found.Put()), S_OK);
        EXPECT_EQ(found.Get(), pin);
        CoTaskMemFree(id);
    }
    ComPtr<IPin> none;
    EXPECT_EQ(rig.filter->FindPin(L"Sideways", none.Put()), VFW_E_NOT_FOUND);
    EXPECT_FALSE(none);
}

TEST_F(InterfacesTest, PinsShareTheFiltersReferences) {
    const ComPtr<IBaseFilter> filter = CreateFilter();
    const ULONG before = RefCount(filter.Get());
    {
        const ComPtr<IPin> pin = GetPin(filter.Get(), PINDIR_OUTPUT);
        EXPECT_EQ(RefCount(filter.Get()), before + 1);
    }
    EXPECT_EQ(RefCount(filter.Get()), before);
}

TEST_F(InterfacesTest, APinKeepsTheFilterAlive) {
    ComPtr<IBaseFilter> filter = CreateFilter();
    const ComPtr<IPin> pin = GetPin(filter.Get(), PINDIR_INPUT);
    filter.Reset();
    EXPECT_EQ(TheModule().CanUnloadNow(), S_FALSE);
    EXPECT_EQ(InfoOf(pin.Get()).dir, PINDIR_INPUT);
}

}  // namespace
