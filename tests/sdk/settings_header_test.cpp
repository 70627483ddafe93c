// The settings header from C and from C++, on a filter of the module.

#include <gtest/gtest.h>

#include "settings/vantrel_settings.h"
#include "tests/host/cli/run_program.h"
#include "tests/sdk/c_form.h"
#include "tests/support/module.h"

namespace tavo {
namespace {

struct CForm {
    const char* name;
    int (*set)(IUnknown*, const SettingValues*);
    int (*get)(IUnknown*, SettingValues*);
    int (*sum)();
};

constexpr CForm kForms[] = {{"C90", C90Set, C90Get, C90Sum}, {"C11", C11Set, C11Get, C11Sum}};

class SettingsHeader : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(module_.loaded());
        tavo_test::ComPtr<IClassFactory> factory;
        ASSERT_EQ(module_.GetClassObject(CLSID_VantrelFilter, IID_IClassFactory, factory.PutVoid()),
                  S_OK);
        ASSERT_EQ(factory->CreateInstance(nullptr, __uuidof(IVantrelSettings), settings_.PutVoid()),
                  S_OK);
    }

    tavo_test::Module module_{tavo_test::ModulePath().c_str()};
    tavo_test::ComPtr<IVantrelSettings> settings_;
};

TEST_F(SettingsHeader, SetsThroughItsCForm) {
    int round = 0;
    for (const CForm& form : kForms) {
        ++round;
        const SettingValues values = {640 + round,  360 + round, 4 + round, 6 + round, round,
                                      24.5 + round, 0,           0,         0,         0};
        ASSERT_EQ(form.set(settings_.Get(), &values), 1) << form.name;
        int width = 0, height = 0, method = 0, format = 0, type = 0;
        double rate = 0;
        settings_->GetOutputSize(&width, &height);
        settings_->GetScaleMethod(&method);
        settings_->GetOutputFormat(&format);
        settings_->GetVideoType(&type);
        settings_->GetFrameRate(&rate);
        EXPECT_EQ(width, 640 + round) << form.name;
        EXPECT_EQ(height, 360 + round) << form.name;
        EXPECT_EQ(method, 4 + round) << form.name;
        EXPECT_EQ(format, 6 + round) << form.name;
        EXPECT_EQ(type, round) << form.name;
        EXPECT_EQ(rate, 24.5 + round) << form.name;
    }
}

TEST_F(SettingsHeader, ReadsThroughItsCForm) {
    settings_->SetOutputSize(320, 200);
    settings_->SetScaleMethod(VantrelMethodNearestSse);
    settings_->SetOutputFormat(VantrelFormatYvyu);
    settings_->SetVideoType(VantrelTypeMpeg2);
    settings_->SetFrameRate(12.5);
    for (const CForm& form : kForms) {
        SettingValues values = {};
        values.moduleTime = values.systemFps = values.generateFps = -1;
        ASSERT_EQ(form.get(settings_.Get(), &values), 1) << form.name;
        EXPECT_EQ(values.width, 320) << form.name;
        EXPECT_EQ(values.height, 200) << form.name;
        EXPECT_EQ(values.method, VantrelMethodNearestSse) << form.name;
        EXPECT_EQ(values.format, VantrelFormatYvyu) << form.name;
        EXPECT_EQ(values.type, VantrelTypeMpeg2) << form.name;
        EXPECT_EQ(values.frameRate, 12.5) << form.name;
        EXPECT_EQ(values.moduleTime, 0.0) << form.name;
        EXPECT_EQ(values.systemFps, 0.0) << form.name;
        EXPECT_EQ(values.generateFps, 0.0) << form.name;
        // There is no input that could fit the settings.
        EXPECT_EQ(values.applied, E_INVALIDARG) << form.name;
    }
}

TEST_F(SettingsHeader, HasTheSameCodesInC) {
    for (const CForm& form : kForms) EXPECT_EQ(form.sum(), 121002) << form.name;
}

TEST_F(SettingsHeader, TellsItsIdentifier) {
    EXPECT_TRUE(IsEqualIID(__uuidof(IVantrelSettings), IID_IVantrelSettings));
}

}  // namespace
}  // namespace tavo
