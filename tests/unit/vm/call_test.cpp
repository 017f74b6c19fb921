// Calls: arguments by value and by reference, natives, late binding.
#include "tests/unit/vm/vm_test_support.h"
#include "vm/param.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

class VmCall : public VmFixture {};

}  // namespace

TEST_F(VmCall, ByReferenceOnAnUndeclaredNameCreatesTheVariable) {
    auto* body = new Program;
    body->parameter_count = 1;
    body->local_names = {{SYM_Y, 1}};
    emit_integer(*body, 9);
    body->emit(new VmOpWriteMemvarByOffset(1));
    body->emit(new VmOpReturn());
    UserFunction setter(body);

    Program main;
    main.emit(new VmOpEspAlloc());
    main.emit(new VmOpReadMemvarPointerCreate(SYM_X));
    emit_call(main, &setter, 1);
    main.emit(new VmOpEspFree());
    main.emit(new VmOpReadMemvarByName(SYM_X));
    main.emit(new VmOpReturnValue());
    run(main);
    EXPECT_EQ(result.integer, 9);
}

namespace {

// Native handlers that check their window around a call back into the VM.
const Program* callback_program = nullptr;
std::vector<std::string> window_faults;

void sum_three(VmStack* stack, unsigned long long argc, Variant* ret) {
    long long sum = 0;
    for (unsigned long long i = 1; i <= argc; ++i) sum += Param(stack, i)->integer;
    ret->set_integer(sum);
}

void first_minus_second_around_callback(VmStack* stack, unsigned long long argc, Variant* ret) {
    Memvar* top_before = stack->params_top;
    long long first = Param(stack, 1)->integer;
    Variant inner;
    execute_program(stack, 0, false, callback_program, &inner);
    if (stack->params_top != top_before) window_faults.push_back("params_top");
    if (stack->param_count != argc) window_faults.push_back("param_count");
    if (Param(stack, 1)->integer != first) window_faults.push_back("argument 1");
    ret->set_integer(Param(stack, 1)->integer - Param(stack, 2)->integer + inner.integer);
}

}  // namespace

TEST_F(VmCall, ANativeCallingBackIntoTheVmKeepsItsParamWindow) {
    Program callback;  // RETURN sum_three(100, 200, 300)
    callback.emit(new VmOpEspAlloc());
    for (long long v : {100, 200, 300}) emit_integer(callback, v);
    callback.emit(new VmOpCallNative(sum_three, 3));
    callback.emit(new VmOpReturnValue());
    callback_program = &callback;
    window_faults.clear();

    Program main;
    main.emit(new VmOpEspAlloc());
    emit_integer(main, 50);
    emit_integer(main, 8);
    main.emit(new VmOpCallNative(first_minus_second_around_callback, 2));
    main.emit(new VmOpReturnValue());
    run(main);
    EXPECT_EQ(result.integer, 50 - 8 + 600);
    EXPECT_TRUE(window_faults.empty()) << window_faults.front();
    EXPECT_EQ(stack.params_top, nullptr);
    EXPECT_EQ(stack.param_count, 0u);
}

TEST_F(VmCall, CheckArgumentFlags) {
    struct Case {
        bool by_reference;
        uint8_t value_tag;
        uint8_t type;
        uint8_t flags;
        int error;
    };
    const Case cases[] = {
        {false, TAG_INTEGER, TAG_INTEGER, 0, 0},
        {false, TAG_INTEGER, TAG_STRING, 0, 11},
        {true, TAG_INTEGER, TAG_INTEGER, 0, 11},
        {true, TAG_INTEGER, TAG_INTEGER, ARGUMENT_MAY_BE_REFERENCE, 0},
        {false, TAG_INTEGER, TAG_INTEGER, ARGUMENT_BY_REFERENCE, 11},
        {true, TAG_NULL, TAG_INTEGER, ARGUMENT_BY_REFERENCE, 11},
        {true, TAG_NULL, TAG_INTEGER, ARGUMENT_BY_REFERENCE | ARGUMENT_NULL_ALLOWED, 0},
        {false, TAG_TRUE, TAG_FALSE, 0, 0},
    };
    for (const Case& c : cases) {
        Program p;
        p.local_names = {{SYM_A, 1}};
        p.emit(c.value_tag == TAG_NULL ? static_cast<VmOp*>(new VmOpReadConstNull())
               : c.value_tag == TAG_TRUE ? static_cast<VmOp*>(new VmOpReadConstTrue())
                                         : static_cast<VmOp*>(new VmOpReadConstInteger(1)));
        if (c.by_reference) {
            p.emit(new VmOpWriteMemvarByOffset(1));
            p.emit(new VmOpReadLocalMemvarPointerByOffset(1));
        }
        p.emit(new VmOpCheckArgument(c.type, c.flags));
        p.emit(new VmOpReturn());
        EXPECT_EQ(error_of(p), c.error)
            << "reference " << c.by_reference << " tag " << int(c.value_tag) << " flags "
            << int(c.flags);
    }
    EXPECT_TRUE(stack_at_rest());
}

