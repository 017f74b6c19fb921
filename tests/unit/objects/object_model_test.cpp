// The object model where the language can't reach it: member tables shared
// until an instance adds its own, the visibility levels and the call
// context's modes, objects made from C++, iterators over a collection that
// changes under them, and threads that are misused.
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "objects/collection_object.h"
#include "objects/object.h"
#include "objects/thread_object.h"
#include "runtime/runtime.h"
#include "tests/unit/runtime/runtime_test_support.h"
#include "tests/unit/support/error_number.h"
#include "values/symtable.h"
#include "vm/param_window.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

void answer_seven(VmStack*, unsigned long long, Variant* ret) { ret->set_integer(7LL); }

// An argument value that lets go of what it holds: copies count, like the
// language's copies do.
struct Value {
    Variant variant;
    Value() = default;
    Value(const Value& other) { other.variant.copy(&variant); }
    Value& operator=(const Value&) = delete;
    ~Value() { variant.release(nullptr); }
};

Value integer(long long number) {
    Value v;
    v.variant.set_integer(number);
    return v;
}

Value text(const char* characters) {
    Value v;
    v.variant.set_string(String(characters));
    return v;
}

class ObjectModel : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    VmStack* stack = runtime->get_main_stack();
    std::deque<Variant> values;  // released at the end; a deque, since copies of values count

    ~ObjectModel() override {
        for (Variant& value : values) value.release(stack);
        ReleaseRuntime(runtime);
    }

    unsigned sym(const char* name) { return runtime->symbols().symbolize(String(name)); }

    Object* make(const char* class_name) {
        values.emplace_back();
        CreateObject(stack, String(class_name), nullptr, 0, &values.back());
        return values.back().tag == TAG_OBJECT ? static_cast<Object*>(values.back()) : nullptr;
    }

    // A member as the VM asks it: the object's slot, the arguments above it.
    template <class Ask>
    Variant ask(Object* object, const std::vector<Value>& args, Ask ask_member) {
        Memvar* mark = stack->esp;
        stack->push()->set(object->self());
        Memvar* slot = stack->esp;
        for (const Value& arg : args) arg.variant.copy(stack->push());
        Variant result;
        try {
            ParamWindow window(stack, slot, args.size());
            ask_member(args.size(), &result);
        } catch (...) {
            stack->pop_to(mark);
            throw;
        }
        stack->pop_to(mark);
        return result;
    }
    Variant call(Object* object, const char* member, const std::vector<Value>& args = {}) {
        unsigned symbol = sym(member);
        return ask(object, args,
                   [&](size_t argc, Variant* ret) { object->virtual_call(stack, symbol, argc, ret); });
    }
    Variant read(Object* object, const char* member) {
        unsigned symbol = sym(member);
        return ask(object, {}, [&](size_t argc, Variant* ret) { object->virtual_access(stack, symbol, argc, ret); });
    }
    void write(Object* object, const char* member, const Value& value) {
        unsigned symbol = sym(member);
        ask(object, {value}, [&](size_t argc, Variant*) { object->virtual_assign(stack, symbol, argc); });
    }
};

}  // namespace

TEST_F(ObjectModel, DefineAppendsPublicMembersOfNoTypeAndFindsThemWithoutCase) {
    Class made(String("Probe"), sym("Probe"), nullptr);
    ClassMember* first = made.define(String("Width"));
    EXPECT_EQ(first->index, 0u);
    EXPECT_EQ(first->type, MEMBER_UNDEFINED);
    EXPECT_EQ(first->visibility, MEMBER_PUBLIC);
    EXPECT_EQ(made.define(String("WIDTH")), first);
    EXPECT_EQ(made.define(String("height"))->index, 1u);
    EXPECT_EQ(made.find(String("HEIGHT"))->name.u8str(), "height");
    EXPECT_EQ(error_number_of([&] {
                  Object* out;
                  made.create_instance(stack, &out);
              }),
              ERR_CLASS_ABSTRACT);
}

