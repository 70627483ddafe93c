// Registration without memory or with a registry that refuses: all or nothing is registered.
#include <string>

#include "tests/filter/support/refusing_test.h"

using namespace tavo_test;

namespace {

const std::wstring kClassKeys[] = {L"CLSID\\{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}",
                                   L"CLSID\\{7C9F63C6-786B-4752-908E-460A061FA9D7}",
                                   L"CLSID\\{D7A3BD9A-E8A3-49E9-8261-CD2A7AC78403}"};

int ClassesInTheRegistry() {
    int count = 0;
    for (const std::wstring& key : kClassKeys) {
        HKEY opened = nullptr;
        if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS) {
            ++count;
            RegCloseKey(opened);
        }
    }
    return count;
}

class FailingRegistrationTest : public RefusingTest {
  protected:
    FailingRegistrationTest() { checksTaskMemory_ = false; }
    void TearDown() override {
        EXPECT_EQ(TheModule().UnregisterServer(), S_OK);
        RefusingTest::TearDown();
    }

    // The thread is in an apartment already.
    bool CouldDoWithout() const { return names_ == "CoInitialize "; }
};

TEST_F(FailingRegistrationTest, TheFirstTime) {
    WithEveryRefusal([this] {
        ASSERT_EQ(ClassesInTheRegistry(), 0);
        WorksOrFails([] { return TheModule().RegisterServer(); });
        EXPECT_EQ(SUCCEEDED(result_), !refused_ || CouldDoWithout()) << names_;
        EXPECT_EQ(ClassesInTheRegistry(), SUCCEEDED(result_) ? 3 : 0) << names_;
        EXPECT_EQ(TheModule().RegisterServer(), S_OK) << names_;
        EXPECT_EQ(ClassesInTheRegistry(), 3);
        EXPECT_EQ(TheModule().UnregisterServer(), S_OK) << names_;
    });
}

TEST_F(FailingRegistrationTest, OnceMore) {
    WithEveryRefusal([this] {
        EXPECT_EQ(TheModule().RegisterServer(), S_OK);
        WorksOrFails([] { return TheModule().RegisterServer(); });
        EXPECT_EQ(SUCCEEDED(result_), !refused_ || CouldDoWithout()) << names_;
        EXPECT_EQ(ClassesInTheRegistry(), 3) << names_;
        EXPECT_TRUE(CreateObject<IBaseFilter>(CLSID_VantrelFilter)) << names_;
    });
}

TEST_F(FailingRegistrationTest, TakingItBack) {
    WithEveryRefusal([this] {
        EXPECT_EQ(TheModule().RegisterServer(), S_OK);
        WorksOrFails([] { return TheModule().UnregisterServer(); });
        EXPECT_EQ(SUCCEEDED(result_), !refused_ || CouldDoWithout()) << names_;
        EXPECT_EQ(ClassesInTheRegistry(), SUCCEEDED(result_) ? 0 : 3) << names_;
        EXPECT_EQ(TheModule().UnregisterServer(), S_OK) << names_;
        EXPECT_EQ(ClassesInTheRegistry(), 0) << names_;
    });
}

}  // namespace
