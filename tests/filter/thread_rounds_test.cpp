// Rounds of everything at once, by chance from a seed: two filters stream types that change, each
// under a transport that runs, pauses, stops, flushes and seeks, and under somebody who turns all
// settings and asks all questions, while others make filters. No frame is torn, none comes after a
// stop, the statistics add up, and nothing is left over.
#include <atomic>
#include <cstdio>
#include <iterator>
#include <memory>
#include <random>
#include <thread>

#include "tests/filter/support/busy_stream.h"
#include "tests/support/rounds.h"

using namespace tavo_test;

namespace {

class ThreadRoundsTest : public FilterTest {
  protected:
    ThreadRoundsTest() { checksTaskMemory_ = false; }

    const KnownFrames& Known(size_t format) {
        std::unique_ptr<KnownFrames>& known = known_[format % std::size(known_)];
        if (!known) known = std::make_unique<KnownFrames>(AllFormats()[format % 11]);
        return *known;
    }

    // How many filters somebody made meanwhile.
    static int MakeFilters(const std::atomic<bool>& done) {
        const ComApartment com;
        int made = 0;
        do {
            const ComPtr<IBaseFilter> filter = CreateFilter();
            ComPtr<IEnumPins> pins;
            EXPECT_EQ(filter->EnumPins(pins.Put()), S_OK);
            EXPECT_EQ(pins->Skip(2), S_OK);
            ++made;
        } while (!done);
        return made;
    }

    std::unique_ptr<KnownFrames> known_[11];
};

TEST_F(ThreadRoundsTest, TwoStreamsUnderTransportAndSettingsWhileOthersMakeFilters) {
    MultimediaTime time;
    std::atomic<int> made = 0;
    int frames = 0;
    int round = 0;
    for (; round < Rounds(50) && !HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        std::mt19937 random(static_cast<unsigned>(round));
        const KnownFrames& first = Known(random());
        const KnownFrames& second = Known(random());
        time.Next({BusyStream::kBegin});
        BusyStream streams[] = {{first, random(), round % 2 == 0},
                                {second, random(), round % 4 < 2}};
        const Watchdog dog("round " + std::to_string(round), 240,
                           [&] { return streams[0].Describe() + "\n" + streams[1].Describe(); });
        std::atomic<bool> done = false;
        std::thread makers[2];
        for (std::thread& maker : makers) maker = std::thread([&] { made += MakeFilters(done); });
        for (BusyStream& stream : streams) stream.Begin();
        for (int i = 0; i < 30 && !HasFailure(); ++i) streams[random() % 2].Transport(random);
        for (BusyStream& stream : streams) {
            if (random() % 4) stream.StartAll();
            stream.AwaitFrames(5);
        }
        done = true;
        for (std::thread& maker : makers) maker.join();
        for (BusyStream& stream : streams) stream.End();
        for (BusyStream& stream : streams) {
            stream.Close(time);
            frames += stream.frames();
        }
    }
    std::printf("  %d rounds, %d frames, %d filters made\n", round, frames, made.load());
}

}  // namespace