TEST_F(ObjectModel, AddedMembersCopyTheTablesOnceAndLeaveOtherInstancesAlone) {
    Object* a = make("Custom");
    Object* b = make("Custom");
    const member_tables_st* shared = a->object_class->member_tables();
    ASSERT_EQ(a->tables.load(), shared);
    Value red = text("red");
    a->addproperty(stack, sym("cColor"), &red.variant);
    const member_tables_st* own = a->tables.load();
    EXPECT_NE(own, shared);
    EXPECT_EQ(b->tables.load(), shared);
    EXPECT_EQ(shared->members.size() + 1, own->members.size());
    a->addproperty(stack, sym("nSize"), nullptr);
    EXPECT_EQ(a->added->tables.size(), 2u) << "the older table stays alive for running handlers";
    Variant color = read(a, "cColor");
    EXPECT_EQ(color.str().u8str(), "red");
    color.release(stack);
    EXPECT_EQ(error_number_of([&] { read(b, "cColor"); }), ERR_PROPERTY_NOT_FOUND);
}

TEST_F(ObjectModel, AddPropertyAssignsWhereTheNameHasAnAssignHandler) {
    Object* collection = make("Collection");
    Value order = integer(2);
    collection->addproperty(stack, sym("KeySort"), &order.variant);
    EXPECT_EQ(read(collection, "KeySort").integer, 2);
    EXPECT_FALSE(collection->added) << "no member was added";
}

TEST_F(ObjectModel, RemovedPropertyUncoversTheClassMemberItHid) {
    Object* object = make("Custom");
    Value mine = text("mine");
    object->addproperty(stack, sym("Class"), &mine.variant);  // no assign handler: a new member hides it
    Variant hidden = read(object, "Class");
    EXPECT_EQ(hidden.str().u8str(), "mine");
    hidden.release(stack);
    object->removeproperty(stack, String("class"));
    Variant shown = read(object, "Class");
    EXPECT_EQ(shown.str().u8str(), "Custom");
    shown.release(stack);
    EXPECT_EQ(error_number_of([&] { object->removeproperty(stack, String("Class")); }), ERR_PROPERTY_IS_CLASS_MEMBER);
    EXPECT_EQ(error_number_of([&] { object->removeproperty(stack, String("nothing")); }), ERR_PROPERTY_NOT_FOUND);
}

TEST_F(ObjectModel, HiddenNeedsTheHoldingLinkProtectedTheSameObject) {
    Object* object = make("Custom");
    Object* other = make("Custom");
    ClassMember member;
    member.visibility = MEMBER_HIDDEN;
    EXPECT_FALSE(member_visible(stack, object, object, &member));
    stack->context.this_object = object;
    EXPECT_FALSE(member_visible(stack, object, object, &member)) << "a subclass's method";
    stack->context.class_object = object;
    EXPECT_TRUE(member_visible(stack, object, object, &member));
    EXPECT_FALSE(member_visible(stack, other, other, &member)) << "another instance";
    member.visibility = MEMBER_PROTECTED;
    stack->context.class_object = nullptr;
    EXPECT_TRUE(member_visible(stack, object, object, &member));
    EXPECT_FALSE(member_visible(stack, other, other, &member));
    stack->context = {};
}

TEST_F(ObjectModel, TheSameMemberOfTheSameLinkInTheSameModeGoesInside) {
    Object* object = make("Custom");
    ClassMember x, y;
    x.symbol = sym("x");
    y.symbol = sym("y");
    {
        MemberScope outer(stack, object, object, &x, MEMBER_MODE_ACCESS);
        {
            MemberScope inner(stack, object, object, &x, MEMBER_MODE_ACCESS);
            EXPECT_EQ(stack->context.mode, MEMBER_MODE_ACCESS_INSIDE);
        }
        {
            MemberScope write(stack, object, object, &x, MEMBER_MODE_ASSIGN);
            EXPECT_EQ(stack->context.mode, MEMBER_MODE_ASSIGN) << "another mode is a new entry";
        }
        {
            MemberScope other(stack, object, object, &y, MEMBER_MODE_ACCESS);
            EXPECT_EQ(stack->context.member, &y);
            EXPECT_EQ(stack->context.mode, MEMBER_MODE_ACCESS);
        }
        try {
            MemberScope failing(stack, object, object, &y, MEMBER_MODE_CALL);
            throw RuntimeError(ERR_ARGUMENT_INVALID);
        } catch (const RuntimeError&) {
        }
        EXPECT_EQ(stack->context.member, &x) << "restored when the member fails";
    }
    EXPECT_EQ(stack->context.this_object, nullptr);
}

