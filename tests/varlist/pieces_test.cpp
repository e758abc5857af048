// SPDX-License-Identifier: MIT
#include "varlist/pieces.h"

#include <gtest/gtest.h>

#include <climits>

TEST(ServableCount, CutsWhatNoAreaHolds)
{
    struct Row {
        const char* what;
        int area;
        CountUse use;
        int most;
    };
    const Row rows[] = {
        {"bits read", 2, COUNT_OF_READ, 65535},
        {"bits written", 2, COUNT_OF_QUEUED_WRITE, 65535},
        {"bits of words read", 8, COUNT_OF_READ, 1048560},
        {"bits of words written", 8, COUNT_OF_QUEUED_WRITE, 1048560},
        {"words read", 9, COUNT_OF_READ, 65535},
        {"words written", 13, COUNT_OF_QUEUED_WRITE, 65535},
        {"double words read", 14, COUNT_OF_READ, 65536},
        {"double words written, in words", 14, COUNT_OF_QUEUED_WRITE, 131070},
        {"double words", 14, COUNT_OF_ELEMENTS, 65535},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.most, ServableCount(row.area, INT_MAX, row.use));
        EXPECT_EQ(row.most, ServableCount(row.area, row.most + 1, row.use));
        EXPECT_EQ(row.most, ServableCount(row.area, row.most, row.use));
        EXPECT_EQ(row.most - 1, ServableCount(row.area, row.most - 1, row.use));
        EXPECT_EQ(1, ServableCount(row.area, 1, row.use));
    }
}

TEST(ServableCount, LeavesCountsOf0OrLess)
{
    for (int count : {0, -1, INT_MIN})
        EXPECT_EQ(count, ServableCount(9, count, COUNT_OF_READ));
}

TEST(CutIntoPieces, CountsPiecesAndTheLastOne)
{
    struct Row {
        int count, limit;
        int number, first, last;
    };
    const Row rows[] = {
        {250, 100, 3, 100, 50},
        {200, 100, 2, 100, 100},
        {100, 100, 1, 100, 100},
        {99, 100, 1, 99, 99},
        {101, 100, 2, 100, 1},
        {3, 1, 3, 1, 1},
        {INT_MAX, INT_MAX, 1, INT_MAX, INT_MAX},
        {5, INT_MAX, 1, 5, 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.count) + " by " + std::to_string(row.limit));
        const Pieces pieces = CutIntoPieces(row.count, row.limit);
        EXPECT_EQ(row.number, pieces.number);
        EXPECT_EQ(row.first, pieces.count(0));
        EXPECT_EQ(row.last, pieces.count(row.number - 1));
    }
}

TEST(CutIntoPieces, FormsNoPieceForACountOf0OrLess)
{
    for (int count : {0, -1, -100, INT_MIN}) {
        for (int limit : {100, 1, 0, -1, -100, INT_MIN, INT_MAX})
            EXPECT_EQ(0, CutIntoPieces(count, limit).number) << count << " by " << limit;
    }
}

TEST(CutIntoPieces, IsOnePieceWithoutLimit)
{
    for (int limit : {0, -1, -100, INT_MIN}) {
        SCOPED_TRACE(limit);
        const Pieces pieces = CutIntoPieces(250, limit);
        EXPECT_EQ(1, pieces.number);
        EXPECT_EQ(250, pieces.count(0));
        EXPECT_EQ(7, pieces.begin(7, 0));
    }
}

TEST(CutIntoPieces, PiecesFollowEachOther)
{
    const Pieces pieces = CutIntoPieces(250, 100);
    EXPECT_EQ(7, pieces.begin(7, 0));
    EXPECT_EQ(107, pieces.begin(7, 1));
    EXPECT_EQ(207, pieces.begin(7, 2));
}

TEST(CutIntoPieces, BeginningsWrapAt32Bits)
{
    EXPECT_EQ(INT_MIN, CutIntoPieces(2, 1).begin(INT_MAX, 1));
}

TEST(WordsOfBits, CountsTheWordsThatBitsTouch)
{
    struct Row {
        int address, count, words;
    };
    const Row rows[] = {
        {0, 1, 1},   {0, 16, 1}, {0, 17, 2}, {15, 1, 1}, {15, 2, 2}, {163, 20, 2}, {1, 16, 2},
        {16, 16, 1}, {5, 0, 1},  {0, 0, 0},  {5, -4, 1}, {5, -5, 0}, {0, -1, 0},   {0, -16, -1},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.words, WordsOfBits(row.address, row.count)) << row.count << " bits at " << row.address;
}

TEST(WordsOfBits, TakesTheLargestServableCountAtAnyBit)
{
    EXPECT_EQ(65535, WordsOfBits(0, 1048560));
    EXPECT_EQ(65536, WordsOfBits(1, 1048560));
    EXPECT_EQ(65536, WordsOfBits(INT_MAX, 1048560));
}
