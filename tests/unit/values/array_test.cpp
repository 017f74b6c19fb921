#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "values/error.h"
#include "tests/unit/support/error_number.h"
#include "values/variant.h"

using namespace zobase;
using zobase::testing::error_number_of;

namespace {


// A 2 by 3 array holding 1..6 in storage order.
Variant two_by_three() {
    Variant a;
    a.dimension(nullptr, 2, 3);
    for (uint64_t i = 1; i <= 6; ++i) a.array.write(nullptr, i)->set_integer(static_cast<long long>(i));
    return a;
}

}  // namespace

TEST(ArraySubscripts, BoundsAndZeroRows) {
    Variant a = two_by_three();
    EXPECT_EQ(error_number_of([&] { a.array.read(0); }), 1234);
    EXPECT_EQ(error_number_of([&] { a.array.read(0, 1); }), 11);
    EXPECT_EQ(error_number_of([&] { a.array.read(3, 1); }), 1234);
    EXPECT_EQ(error_number_of([&] { a.array.write(nullptr, 0, 1); }), 11);
    EXPECT_EQ(error_number_of([&] { a.array.write(nullptr, 7); }), 1234);
    // One subscript on two dimensions reads in storage order: element 4 is row 2, column 1.
    EXPECT_EQ(a.array.read(4)->integer, a.array.read(2, 1)->integer);
    EXPECT_EQ(a.array.asubscript_row(4), 2u);
    EXPECT_EQ(a.array.asubscript_column(4), 1u);
    a.release(nullptr);
}

TEST(ArraySharing, WritingThroughOneCopyLeavesTheOther) {
    Variant a = two_by_three();
    Variant b(a);
    EXPECT_EQ(a.array.storage, b.array.storage);
    b.array.write(nullptr, 1, 1)->set_integer(99LL);
    EXPECT_NE(a.array.storage, b.array.storage);
    EXPECT_EQ(a.array.read(1)->integer, 1);
    EXPECT_EQ(b.array.read(1)->integer, 99);
    a.release(nullptr);
    b.release(nullptr);
}

// Threads copy and drop one array, as the threads of the language do with an
// array held in a property of an object they share.
TEST(ArraySharing, CountsStayExactUnderConcurrentCopies) {
    Variant a = two_by_three();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&a] {
            for (int i = 0; i < 20000; ++i) {
                Variant copy(a);
                copy.release(nullptr);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(a.array.storage->shares.load(), 1u);
    Variant b(a);
    b.array.write(nullptr, 1)->set_integer(7LL);
    EXPECT_EQ(a.array.read(1)->integer, 1) << "a shared array is still copied on write";
    a.release(nullptr);
    b.release(nullptr);
}

TEST(ArrayDimension, RedimensionKeepsTheOverlap) {
    Variant a = two_by_three();  // rows (1 2 3) (4 5 6)
    a.dimension(nullptr, 3, 2);
    EXPECT_EQ(a.array.count, 6u);
    EXPECT_EQ(a.array.read(1, 1)->integer, 1);
    EXPECT_EQ(a.array.read(1, 2)->integer, 2);
    EXPECT_EQ(a.array.read(2, 1)->integer, 4);
    EXPECT_EQ(a.array.read(2, 2)->integer, 5);
    EXPECT_EQ(a.array.read(3, 1)->tag, TAG_FALSE);

    a.dimension(nullptr, 2, 0);  // one dimension keeps the first column
    EXPECT_EQ(a.array.columns, 0u);
    EXPECT_EQ(a.array.read(2)->integer, 4);
    a.release(nullptr);
}

TEST(ArrayDimension, StringElementsSurviveACopyAndRelease) {
    Variant a;
    a.dimension(nullptr, 2, 0);
    a.array.write(nullptr, 1)->set_string(String("kept"));
    Variant b(a);
    a.dimension(nullptr, 5, 0);
    EXPECT_EQ(a.array.read(1)->str().u8str(), "kept");
    EXPECT_EQ(b.array.read(1)->str().u8str(), "kept");
    a.release(nullptr);
    b.release(nullptr);
}
