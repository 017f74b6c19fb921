// The control record's two counts: a reference to a dying object can't
// revive it, destruction runs once however DESTROY juggles references, and
// the record outlives the object for as long as anything holds it.
#include <gtest/gtest.h>

#include <vector>

#include "values/object_ref.h"

using namespace zobase;

namespace {

struct destruction_log_st {
    int destroyed = 0;
    std::vector<object_ptr_st> kept;  // references the "DESTROY" keeps
    bool take_and_drop = false;       // DESTROY takes a reference and drops it
    bool try_acquire_seen = true;
};

destruction_log_st* log_of_test = nullptr;

void counting_hook(VmStack* stack, const object_ptr_st& ptr) {
    destruction_log_st& log = *log_of_test;
    ++log.destroyed;
    EXPECT_EQ(ptr.control->use_count(), 1u) << "the destruction is lent one use";
    log.try_acquire_seen = object_ptr_try_acquire(ptr);
    if (log.take_and_drop) {
        object_ptr_st again = ptr;
        object_ptr_acquire(again);
        object_ptr_release(stack, again);
    }
    for (object_ptr_st& keep : log.kept) {
        keep = ptr;
        object_ptr_acquire(keep);
    }
    object_ptr_end_destruction(ptr);
}

class ObjectRef : public ::testing::Test {
protected:
    destruction_log_st log;
    object_destroy_hook saved = destroy_object_hook;
    Object* const object = reinterpret_cast<Object*>(&log);  // never looked at

    ObjectRef() {
        log_of_test = &log;
        destroy_object_hook = counting_hook;
    }
    ~ObjectRef() override { destroy_object_hook = saved; }

    object_ptr_st fresh() { return {new object_control_st, object}; }
};

}  // namespace

TEST_F(ObjectRef, LastReleaseDestroysOnceAndFreesTheRecord) {
    object_ptr_st first = fresh();
    object_ptr_st second = first;
    object_ptr_acquire(second);
    EXPECT_EQ(first.control->use_count(), 2u);
    EXPECT_EQ(first.control->record_count(), 2u);
    object_ptr_release(nullptr, first);
    EXPECT_EQ(first.control, nullptr);
    EXPECT_EQ(log.destroyed, 0);
    object_ptr_release(nullptr, second);
    EXPECT_EQ(log.destroyed, 1);
    EXPECT_FALSE(log.try_acquire_seen) << "a dying object can't be taken from its record";
}

TEST_F(ObjectRef, DestroyTakingAndDroppingReferencesDoesNotDestroyTwice) {
    log.take_and_drop = true;
    object_ptr_st only = fresh();
    object_ptr_release(nullptr, only);
    EXPECT_EQ(log.destroyed, 1);
}

TEST_F(ObjectRef, AReferenceKeptByDestroyOutlivesTheObjectButCannotReviveIt) {
    log.kept.resize(1);
    object_ptr_st only = fresh();
    object_ptr_release(nullptr, only);
    ASSERT_EQ(log.destroyed, 1);
    object_ptr_st& kept = log.kept[0];
    EXPECT_FALSE(object_alive(kept));
    EXPECT_EQ(kept.control->record_count(), 1u);
    object_ptr_st copy = kept;
    object_ptr_acquire(copy);
    EXPECT_EQ(copy.control->use_count(), 0u) << "no use is added to a dead object";
    EXPECT_EQ(copy.control->record_count(), 2u);
    object_ptr_release(nullptr, copy);
    object_ptr_release(nullptr, kept);
    EXPECT_EQ(log.destroyed, 1);
}

TEST_F(ObjectRef, AnExtraUseKeepsTheObjectAndItsRecordPastEveryHolder) {
    object_ptr_st holder = fresh();
    object_ptr_add_use(holder);
    object_ptr_st record_only = holder;  // the record, as an instance set knows it
    object_ptr_release(nullptr, holder);
    EXPECT_EQ(log.destroyed, 0);
    ASSERT_TRUE(object_alive(record_only)) << "the record stays while a use remains";
    ASSERT_TRUE(object_ptr_try_acquire(record_only));
    object_ptr_drop_use(nullptr, record_only);
    EXPECT_EQ(log.destroyed, 0) << "the acquired reference still holds it";
    object_ptr_release(nullptr, record_only);
    EXPECT_EQ(log.destroyed, 1);
}

TEST_F(ObjectRef, DroppingTheLastUseDestroysWhileAHolderStillHasTheRecord) {
    object_ptr_st holder = fresh();
    object_ptr_drop_use(nullptr, holder);
    EXPECT_EQ(log.destroyed, 1);
    EXPECT_FALSE(object_alive(holder));
    EXPECT_EQ(holder.control->record_count(), 1u);
    object_ptr_release(nullptr, holder);
    EXPECT_EQ(log.destroyed, 1);
}
