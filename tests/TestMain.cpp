// Every test program runs offscreen with a private HOME and private XDG folders, so no
// test ever reads or writes a real user's settings or files.
#include "PrivateHome.h"
#include "app/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    const PrivateHome home("test");
    ::testing::InitGoogleTest(&argc, argv);
    Application app(argc, argv);
    return RUN_ALL_TESTS();
}
