// Every test program's entry: failures are thrown here, as they are while the program itself runs.
#include "foundation/inc/threadobject.h"
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    Tsx::ThreadErrorMode.Get()->NoExceptions = false;
    const int result = RUN_ALL_TESTS();
    Tsx::ThreadErrorMode.Get()->NoExceptions = true;
    return result;
}
