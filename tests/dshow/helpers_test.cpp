// Macros, constants, CRefTime, FOURCCMap, AMGetWideString, and the platform names that streams.h
// brings along.
#include <type_traits>

#include "tests/dshow/fakes.h"
#include "tests/dshow/probes.h"
#include "tests/support/task_memory.h"

using namespace tavo_test;

namespace {

static_assert(VFW_E_INVALIDMEDIATYPE == HRESULT(0x80040200));
static_assert(VFW_E_ENUM_OUT_OF_SYNC == HRESULT(0x80040203));
static_assert(VFW_E_ALREADY_CONNECTED == HRESULT(0x80040204));
static_assert(VFW_E_NO_ACCEPTABLE_TYPES == HRESULT(0x80040207));
static_assert(VFW_E_INVALID_DIRECTION == HRESULT(0x80040208));
static_assert(VFW_E_NOT_CONNECTED == HRESULT(0x80040209));
static_assert(VFW_E_NO_ALLOCATOR == HRESULT(0x8004020A));
static_assert(VFW_E_RUNTIME_ERROR == HRESULT(0x8004020B));
static_assert(VFW_E_NOT_COMMITTED == HRESULT(0x80040211));
static_assert(VFW_E_SIZENOTSET == HRESULT(0x80040212));
static_assert(VFW_E_NO_CLOCK == HRESULT(0x80040213));
static_assert(VFW_E_NOT_FOUND == HRESULT(0x80040216));
static_assert(VFW_E_NOT_STOPPED == HRESULT(0x80040224));
static_assert(VFW_E_WRONG_STATE == HRESULT(0x80040227));
static_assert(VFW_E_TYPE_NOT_ACCEPTED == HRESULT(0x8004022A));
static_assert(VFW_S_NO_MORE_ITEMS == HRESULT(0x00040103));
static_assert(EC_QUALITY_CHANGE != 0 && EC_ERRORABORT != 0);

static_assert(UNITS == 10000000 && std::is_same_v<decltype(UNITS), const LONGLONG>);
static_assert(MILLISECONDS == 1000 && std::is_same_v<decltype(MILLISECONDS), const LONGLONG>);
static_assert(NANOSECONDS == 1000000000 && std::is_same_v<decltype(NANOSECONDS), const LONGLONG>);
static_assert(MAX_TIME == 0x7FFFFFFFFFFFFFFF && std::is_same_v<decltype(MAX_TIME), const LONGLONG>);

static_assert(std::is_same_v<decltype(NAME("x")), LPTSTR>);
static_assert(sizeof(CRefTime) == sizeof(REFERENCE_TIME) && !std::is_polymorphic_v<CRefTime>);
static_assert(std::is_constructible_v<CRefTime, LONG>);
static_assert(std::is_constructible_v<CRefTime, REFERENCE_TIME>);
static_assert(!std::is_constructible_v<CRefTime, int>);
static_assert(std::is_convertible_v<CRefTime, REFERENCE_TIME>);
static_assert(sizeof(FOURCCMap) == sizeof(GUID));

class Helpers : public DshowTest {};

TEST_F(Helpers, NameIsNull) { EXPECT_EQ(NAME("anything"), nullptr); }

TEST_F(Helpers, DebugMacrosDoNothingInRelease) {
    int calls = 0;
    const auto count = [&calls] { return ++calls; };
    ASSERT(count() == 0);
    EXPECT_EQ(calls, 0);
    EXECUTE_ASSERT(count());
    EXPECT_EQ(calls, 1);
    DbgLog((LOG_TRACE, 1, TEXT("%d"), count()));
    DbgBreak("x");
    NOTE("x");
    ValidateReadPtr(&calls, sizeof calls);
    ValidateWritePtr(&calls, sizeof calls);
    ValidateReadWritePtr(&calls, sizeof calls);
    EXPECT_EQ(calls, 1);
}

HRESULT Guarded(const void* pointer) {
    CheckPointer(pointer, E_POINTER);
    return S_FALSE;
}

TEST_F(Helpers, CheckPointerLeavesTheFunction) {
    int something = 0;
    EXPECT_EQ(Guarded(nullptr), E_POINTER);
    EXPECT_EQ(Guarded(&something), S_FALSE);
}

TEST_F(Helpers, Sizes) {
    const RECT rect = {10, 20, 50, 90};
    EXPECT_EQ(WIDTH(&rect), 40);
    EXPECT_EQ(HEIGHT(&rect), 70);
    int array[7];
    static_assert(NUMELMS(array) == 7);
    (void)array;
}

TEST_F(Helpers, InfoRecordsGiveTheirReferencesBack) {
    ComPtr<HostFilter> host = MakeHost();
    FakeGraph graph;
    PIN_INFO pin = {};
    QueryPinInfoReleaseFilter(pin);
    pin.pFilter = host.Get();
    host->AddRef();
    QueryPinInfoReleaseFilter(pin);
    EXPECT_EQ(RefCount(host.Get()), 1u);
    FILTER_INFO filter = {};
    QueryFilterInfoReleaseGraph(filter);
    filter.pGraph = graph.graph();
    graph.AddRef();
    QueryFilterInfoReleaseGraph(filter);
    EXPECT_EQ(graph.references, 0);
}

TEST_F(Helpers, RefTime) {
    EXPECT_EQ(CRefTime().m_time, 0);
    EXPECT_EQ(CRefTime(LONG{3}).m_time, 30000);
    EXPECT_EQ(CRefTime(REFERENCE_TIME{3}).m_time, 3);
    EXPECT_EQ(CRefTime(LONG{0x7FFFFFFF}).m_time, 0x7FFFFFFFLL * 10000);
    CRefTime time(LONG{5});
    time += CRefTime(REFERENCE_TIME{7});
    EXPECT_EQ(time.GetUnits(), 50007);
    time -= CRefTime(LONG{1});
    EXPECT_EQ(static_cast<REFERENCE_TIME>(time), 40007);
    EXPECT_EQ(time.Millisecs(), 4);
    time = REFERENCE_TIME{12};
    EXPECT_EQ(time.m_time, 12);
    const CRefTime copy = time;
    EXPECT_EQ(copy.m_time, 12);
}

TEST_F(Helpers, FourCcMap) {
    const GUID expected = {
        0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
    EXPECT_TRUE(FOURCCMap(0x32595559) == expected);
    EXPECT_TRUE(MEDIASUBTYPE_YUY2 == expected);
    EXPECT_TRUE(FOURCCMap(&expected) == expected);
}

TEST_F(Helpers, WideStringCopies) {
    const long before = LiveTaskBlocks();
    LPWSTR copy = const_cast<LPWSTR>(L"untouched");
    EXPECT_EQ(AMGetWideString(L"x", nullptr), E_POINTER);
    EXPECT_EQ(AMGetWideString(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(AMGetWideString(nullptr, &copy), HRESULT(0x80070057));
    EXPECT_EQ(copy, nullptr);
    const wchar_t text[] = L"h\u00E4m\u4E2D";
    ASSERT_EQ(AMGetWideString(text, &copy), S_OK);
    EXPECT_STREQ(copy, text);
    EXPECT_NE(copy, text);
    EXPECT_EQ(LiveTaskBlocks(), before + 1);
    CoTaskMemFree(copy);
    FailTaskMemory fail;
    copy = const_cast<LPWSTR>(L"untouched");
    EXPECT_EQ(AMGetWideString(text, &copy), E_OUTOFMEMORY);
    EXPECT_EQ(copy, nullptr);
}

}  // namespace
