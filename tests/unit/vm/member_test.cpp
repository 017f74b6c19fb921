// Subscripts on arrays and objects, and the object instructions.
#include <vector>

#include "objects/object.h"
#include "tests/unit/vm/vm_test_support.h"
#include "values/symtable.h"
#include "vm/param.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

int objects_alive = 0;

// Answers every member with the symbol and the integer arguments it saw;
// assignments keep the last value.
class RecordingObject : public Object {
public:
    std::vector<long long> arguments;
    unsigned symbol = 0;
    long long assigned = 0;
    Variant property;
    bool answer_with_pointer = false;

    RecordingObject() { ++objects_alive; }
    ~RecordingObject() override {
        property.release(nullptr);
        --objects_alive;
    }

    void virtual_call(VmStack* stack, unsigned s, size_t argc, Variant* ret) override {
        record(stack, s, argc);
        if (answer_with_pointer) property.ref(stack, ret, nullptr);
        else ret->set_integer(static_cast<long long>(argc) * 100 + s);
    }
    void virtual_access(VmStack* stack, unsigned s, size_t argc, Variant* ret) override {
        record(stack, s, argc);
        ret->set_integer(-static_cast<long long>(s));
    }
    void virtual_access_ref(VmStack* stack, unsigned s, size_t argc, Variant* ret) override {
        record(stack, s, argc);
        if (answer_with_pointer) property.ref(stack, ret, nullptr);
        else ret->set_integer(1LL);
    }
    void virtual_assign(VmStack* stack, unsigned s, size_t argc) override {
        record(stack, s, argc - 1);
        assigned = Param(stack, argc)->integer;
    }

private:
    void record(VmStack* stack, unsigned s, size_t argc) {
        symbol = s;
        arguments.clear();
        for (size_t i = 1; i <= argc; ++i) arguments.push_back(Param(stack, i)->integer);
    }
};

class VmMember : public VmFixture {
protected:
    RecordingObject* object = new RecordingObject;

    // The object as the public O, its only owner.
    VmMember() {
        install_object_destruction();
        auto* var = new Memvar;
        var->kind = MEMVAR_PUBLIC;
        wrap_new_object(object, var);
        stack.names[SYM_Z] = var;
    }
    ~VmMember() override {
        stack.names[SYM_Z]->release(&stack);
        EXPECT_EQ(objects_alive, 0);
    }

    // A private A dimensioned rows by columns, elements numbered from 1.
    void make_array(uint64_t rows, uint64_t columns) {
        Memvar* a;
        stack.alloc_undefined_memvar(SYM_A, &a);
        Array* array = a->dimension(&stack, rows, columns);
        for (uint64_t i = 1; i <= array->count; ++i)
            array->write(&stack, i)->set_integer(static_cast<long long>(i));
    }

    int read_error(std::initializer_list<long long> subscripts, uint32_t symbol = SYM_A) {
        Program p;
        p.emit(new VmOpEspAlloc());
        for (long long s : subscripts) emit_integer(p, s);
        p.emit(new VmOpReadArrayByName(symbol, subscripts.size()));
        p.emit(new VmOpReturnValue());
        return error_of(p);
    }
};

}  // namespace

