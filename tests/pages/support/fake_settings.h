// A filter's settings without a filter: plain values that tests set and read, and the calls that
// change anything in the order in which they came.
//
//   FakeSettings settings;
//   settings.method = VantrelMethodBilinear;
//   page->SetObjects(1, ...);
//   EXPECT_EQ(settings.calls, "SetOutputSize SetScaleMethod SetOutputFormat SetVideoType Apply ");
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "settings/vantrel_settings.h"

namespace tavo_test {

class FakeSettings final : public IVantrelSettings {
  public:
    virtual ~FakeSettings() = default;

    int width = 0;
    int height = 0;
    int method = 0;
    int format = 0;
    int type = 0;
    double frameRate = 0.0;
    double moduleTime = 0.0;
    double systemFps = 0.0;
    double generateFps = 0.0;

    int applyResult = 1;
    std::function<void()> onApply;
    std::string calls;
    std::atomic<long> references = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == IID_IVantrelSettings;
        *object = known ? this : nullptr;
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }

    int STDMETHODCALLTYPE SetOutputSize(int w, int h) override {
        width = w;
        height = h;
        return Note("SetOutputSize ");
    }
    int STDMETHODCALLTYPE GetOutputSize(int* w, int* h) override {
        *w = width;
        *h = height;
        return 1;
    }
    int STDMETHODCALLTYPE SetScaleMethod(int value) override {
        method = value;
        return Note("SetScaleMethod ");
    }
    int STDMETHODCALLTYPE GetScaleMethod(int* value) override { return Get(method, value); }
    int STDMETHODCALLTYPE SetOutputFormat(int value) override {
        format = value;
        return Note("SetOutputFormat ");
    }
    int STDMETHODCALLTYPE GetOutputFormat(int* value) override { return Get(format, value); }
    int STDMETHODCALLTYPE SetVideoType(int value) override {
        type = value;
        return Note("SetVideoType ");
    }
    int STDMETHODCALLTYPE GetVideoType(int* value) override { return Get(type, value); }
    int STDMETHODCALLTYPE GetModuleTime(double* value) override { return Get(moduleTime, value); }
    int STDMETHODCALLTYPE GetSystemFps(double* value) override { return Get(systemFps, value); }
    int STDMETHODCALLTYPE ApplySettings() override {
        Note("Apply ");
        if (onApply) onApply();
        return applyResult;
    }
    int STDMETHODCALLTYPE GetGenerateFps(double* value) override { return Get(generateFps, value); }
    int STDMETHODCALLTYPE SetFrameRate(double value) override {
        frameRate = value;
        return Note("SetFrameRate ");
    }
    int STDMETHODCALLTYPE GetFrameRate(double* value) override { return Get(frameRate, value); }

  private:
    int Note(const char* name) {
        calls += name;
        return 1;
    }
    template <typename T>
    static int Get(const T& field, T* value) {
        *value = field;
        return 1;
    }
};

}  // namespace tavo_test
