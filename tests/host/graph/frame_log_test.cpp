// Lines of the log, and logs that do not fit on the disk.

#include "host/graph/frame_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/host/avi/memory_store.h"

namespace tavo {
namespace {

using tavo_test::MemoryStore;

int64_t now = 0;
int64_t Now() { return now; }

constexpr char kHeading[] = "input,in_start,in_stop,output,out_start,out_stop,what,ms\n";

class FrameLogTest : public testing::Test {
  protected:
    void SetUp() override { now = 5'000'000'000; }

    // After `ns` of work.
    void Out(const FrameTimes& times, bool shows, int64_t ns, bool accepted = true) {
        now += ns;
        log_.OutBegins();
        now += 77'000'000;  // the writer's
        log_.OutEnds(times, shows, accepted);
    }
    void Done(bool accepted = true) {
        now += 500'000;
        log_.FrameDone(accepted);
    }

    // Behind the heading.
    std::string Text() {
        EXPECT_EQ(log_.Finish(), IoResult::Ok);
        const std::string text(reinterpret_cast<const char*>(store_.bytes.data()),
                               store_.bytes.size());
        const size_t heading = sizeof(kHeading) - 1;
        EXPECT_EQ(text.substr(0, heading), kHeading);
        return text.substr(std::min(heading, text.size()));
    }

    MemoryStore store_;
    FrameLog log_{store_, Now};
};

TEST_F(FrameLogTest, TakenRepeatedDropped) {
    log_.FrameIn({0, 400'000});
    Out({0, 200'000}, true, 1'234'567);
    Done();
    log_.FrameIn({400'000, 800'000});
    Out({200'000, 400'000}, true, 2'000'000);
    Out({400'000, 600'000}, false, 3'000);
    Done();
    log_.FrameIn({900'000, 1'000'000});
    Done();
    log_.FrameIn({1'000'000, 1'100'000});
    Out({600'000, 800'000}, false, 10'000);
    Done();
    EXPECT_EQ(Text(),
              "0,0.0000000,0.0400000,0,0.0000000,0.0200000,taken,1.234\n"
              "1,0.0400000,0.0800000,1,0.0200000,0.0400000,taken,2.000\n"
              "1,0.0400000,0.0800000,2,0.0400000,0.0600000,repeated,0.003\n"
              "2,0.0900000,0.1000000,,,,dropped,0.500\n"
              "3,0.1000000,0.1100000,3,0.0600000,0.0800000,repeated,0.010\n"
              "3,0.1000000,0.1100000,,,,dropped,0.510\n");
    EXPECT_EQ(log_.LineCount(), 6u);
}

// Without both times, the first frame that comes out counts as its picture.
TEST_F(FrameLogTest, UnknownAndNegativeTimes) {
    log_.FrameIn({});
    Out({}, false, 0);
    Out({-1, {}}, false, -5);
    Done();
    log_.FrameIn({INT64_MIN, INT64_MAX});
    Out({-10'000'001, 5}, true, 0);
    Done();
    EXPECT_EQ(Text(),
              "0,,,0,,,taken,0.000\n"
              "0,,,1,-0.0000001,,repeated,0.000\n"
              "1,-922337203685.4775808,922337203685.4775807,2,-1.0000001,0.0000005,"
              "taken,0.000\n");
}

TEST_F(FrameLogTest, WhatWasRefusedIsNoFrame) {
    log_.FrameIn({0, 1});
    Out({0, 1}, false, 0, false);
    Done(false);
    log_.FrameIn({1, 2});
    Out({1, 2}, true, 0);
    Done();
    EXPECT_EQ(Text(),
              "0,0.0000001,0.0000002,0,0.0000001,0.0000002,taken,"
              "0.000\n");
}

TEST_F(FrameLogTest, WrittenInBlocksAsItGoes) {
    constexpr int kLines = 20'000;
    for (int n = 0; n < kLines; ++n) {
        log_.FrameIn({n, n + 1});
        Done();
        if (n == kLines / 2) {
            EXPECT_GT(store_.bytes.size(), 300'000u);
        }
    }
    EXPECT_LT(store_.writes, 20);
    const std::string text = Text();
    EXPECT_EQ(static_cast<int>(std::ranges::count(text, '\n')), kLines);
    EXPECT_NE(text.find("\n19999,0.0019999,0.0020000,,,,dropped,0.500\n"), std::string::npos);
}

TEST_F(FrameLogTest, AFullDiskIsTold) {
    store_.capacity = 100'000;
    for (int n = 0; n < 20'000; ++n) {
        log_.FrameIn({n, n + 1});
        Done();
    }
    EXPECT_EQ(log_.Finish(), IoResult::DiskFull);
    EXPECT_EQ(store_.bytes.size(), 100'000u);
    EXPECT_EQ(store_.writes, 2);
}

}  // namespace
}  // namespace tavo