namespace {

// Reports its two arguments' tags and values as tag * 1000 + value.
void describe_two(VmStack* stack, unsigned long long, Variant* ret) {
    const Variant* a = Param(stack, 1);
    const Variant* b = Param(stack, 2);
    ret->set_integer(a->tag * 1000 + static_cast<long long>(static_cast<double>(*a)) +
                     (b->tag * 1000 + static_cast<long long>(static_cast<double>(*b))) * 100000);
}

class VmLateBound : public VmFixture {};

}  // namespace

TEST_F(VmLateBound, LibraryFunctionsConvertTheirArguments) {
    resolver.libraries["F"] = {describe_two,
                               {{TAG_NUMERIC, false, false}, {TAG_INTEGER, false, false}}};
    Program p;
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 3);
    p.emit(new VmOpReadConstNumeric({7.9, 1}));
    p.emit(new VmOpCallByName(SYM_F, 2));
    p.emit(new VmOpReturnValue());
    run(p);
    // 3 became numeric, 7.9 was truncated to integer.
    EXPECT_EQ(result.integer, TAG_NUMERIC * 1000 + 3 + (TAG_INTEGER * 1000 + 7) * 100000LL);
    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmLateBound, LibraryArgumentCountsAndTypes) {
    resolver.libraries["F"] = {describe_two,
                               {{TAG_MONEY, false, false}, {TAG_INTEGER, false, true}}};
    Program too_many;
    too_many.emit(new VmOpEspAlloc());
    for (int i = 0; i < 3; ++i) emit_integer(too_many, i);
    too_many.emit(new VmOpCallByName(SYM_F, 3));
    too_many.emit(new VmOpReturnValue());
    EXPECT_EQ(error_of(too_many), 94);

    Program too_few;
    too_few.emit(new VmOpEspAlloc());
    emit_integer(too_few, 1);
    too_few.emit(new VmOpCallByName(SYM_F, 1));
    too_few.emit(new VmOpReturnValue());
    EXPECT_EQ(error_of(too_few), 11);

    EXPECT_TRUE(stack_at_rest());
}

TEST_F(VmLateBound, ProceduresComeBeforeLoadedProgramsAndUnknownNamesAre1) {
    auto* procedure_body = new Program;
    procedure_body->parameter_count = 1;
    procedure_body->local_names = {{SYM_X, 1}};
    procedure_body->emit(new VmOpReadLocalMemvarByOffset(1));
    emit_integer(*procedure_body, 1);
    procedure_body->emit(new VmOpBinaryAdd());
    procedure_body->emit(new VmOpReturnValue());
    UserFunction procedure(procedure_body);
    auto* loaded_body = new Program;
    loaded_body->parameter_count = 1;
    loaded_body->emit(new VmOpReturn());
    UserFunction loaded(loaded_body);

    resolver.loaded[SYM_G] = &loaded;
    resolver.procedures[SYM_G] = &procedure;
    Program p;
    p.emit(new VmOpEspAlloc());
    emit_integer(p, 41);
    p.emit(new VmOpCallByName(SYM_G, 1));
    p.emit(new VmOpReturnValue());
    run(p);
    EXPECT_EQ(result.integer, 42);

    resolver.procedures.clear();
    run(p);
    EXPECT_EQ(result.tag, TAG_TRUE);

    Program unknown;
    unknown.emit(new VmOpEspAlloc());
    unknown.emit(new VmOpCallByName(SYM_Z, 0));
    unknown.emit(new VmOpReturnValue());
    try {
        run(unknown);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, 1);
        EXPECT_EQ(e.message.u8str(), "File 'Z' does not exist.");
    }
    EXPECT_TRUE(stack_at_rest());
}
