// The enumerator handler and the array enumerator where the language cannot
// reach: empty arrays, the storage share it holds, objects with their own
// enumerator.
#include "builtins/handlers.h"
#include "objects/array_enumerator.h"
#include "objects/object.h"
#include "tests/unit/support/error_number.h"
#include "tests/unit/vm/vm_test_support.h"
#include "values/symtable.h"
#include "vm/param_window.h"

using namespace zobase;
using namespace zobase::testing;

namespace {


// Answers get_enumerator with an integer, or raises when asked to.
class EnumerableObject : public Object {
public:
    unsigned called_symbol = 0;
    size_t called_argc = 99;
    bool fail = false;

    void virtual_call(VmStack*, unsigned symbol, size_t argc, Variant* ret) override {
        called_symbol = symbol;
        called_argc = argc;
        if (fail) throw RuntimeError(2061);
        ret->set_integer(7);
    }
    void virtual_access(VmStack*, unsigned, size_t, Variant*) override {}
    void virtual_access_ref(VmStack*, unsigned, size_t, Variant*) override {}
    void virtual_assign(VmStack*, unsigned, size_t) override {}
};

class ArrayEnumeratorTest : public VmFixture {
protected:
    TestClasses classes;
    uint32_t SYM_MOVENEXT;

    ArrayEnumeratorTest() {
        install_object_destruction();
        classes.add(resolver, "Array.Iterator", &array_enumerator_class_data, array_enumerator_members);
        SYM_MOVENEXT = classes.symbols.symbolize("MoveNext");
    }
    // The result may hold an enumerator: it goes before its class does.
    ~ArrayEnumeratorTest() override { result.release(&stack); }

    // get_enumerator(value) as a native call with one argument.
    void get_enumerator(const Variant& value) {
        Memvar* mark = stack.esp;
        stack.push()->set_variant(&value);
        {
            ParamWindow window(&stack, stack.esp + 1, 1);
            try {
                stackcall_get_enumerator(&stack, 1, &result);
            } catch (...) {
                stack.pop_to(mark);
                throw;
            }
        }
        stack.pop_to(mark);
    }

    bool move_next() {
        Variant answer;
        static_cast<Object*>(result)->virtual_call(&stack, SYM_MOVENEXT, 0, &answer);
        return static_cast<bool>(answer);
    }
};

TEST_F(ArrayEnumeratorTest, EmptyArrayHasNoRoundAndStaysAtTheEnd) {
    Variant empty;
    empty.tag = TAG_ARRAY;
    empty.array = Array::create(0, 0);
    get_enumerator(empty);
    EXPECT_FALSE(move_next());
    EXPECT_FALSE(move_next());
    empty.release(&stack);
}

TEST_F(ArrayEnumeratorTest, HoldsAShareOfTheStorageUntilDestroyed) {
    Variant array;
    array.tag = TAG_ARRAY;
    array.array = Array::create(2, 0);
    array_storage_st* storage = array.array.storage;
    get_enumerator(array);
    EXPECT_EQ(storage->shares, 2u);
    EXPECT_TRUE(move_next());
    result.release(&stack);
    EXPECT_EQ(storage->shares, 1u);
    array.release(&stack);
}

TEST_F(ArrayEnumeratorTest, ObjectIsAskedForItsOwnEnumerator) {
    auto* object = new EnumerableObject;
    Variant value;
    wrap_new_object(object, &value);
    Memvar* depth = stack.esp;
    get_enumerator(value);
    EXPECT_EQ(object->called_symbol, SYMBOL_GET_ENUMERATOR);
    EXPECT_EQ(object->called_argc, 0u);
    EXPECT_EQ(static_cast<integer_type_st>(result), 7);
    result.release(&stack);
    object->fail = true;
    EXPECT_EQ(error_number_of([&] { get_enumerator(value); }), 2061);
    EXPECT_EQ(stack.esp, depth);
    EXPECT_EQ(value.object.control->use_count(), 1u);
    value.release(&stack);
}

TEST_F(ArrayEnumeratorTest, NullObjectIsError11) {
    Variant nothing;
    nothing.tag = TAG_OBJECT;
    nothing.object = {nullptr, nullptr};
    EXPECT_EQ(error_number_of([&] { get_enumerator(nothing); }), 11);
}

}  // namespace
