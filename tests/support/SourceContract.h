#pragma once

#include "TestHelpers.h"

#include <gtest/gtest.h>

/// What every source promises. `source` is empty and can be read and written.
inline void expectSourceContract(KelbIOSource& source)
{
    EXPECT_EQ(readBytes(source, 1), "");
    EXPECT_TRUE(source.eof());
    source.rewind();
    EXPECT_EQ(source.write("0123456789", 10), 10u);
    source.skip(-8);
    EXPECT_EQ(source.size(), 10u);
    EXPECT_EQ(source.tell(), 2u) << "size moved the position";
    EXPECT_EQ(readBytes(source, 3), "234");
    source.skip(2);
    EXPECT_EQ(readBytes(source, 3), "789");
    EXPECT_FALSE(source.eof()) << "the end is met by a short read, not by the position";
    EXPECT_EQ(readBytes(source, 1), "");
    EXPECT_TRUE(source.eof());
    source.seek(4);
    EXPECT_FALSE(source.eof());
    EXPECT_EQ(source.write("xy", 2), 2u);
    EXPECT_EQ(readBytes(source, 1), "6");
    EXPECT_EQ(source.write("!", 1), 1u) << "reads and writes may follow each other";
    source.rewind();
    EXPECT_EQ(readBytes(source, 99), "0123xy6!89");
    source.seekToEnd();
    source.skip(2);
    EXPECT_EQ(source.write("z", 1), 1u);
    source.seek(9);
    EXPECT_EQ(readBytes(source, 9), std::string("9\0\0z", 4)) << "the gap behind the end";
    EXPECT_FALSE(source.hasError());
}
