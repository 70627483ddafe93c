// Makes `new (std::nothrow)` fail, to reach the paths that answer E_OUTOFMEMORY.
//
//   { FailNothrowNew fail; EXPECT_EQ(filter->EnumPins(&pins), E_OUTOFMEMORY); }
//   { FailNothrowNew fail(1); ... }            // the first succeeds, the others fail
//
// Concerns the calling thread, and code linked into the same program (not other modules). Plain
// `new` is left alone.
#pragma once

namespace tavo_test {

class FailNothrowNew {
  public:
    explicit FailNothrowNew(int after = 0);
    ~FailNothrowNew();
    FailNothrowNew(const FailNothrowNew&) = delete;
    FailNothrowNew& operator=(const FailNothrowNew&) = delete;
    int refused() const;
};

}  // namespace tavo_test
