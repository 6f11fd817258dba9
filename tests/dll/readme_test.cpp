#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "readme_example_c.h"
#include "readme_example_cpp.h"

TEST(Readme, ExampleMakesTheTenthOfAPage) {
    // Twenty columns, ten rows: the first ten columns black, by one horizontal code and nine rows below it.
    CImg32* tenth = ::tenth({0x26, 0xA1, 0x3F, 0xFF, 0xFF, 0xFC, 0x00, 0x40, 0x04}, 20, 10);
    EXPECT_TRUE(tenth != nullptr);
    if (!tenth) return;
    EXPECT_EQ(tenth->getWidth(), 2u);
    EXPECT_EQ(tenth->getHeight(), 1u);
    EXPECT_EQ(tenth->peekData()[0], 0u);
    EXPECT_EQ(tenth->peekData()[1], 0x00FFFFFFu);
    delete tenth;
}

TEST(Readme, ExampleInCMakesTheSame) {
    const unsigned char strip[] = {0x26, 0xA1, 0x3F, 0xFF, 0xFF, 0xFC, 0x00, 0x40, 0x04};
    unsigned char pixels[2] = {1, 1};
    EXPECT_EQ(grey_tenth(strip, sizeof strip, 20, 10, pixels), TP_OK);
    EXPECT_EQ(pixels[0], 0u);
    EXPECT_EQ(pixels[1], 255u);
}
