// The filter between a source and a sink of the tests, without a graph, and the fixture that finds
// what a test leaves behind.
//
//   class FooTest : public FilterTest {};
//   TEST_F(FooTest, Bar) {
//       FilterRig rig;
//       ASSERT_EQ(rig.Connect(TypeOf(Format("YV12"), 64, 48)), S_OK);
//       ASSERT_EQ(rig.Start(), S_OK);
//       EXPECT_EQ(rig.Deliver(frame), S_OK);
//       EXPECT_EQ(rig.samples().at(0).bytes, expected);
//   }
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <vfwmsgs.h>

#include <memory>
#include <optional>
#include <vector>

#include "settings/vantrel_settings.h"
#include "tests/support/com_ptr.h"
#include "tests/support/live_objects.h"
#include "tests/support/module.h"
#include "tests/support/test_sink.h"
#include "tests/support/test_source.h"
#include "tests/support/watchdog.h"

namespace tavo_test {

// Full path of the module under test.
std::wstring ModulePath();
// Loaded on first use, and kept until the program ends.
const Module& TheModule();

ComPtr<IBaseFilter> CreateFilter();

class FilterRig {
  public:
    explicit FilterRig(const SinkConfig& sink = {}, const SourceConfig& source = {});
    // Stops and disconnects.
    ~FilterRig();
    FilterRig(const FilterRig&) = delete;
    FilterRig& operator=(const FilterRig&) = delete;

    // Puts another filter into the place of the module's; nothing may be connected.
    void Use(const ComPtr<IBaseFilter>& other);

    HRESULT ConnectInput(const MediaType& type);
    // Without a type the pins negotiate.
    HRESULT ConnectOutput(const MediaType* type = nullptr);
    // Input, then output.
    HRESULT Connect(const MediaType& type);
    void DisconnectInput();
    void DisconnectOutput();

    // All three filters, the sink first.
    HRESULT Start();
    HRESULT Stop();

    HRESULT Deliver(const SampleSpec& spec) { return source->pin().Deliver(spec); }
    HRESULT Deliver(const std::vector<BYTE>& bytes) { return Deliver(SampleSpec{.bytes = bytes}); }
    std::vector<ReceivedSample> samples() const { return sink->pin().samples(); }

    // What the output pin offers; there is never more than one.
    std::vector<MediaType> OfferedTypes() const;
    MediaType ConnectionTypeOf(IPin* pin) const;
    // Width and height as GetOutputSize gives them.
    std::pair<int, int> OutputSize() const;

    ComPtr<TestSource> source;
    ComPtr<TestSink> sink;
    ComPtr<IBaseFilter> filter;
    ComPtr<IVantrelSettings> settings;
    ComPtr<IPin> input;
    ComPtr<IPin> output;
};

// Every test is watched, and must leave no object of the module or of the tests behind, nor task
// memory of its own thread.
class FilterTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // To be cleared where other threads release samples: the platform's allocators free task memory
    // on the thread that does.
    bool checksTaskMemory_ = true;

  private:
    ComApartment com_;
    std::unique_ptr<Watchdog> dog_;
    LiveCounts before_;
    long taskBlocksBefore_ = 0;
};

}  // namespace tavo_test
