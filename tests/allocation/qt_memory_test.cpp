// SPDX-License-Identifier: MIT
// What the driver relies on in QtCore: where malloc has nothing left, QtCore throws and what was there stays.
// None of the operations that the driver uses was found that goes on with a null pointer instead.
#include "allocation/failing_allocation.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <new>

namespace
{

// More than any capacity that a short value comes with.
const int LONG = 1000;

class QtWithoutMemory : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!AllocationWatch::coversMalloc())
            GTEST_SKIP() << "with a sanitizer malloc is not replaced";
    }

    /// Calls with the first allocation failing, then the second and so on. \return how many there were
    static int failures(const std::function<void()>& operation)
    {
        for (int nth = 1;; ++nth)
            if (!throwsAt(nth, operation))
                return nth - 1;
    }

private:
    static bool throwsAt(int nth, const std::function<void()>& operation)
    {
        AllocationWatch watch(nth);
        try {
            operation();
            EXPECT_FALSE(AllocationWatch::failed()) << "allocation " << nth << " was not missed";
            return false;
        } catch (const std::bad_alloc&) {
            return true;
        }
    }
};

} // namespace

TEST_F(QtWithoutMemory, AnArrayThatCannotGrowStaysAsItWas)
{
    QByteArray bytes("12");
    {
        AllocationWatch watch(1);
        EXPECT_THROW(bytes.resize(LONG), std::bad_alloc);
    }
    EXPECT_EQ(QByteArray("12"), bytes);
}

TEST_F(QtWithoutMemory, MakingArraysThrows)
{
    EXPECT_EQ(1, failures([] { QByteArray(LONG, '\0'); }));
    EXPECT_EQ(1, failures([] { QByteArray().reserve(LONG); }));
    const QByteArray value(LONG, '\1');
    EXPECT_EQ(1, failures([&value] { QByteArray part = value.mid(1, 7); }));
}

TEST_F(QtWithoutMemory, ChangingASharedArrayThrows)
{
    QByteArray bytes("12");
    const QByteArray shared = bytes;
    {
        AllocationWatch watch(1, Failing::ONE_AND_ALL_LATER);
        EXPECT_THROW(bytes.data(), std::bad_alloc);
        EXPECT_THROW(bytes.append('3'), std::bad_alloc);
    }
    EXPECT_EQ(shared, bytes);
}

TEST_F(QtWithoutMemory, ATextOfManyDigitsThrowsRatherThanBeingCut)
{
    const QString text(LONG, QLatin1Char('0'));
    EXPECT_GT(failures([&text] { text.toInt(nullptr, 10); }), 0);
}

TEST_F(QtWithoutMemory, SplittingATextThrows)
{
    const QString text("10.3");
    EXPECT_GT(failures([&text] { QStringList parts = text.split(QLatin1Char('.')); }), 2);
}

// The slot first, then the node.
TEST_F(QtWithoutMemory, AListThatCannotTakeAnEntryStaysAsItWas)
{
    struct Large {
        int words[15];
    };
    QList<Large> list;
    for (int nth : {1, 2}) {
        AllocationWatch watch(nth);
        EXPECT_THROW(list.append(Large()), std::bad_alloc);
        EXPECT_EQ(0, list.size());
    }
}

TEST_F(QtWithoutMemory, AMapThatCannotTakeAnEntryStaysAsItWas)
{
    QMap<int, int> map;
    map.insert(1, 2);
    {
        AllocationWatch watch(1);
        EXPECT_THROW(map.insert(3, 4), std::bad_alloc);
    }
    EXPECT_EQ(1, map.size());
    EXPECT_EQ(2, map.value(1));
}
