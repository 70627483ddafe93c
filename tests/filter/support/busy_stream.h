// A stream of a filter between a source and a sink of the tests, with everything at once: samples
// whose types change, a sink that asks for other sizes, a transport that runs, pauses, stops,
// flushes and seeks, and somebody who turns all settings and asks all questions. Its sink looks at
// every frame.
//
//   BusyStream stream(known, seed, isRegulated);
//   stream.Begin();
//   for (...) stream.Transport(random);        // on this thread
//   stream.End();
//   stream.Close(time);                        // statistics, pools and references must add up
#pragma once

#include <atomic>
#include <random>
#include <string>
#include <thread>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/known_frames.h"
#include "tests/filter/support/multimedia_time.h"
#include "tests/support/hand_clock.h"

namespace tavo_test {

class BusyStream {
  public:
    // The milliseconds that the module must read while everything is at work.
    static constexpr DWORD kBegin = 50'000;

    // Connected and started.
    BusyStream(const KnownFrames& known, unsigned seed, bool isRegulated);

    // The threads for samples and settings.
    void Begin();
    void End();

    // After the end: one more frame makes the statistics those of a known time.
    void Close(MultimediaTime& time);

    // One thing that a transport does.
    void Transport(std::mt19937& random);
    void StartAll();
    // While it is started.
    void AwaitFrames(int count);

    // Of the sink.
    int frames() const { return frames_; }
    // What each thread does, for a watchdog.
    std::string Describe() const;

  private:
    using Activity = std::atomic<const char*>;

    void StopAll(unsigned order);

    void Flush(bool seeks);

    // The streaming thread. Until a sample has got through, the next ones carry the type as well.
    void SendSamples();

    HRESULT DeliverOne(size_t from, bool carriesType);

    // Now and then the sink asks for another size.
    void HandOut(TestSample& sample);

    HRESULT Take(IMediaSample* sample);

    // The thread of a user interface.
    void TurnSettings();
    void TurnOne(std::mt19937& random);
    void AskOne(std::mt19937& random);
    void CheckStatistics(DWORD frames);
    void CheckAccounts();

    const KnownFrames& known_;
    const bool isRegulated_;
    const unsigned seed_;
    HandClock clock_;
    std::atomic<bool> isDone_ = false;
    std::atomic<bool> isStopped_ = false;  // from the end of a stop to the begin of a start
    std::atomic<bool> restarts_ = false;   // the times of samples, at 0
    bool isStarted_ = true;
    std::atomic<int> frames_ = 0;
    int callsAtStart_ = 0;
    int flushes_ = 0;
    int seeks_ = 0;
    int ends_ = 0;
    ULONG references_ = 0;
    // Of the streaming thread.
    size_t currentFrom_ = 0;
    LONGLONG serial_ = 0;
    LONGLONG origin_ = 0;
    REFERENCE_TIME start_ = 0;
    DWORD threadId_ = 0;
    // Of the sink's allocator.
    std::mt19937 sinkRandom_;
    size_t to_ = 0;
    Activity transport_ = "nothing";
    Activity streaming_ = "nothing";
    Activity setting_ = "nothing";
    FilterRig rig_;
    const ComPtr<TestSample> sample_;
    const ComPtr<IMediaSeeking> seeking_;
    const ComPtr<IQualityControl> quality_;
    std::thread samples_;
    std::thread settings_;
};

}  // namespace tavo_test
