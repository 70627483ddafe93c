// Handles of this process, to find those that are left behind.
//
//   const int before = HandlesInUse();
//   ... many rounds of something ...
//   EXPECT_EQ(HandlesInUse(), before);
#pragma once

namespace tavo_test {

// Up to a constant; only differences mean something.
int HandlesInUse();

}  // namespace tavo_test
