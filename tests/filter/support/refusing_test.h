// Fixture of tests in which each request of the module to the platform is refused in turn.
//
//   TEST_F(FooTest, Connecting) {
//       WithEveryRefusal([this] {
//           FilterRig rig;
//           FailsOrWorks([&] { return rig.Connect(type); });
//           EXPECT_EQ(rig.sink->pin().connected(), !refused_) << names_;
//       });
//   }
#pragma once

#include <cstdio>
#include <string>

#include "tests/filter/support/failing_imports.h"

namespace tavo_test {

class RefusingTest : public FilterTest {
  protected:
    void TearDown() override {
        EXPECT_EQ(imports_.Held(), "");
        FilterTest::TearDown();
        std::printf("  refused until now: %s\n", FailingImports::AllRefusedText().c_str());
    }

    // Runs the round with its first request refused, then its second, and so on until none is: each
    // alone, and each with all after it. The round says where requests are to be refused, with one
    // of the calls below. With a stride only some of the requests are refused after the first few.
    template <typename Round>
    void WithEveryRefusal(Round round, int stride = 1) {
        for (const Refuse refuse : {Refuse::OnlyNext, Refuse::AllLater}) {
            int allowed = 0;
            for (refused_ = true; refused_ && !HasFatalFailure();
                 allowed += allowed < 5 ? 1 : stride) {
                ASSERT_LT(allowed, 1000);
                SCOPED_TRACE(testing::Message()
                             << allowed << " allowed, then "
                             << (refuse == Refuse::AllLater ? "none" : "one not"));
                refused_ = false;
                allowed_ = allowed;
                refuse_ = refuse;
                round();
                EXPECT_EQ(imports_.Held(), "") << names_;
            }
            EXPECT_GT(allowed, 1) << "nothing was asked for: nothing was tested";
        }
    }

    // Calls it while requests are refused, and tells how many were.
    template <typename Call>
    int Failing(Call call) {
        const FailingImports::Window window(imports_, allowed_, refuse_);
        call();
        const int refused = window.refused();
        refused_ = refused_ || refused > 0;
        names_ = window.names();
        return refused;
    }

    // A call that cannot do without: it fails when anything is refused.
    template <typename Call>
    void FailsOrWorks(Call call) {
        const bool refused = Failing([&] { result_ = call(); }) > 0;
        if (refused) {
            EXPECT_TRUE(FAILED(result_)) << names_;
        } else {
            EXPECT_TRUE(SUCCEEDED(result_)) << std::hex << result_;
        }
    }

    // A call that has another way: it must work when nothing is refused.
    template <typename Call>
    void WorksOrFails(Call call) {
        const bool refused = Failing([&] { result_ = call(); }) > 0;
        EXPECT_TRUE(refused || SUCCEEDED(result_)) << std::hex << result_;
    }

    FailingImports imports_;
    bool refused_ = false;   // in this round
    HRESULT result_ = S_OK;  // of the last call
    std::string names_;      // of what was refused then

  private:
    int allowed_ = 0;
    Refuse refuse_ = Refuse::OnlyNext;
};

}  // namespace tavo_test