TEST_F(VmMember, ArrayReadAndWriteByNameAndOffset) {
    make_array(2, 3);
    Program p;  // LOCAL b; b = a; b(2, 1) = 40; RETURN a(4) * 1000 + b(4) * 10 + a(2, 3)
    p.local_names = {{SYM_Y, 1}};
    p.emit(new VmOpReadMemvarByName(SYM_A));
    p.emit(new VmOpWriteMemvarByOffset(1));
    emit_integer(p, 2);
    emit_integer(p, 1);
    emit_integer(p, 40);
    p.emit(new VmOpWriteArrayByOffset(1, 2));
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 4);
    p.emit(new VmOpReadArrayByName(SYM_A, 1));
    emit_integer(p, 1000);
    p.emit(new VmOpBinaryMul());
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 4);
    p.emit(new VmOpReadArrayByOffset(1, 1));
    emit_integer(p, 10);
    p.emit(new VmOpBinaryMul());
    p.emit(new VmOpBinaryAdd());
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 2);
    emit_integer(p, 3);
    p.emit(new VmOpReadArrayByName(SYM_A, 2));
    p.emit(new VmOpBinaryAdd());
    p.emit(new VmOpReturnValue());
    run(p);
    // a(4) is row 2 column 1 in storage order; the copy b was written alone.
    EXPECT_EQ(result.integer, 4 * 1000 + 40 * 10 + 6);

    Program w;  // a(3) = 9 through the name
    emit_integer(w, 3);
    emit_integer(w, 9);
    w.emit(new VmOpWriteArrayByName(SYM_A, 1));
    w.emit(new VmOpReturn());
    run(w);
    EXPECT_EQ(stack.names.at(SYM_A)->array.read(3)->integer, 9);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmMember, SubscriptErrors) {
    make_array(2, 3);
    EXPECT_EQ(read_error({0}), 1234);
    EXPECT_EQ(read_error({7}), 1234);
    EXPECT_EQ(read_error({-1, 7}), 1234);
    EXPECT_EQ(read_error({0, 1}), 11);
    EXPECT_EQ(read_error({3, 1}), 1234);
    EXPECT_EQ(read_error({1, 1, 1}), 11);
    EXPECT_EQ(read_error({1}, SYM_X), 12);
    Memvar* x;
    stack.alloc_undefined_memvar(SYM_X, &x);
    x->set_integer(1LL);
    EXPECT_EQ(read_error({1}, SYM_X), 232);

    Program write_scalar;
    emit_integer(write_scalar, 1);
    emit_integer(write_scalar, 2);
    write_scalar.emit(new VmOpWriteArrayByName(SYM_X, 1));
    write_scalar.emit(new VmOpReturn());
    EXPECT_EQ(error_of(write_scalar), 232);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmMember, SubscriptsOnAnObjectGoToItsDefaultMember) {
    Program p;  // RETURN o(5, 6), then o(7, 8) = 9
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 5);
    emit_integer(p, 6);
    p.emit(new VmOpReadArrayByName(SYM_Z, 2));
    emit_integer(p, 7);
    emit_integer(p, 8);
    emit_integer(p, 9);
    p.emit(new VmOpWriteArrayByName(SYM_Z, 2));
    p.emit(new VmOpReturnValue());
    run(p);
    EXPECT_EQ(result.integer, -static_cast<long long>(SYMBOL_INDEX));
    EXPECT_EQ(object->symbol, SYMBOL_INDEX);
    EXPECT_EQ(object->arguments, (std::vector<long long>{7, 8}));
    EXPECT_EQ(object->assigned, 9);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmMember, ObjectCallPassesArgumentsInSourceOrder) {
    Program p;  // RETURN o.f(1, 2, 3)
    p.emit(new VmOpEspAlloc());
    p.emit(new VmOpReadMemvarByName(SYM_Z));
    for (long long v : {1, 2, 3}) emit_integer(p, v);
    p.emit(new VmOpObjectCall(SYM_F, 3));
    p.emit(new VmOpReturnValue());
    run(p);
    EXPECT_EQ(result.integer, 300 + SYM_F);
    EXPECT_EQ(object->arguments, (std::vector<long long>{1, 2, 3}));
    EXPECT_EQ(stack.params_top, nullptr);
    EXPECT_EQ(stack.esp, stack.end());
}

TEST_F(VmMember, PointerFormsMustDeliverAPointer) {
    auto pointer_program = [](VmOp* op) {
        auto* p = new Program;
        p->emit(new VmOpEspAlloc());
        p->emit(new VmOpReadMemvarByName(SYM_Z));
        p->emit(op);
        p->emit(new VmOpReturnPointer());
        return std::unique_ptr<Program>(p);
    };
    auto call = pointer_program(new VmOpObjectCallPointer(SYM_F, 0));
    auto read = pointer_program(new VmOpObjectReadPointer(SYM_G, 0));
    EXPECT_EQ(error_of(*call), 9004);
    EXPECT_EQ(error_of(*read), 9014);

    object->answer_with_pointer = true;
    object->property.set_integer(77LL);
    run(*read);
    ASSERT_EQ(result.tag, TAG_POINTER);
    EXPECT_EQ(result.pointer.target, &object->property);
    EXPECT_EQ(error_of(*call), 0);
    EXPECT_TRUE(stack_at_rest());
}