TEST_F(ObjectModel, BuiltinRowsMakeMethodsAndReadOnlyProperties) {
    const library_class_member_row_st rows[] = {
        {"Seven", answer_seven, nullptr, nullptr, nullptr},
        {"Fixed", nullptr, answer_seven, nullptr, nullptr},
        {nullptr, nullptr, nullptr, nullptr, nullptr},
    };
    const builtin_class_data_st data = {[](VmStack*, Class* c) { return new Object(c); }, false};
    std::unique_ptr<Class> made(create_builtin_class(runtime->symbols(), "Probe", &data, rows));
    Object* object = nullptr;
    made->create_instance(stack, &object);
    values.emplace_back();
    wrap_new_object(object, &values.back());
    EXPECT_EQ(call(object, "Seven").integer, 7);
    EXPECT_EQ(read(object, "Fixed").integer, 7);
    EXPECT_EQ(error_number_of([&] { write(object, "Fixed", integer(1)); }), ERR_PROPERTY_READ_ONLY);
    EXPECT_EQ(error_number_of([&] { read(object, "Seven"); }), ERR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(error_number_of([&] { call(object, "Fixed"); }), ERR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(error_number_of([&] {
                  unsigned fixed = sym("Fixed");
                  ask(object, {}, [&](size_t argc, Variant* ret) { object->virtual_access_ref(stack, fixed, argc, ret); });
              }),
              ERR_PROPERTY_POINTER);
    values.back().release(stack);
    values.pop_back();
}

TEST_F(ObjectModel, IteratorsKeepTheirEntryAndSurviveRemovalsAroundThem) {
    Object* collection = make("Collection");
    for (const char* key : {"a", "b", "c", "d"}) call(collection, "Add", {text(key), text(key)});
    for (long long order : {KEYSORT_INDEX_REVERSE, KEYSORT_KEY_REVERSE}) {
        write(collection, "KeySort", integer(order));
        Variant iterator = call(collection, "get_enumerator");
        Object* walk = static_cast<Object*>(iterator);
        EXPECT_TRUE(call(walk, "MoveNext").tag == TAG_TRUE);
        Variant last = read(walk, "Value");
        EXPECT_EQ(last.str().u8str(), "d");
        last.release(stack);
        call(collection, "Remove", {text("d")});
        Variant kept = read(walk, "Value");
        EXPECT_EQ(kept.str().u8str(), "d") << "the entry as MoveNext found it";
        kept.release(stack);
        EXPECT_TRUE(call(walk, "MoveNext").tag == TAG_TRUE);
        Variant next = read(walk, "Value");
        EXPECT_EQ(next.str().u8str(), "c");
        next.release(stack);
        call(collection, "Remove", {integer(-1)});
        EXPECT_TRUE(call(walk, "MoveNext").tag == TAG_FALSE);
        EXPECT_TRUE(call(walk, "MoveNext").tag == TAG_FALSE);
        EXPECT_EQ(error_number_of([&] { read(walk, "Value"); }), ERR_COLLECTION_MEMBER_NOT_FOUND);
        iterator.release(stack);
        for (const char* key : {"a", "b", "c", "d"}) call(collection, "Add", {text(key), text(key)});
    }
}

TEST_F(ObjectModel, CollectionArgumentsOutOfShapeAre11) {
    Object* collection = make("Collection");
    EXPECT_EQ(error_number_of([&] { call(collection, "Add"); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_number_of([&] { call(collection, "Add", {integer(1), integer(2)}); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_number_of([&] { call(collection, "Add", {integer(1), text(""), integer(1), integer(1)}); }),
              ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_number_of([&] { call(collection, "Item", {Value()}); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(error_number_of([&] { write(collection, "KeySort", integer(-1)); }), ERR_ARGUMENT_INVALID);
    EXPECT_EQ(read(collection, "Count").integer, 0);
}

TEST_F(ObjectModel, ThreadMisuseIsReportedNotFatal) {
    Object* thread = make("Thread");
    EXPECT_EQ(call(thread, "join").tag, TAG_TRUE) << "never started: nothing to wait for";
    call(thread, "start");
    call(thread, "join");
    EXPECT_NE(screen.errors.find("Property run not found"), std::string::npos) << screen.errors;
    EXPECT_GE(read(thread, "ThreadId").integer, 2);
}
