// Runs tests with COM initialised.

#include <gtest/gtest.h>

#include "tests/support/com_ptr.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    tavo_test::ComApartment com;
    return RUN_ALL_TESTS();
}
