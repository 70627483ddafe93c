// CBaseObject, CUnknown, GetInterface, CCritSec: counts, identity, aggregation.
#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"

using namespace tavo_test;

namespace {

static_assert(!std::is_copy_constructible_v<CBaseObject> &&
              !std::is_copy_assignable_v<CBaseObject>);
static_assert(!std::has_virtual_destructor_v<CBaseObject>);
static_assert(!std::is_polymorphic_v<CBaseObject>);
static_assert(sizeof(INonDelegatingUnknown) == sizeof(void*));
static_assert(!std::has_virtual_destructor_v<INonDelegatingUnknown>);
static_assert(std::has_virtual_destructor_v<CUnknown>);
static_assert(!std::is_copy_constructible_v<CCritSec>);

// An object with one interface of its own.
class Thing : public CUnknown, public IPersist {
  public:
    Thing(LPUNKNOWN outer, bool* destroyed = nullptr)
        : CUnknown(NAME("thing"), outer), destroyed_(destroyed) {}
    ~Thing() override {
        // What a destructor does that lets go of helpers which know this object.
        AddRef();
        Release();
        if (destroyed_) *destroyed_ = true;
    }
    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IPersist) return GetInterface(static_cast<IPersist*>(this), ppv);
        return CUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
    using CUnknown::m_cRef;

  private:
    bool* destroyed_;
};

static_assert(std::is_same_v<decltype(Thing::m_cRef), volatile LONG>);

class Unknown : public DshowTest {};

TEST_F(Unknown, ModuleCountFollowsObjects) {
    const LONG before = CBaseObject::ObjectsActive();
    {
        CBaseObject wide(NAME("x"));
        EXPECT_EQ(CBaseObject::ObjectsActive(), before + 1);
        CBaseObject narrow("x");
        EXPECT_EQ(CBaseObject::ObjectsActive(), before + 2);
    }
    EXPECT_EQ(CBaseObject::ObjectsActive(), before);
}

TEST_F(Unknown, ModuleCountIsAtomic) {
    const LONG before = CBaseObject::ObjectsActive();
    const auto churn = [] {
        for (int i = 0; i < 20000; ++i) CBaseObject object(NAME("x"));
    };
    std::thread first(churn), second(churn);
    churn();
    first.join();
    second.join();
    EXPECT_EQ(CBaseObject::ObjectsActive(), before);
}

TEST_F(Unknown, IsBornWithoutReferencesAndDiesWithTheLast) {
    bool destroyed = false;
    auto* thing = new Thing(nullptr, &destroyed);
    EXPECT_EQ(thing->m_cRef, 0);
    EXPECT_EQ(thing->NonDelegatingAddRef(), 1u);
    EXPECT_EQ(thing->NonDelegatingAddRef(), 2u);
    EXPECT_EQ(thing->NonDelegatingRelease(), 1u);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(thing->NonDelegatingRelease(), 0u);
    EXPECT_TRUE(destroyed);
}

TEST_F(Unknown, ConstructorLeavesTheResultAlone) {
    HRESULT hr = 0x12345678;
    CUnknown wide(NAME("x"), nullptr, &hr);
    CUnknown narrow("x", nullptr, &hr);
    CUnknown plain("x", nullptr);
    EXPECT_EQ(hr, 0x12345678);
}

TEST_F(Unknown, QueryInterface) {
    ComPtr<Thing> thing(new Thing(nullptr));
    EXPECT_EQ(thing->NonDelegatingQueryInterface(IID_IUnknown, nullptr), E_POINTER);
    void* other = &other;
    EXPECT_EQ(thing->NonDelegatingQueryInterface(IID_IPin, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(thing->NonDelegatingQueryInterface(IID_IUnknown, unknown.PutVoid()), NOERROR);
    EXPECT_EQ(thing->m_cRef, 2);
    INonDelegatingUnknown* own = thing.Get();
    EXPECT_EQ(static_cast<void*>(unknown.Get()), static_cast<void*>(own));
    EXPECT_EQ(unknown.Get(), thing->GetOwner());
}

TEST_F(Unknown, OneIdentityFromEveryInterface) {
    ComPtr<Thing> thing(new Thing(nullptr));
    ComPtr<IPersist> persist = ComPtr<IUnknown>(thing->GetOwner()).As<IPersist>();
    ASSERT_TRUE(persist);
    EXPECT_EQ(persist.Get(), static_cast<IPersist*>(thing.Get()));
    EXPECT_EQ(persist.As<IUnknown>().Get(), thing->GetOwner());
    EXPECT_EQ(persist.As<IPersist>().Get(), persist.Get());
}

TEST_F(Unknown, AggregatedDelegatesToItsOwner) {
    FakeOuter outer;
    bool destroyed = false;
    auto* thing = new Thing(&outer, &destroyed);
    EXPECT_EQ(outer.references, 0);  // the owner is not counted
    EXPECT_EQ(thing->GetOwner(), &outer);
    IUnknown* inner = nullptr;
    ASSERT_EQ(thing->NonDelegatingQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&inner)),
              NOERROR);
    outer.inner = inner;
    EXPECT_NE(inner, thing->GetOwner());
    EXPECT_EQ(thing->m_cRef, 1);
    EXPECT_EQ(outer.references, 0);

    IPersist* persist = nullptr;
    ASSERT_EQ(inner->QueryInterface(IID_IPersist, reinterpret_cast<void**>(&persist)), S_OK);
    EXPECT_EQ(outer.references, 1);
    EXPECT_EQ(thing->m_cRef, 1);
    persist->AddRef();
    EXPECT_EQ(outer.references, 2);
    persist->Release();
    IUnknown* identity = nullptr;
    ASSERT_EQ(persist->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity, &outer);
    identity->Release();
    persist->Release();
    EXPECT_EQ(outer.references, 0);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(inner->Release(), 0u);
    EXPECT_TRUE(destroyed);
}

TEST_F(Unknown, GetInterfaceCountsThroughThePointerGiven) {
    FakeOuter object;
    EXPECT_EQ(GetInterface(&object, nullptr), E_POINTER);
    EXPECT_EQ(object.references, 0);
    void* given = nullptr;
    EXPECT_EQ(GetInterface(&object, &given), NOERROR);
    EXPECT_EQ(given, static_cast<void*>(static_cast<IUnknown*>(&object)));
    EXPECT_EQ(object.references, 1);
}

TEST_F(Unknown, CountingIsAtomic) {
    ComPtr<Thing> thing(new Thing(nullptr));
    const auto churn = [&] {
        for (int i = 0; i < 20000; ++i) {
            thing->AddRef();
            thing->Release();
        }
    };
    std::thread first(churn), second(churn);
    churn();
    first.join();
    second.join();
    EXPECT_EQ(thing->m_cRef, 1);
}

TEST_F(Unknown, LockIsRecursiveAndExclusive) {
    CCritSec lock;
    std::atomic<bool> entered = false;
    std::thread other;
    {
        CAutoLock outer(&lock);
        CAutoLock inner(&lock);
        other = std::thread([&] {
            CAutoLock guard(&lock);
            entered = true;
        });
        Sleep(150);
        EXPECT_FALSE(entered);
    }
    other.join();
    EXPECT_TRUE(entered);
    lock.Lock();
    lock.Unlock();
    EXPECT_TRUE(CritCheckIn(&lock));
}

}  // namespace
