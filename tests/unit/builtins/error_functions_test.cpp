// error(), message(), aerror(), alistallerrors(), ERROR, ASSERT and the
// host's GetLastError and GetLastErrorMessage.
#include <string>

#include "builtins/handlers.h"
#include "objects/exception_object.h"
#include "objects/object.h"
#include "runtime/error_api.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "tests/unit/vm/vm_test_support.h"
#include "values/symtable.h"

using namespace zobase;
using namespace zobase::testing;

namespace {

class CapturingScreen : public Screen {
public:
    std::string errors;
    void internal_out(const String&) override {}
    void internal_err(const String& text) override { errors += text.u8str(); }
};

class ErrorFunctions : public VmFixture {
protected:
    CapturingScreen screen;
    Runtime runtime{&screen};
    TestClasses classes;

    ErrorFunctions() {
        stack.runtime = &runtime;
        stack.services = runtime.services();
        install_object_destruction();
        classes.add(resolver, "Exception", &exception_class_data, exception_members);
    }
    ~ErrorFunctions() override {
        result.release(&stack);
        if (Memvar* a = public_array()) {
            a->clear(&stack);
            delete a;
            stack.names.erase(SYM_A);
        }
    }

    // Runs ERROR with the arguments the emitter pushes; returns the number raised.
    template <typename Emit>
    int raise_error(uint64_t argc, Emit emit_arguments) {
        Program p;
        emit_arguments(p);
        p.emit(new VmOpCallNativeVoid(void_stackcall_error, argc));
        p.emit(new VmOpReturn());
        return error_of(p);
    }
    int raise_error_text(const char* text) {
        return raise_error(1, [text](Program& p) { p.emit(new VmOpReadConstString(String(text))); });
    }
    int raise_error_number(long long number) {
        return raise_error(1, [number](Program& p) { emit_integer(p, number); });
    }
    int raise_error_number(long long number, const char* message) {
        return raise_error(2, [number, message](Program& p) {
            emit_integer(p, number);
            if (message) p.emit(new VmOpReadConstString(String(message)));
            else p.emit(new VmOpReadConstNull());
        });
    }

    Variant call(native_function function, bool with_array = false) {
        Program p;
        p.emit(new VmOpEspAlloc());
        if (with_array) p.emit(new VmOpReadMemvarPointerByName(SYM_A));
        p.emit(new VmOpCallNative(function, with_array ? 1 : 0));
        p.emit(new VmOpReturnValue());
        run(p);
        Variant value(result);
        result.release(&stack);
        return value;
    }

    std::string call_text(native_function function) {
        Variant value = call(function);
        std::string text = value.str().u8str();
        value.release(&stack);
        return text;
    }

    Memvar* make_public_array() {
        auto* a = new Memvar;
        a->kind = MEMVAR_PUBLIC;
        stack.names[SYM_A] = a;
        return a;
    }
    Memvar* public_array() {
        auto found = stack.names.find(SYM_A);
        return found == stack.names.end() ? nullptr : found->second;
    }
};

}  // namespace

TEST_F(ErrorFunctions, NoErrorYetGivesZeroAndEmptyMessage) {
    EXPECT_EQ(call(stackcall_error).integer, 0);
    EXPECT_EQ(call_text(stackcall_message), "");
}

TEST_F(ErrorFunctions, ErrorWithNumberTakesTheTableTextOrTheGivenMessage) {
    EXPECT_EQ(raise_error_number(1705), 1705);
    EXPECT_EQ(call_text(stackcall_message), "File access denied.");
    EXPECT_EQ(raise_error_number(1705, nullptr), 1705);
    EXPECT_EQ(call_text(stackcall_message), "File access denied.");
    EXPECT_EQ(raise_error_number(1705, "x.dbf"), 1705);
    EXPECT_EQ(call_text(stackcall_message), "File access denied x.dbf.");
}

TEST_F(ErrorFunctions, ErrorNumberOutside32BitsIs39) {
    EXPECT_EQ(raise_error_number(1LL << 31), 39);
    EXPECT_EQ(raise_error_number(-(1LL << 31)), static_cast<int>(-(1LL << 31)));
    EXPECT_EQ(raise_error(1, [](Program& p) { p.emit(new VmOpReadConstNumeric({1e12, 0})); }), 39);
}

TEST_F(ErrorFunctions, AerrorCopiesTheSevenValuesOfTheRecord) {
    raise_error_number(1705, "x.dbf");
    Memvar* a = make_public_array();
    EXPECT_EQ(call(stackcall_aerror, true).integer, 1);
    ASSERT_EQ(a->tag, TAG_ARRAY);
    EXPECT_EQ(a->array.rows(), 1u);
    EXPECT_EQ(a->array.columns, 7u);
    EXPECT_EQ(a->array.read(1, 1)->integer, 1705);
    EXPECT_EQ(a->array.read(1, 2)->str().u8str(), "File access denied x.dbf.");
    EXPECT_EQ(a->array.read(1, 3)->str().u8str(), "x.dbf");
    for (uint64_t column = 4; column <= 7; ++column)
        EXPECT_EQ(a->array.read(1, column)->tag, TAG_FALSE) << column;
}

TEST_F(ErrorFunctions, AlistallerrorsSortsTheWholeTableByNumber) {
    Memvar* a = make_public_array();
    EXPECT_EQ(call(stackcall_alistallerrors, true).integer, 107);
    ASSERT_EQ(a->tag, TAG_ARRAY);
    ASSERT_EQ(a->array.rows(), 107u);
    EXPECT_EQ(a->array.read(1, 1)->integer, 1);
    EXPECT_EQ(a->array.read(1, 2)->str().u8str(), "File does not exist.");
    for (uint64_t row = 2; row <= 107; ++row)
        EXPECT_LT(a->array.read(row - 1, 1)->integer, a->array.read(row, 1)->integer) << row;
    EXPECT_EQ(a->array.read(107, 1)->integer, 9902);
}

TEST_F(ErrorFunctions, AssertWritesAndRaisesOnlyWhenAssertsAreOn) {
    auto assert_false = [this] {
        Program p;
        p.emit(new VmOpReadConstFalse());
        p.emit(new VmOpReadConstString(String("x > 1")));
        p.emit(new VmOpCallNativeVoid(void_stackcall_assert, 2));
        p.emit(new VmOpReturn());
        return error_of(p);
    };
    EXPECT_FALSE(call(stackcall_test_asserts_on).tag == TAG_TRUE);
    EXPECT_EQ(assert_false(), 0);
    EXPECT_EQ(screen.errors, "");

    SetRuntimeAsserts(&runtime, true);
    EXPECT_EQ(call(stackcall_test_asserts_on).tag, TAG_TRUE);
    EXPECT_EQ(assert_false(), 1098);
    EXPECT_EQ(screen.errors, "ASSERT FAILED: x > 1\n");
    EXPECT_EQ(call_text(stackcall_message), "User defined Error.");
}

TEST_F(ErrorFunctions, GetLastErrorSignExtendsAndTheMessageCallRefusesToCopy) {
    char buffer[64] = "untouched";
    EXPECT_EQ(GetLastErrorMessage(&stack, buffer, 0), 0) << "nothing to copy, nothing refused";
    EXPECT_THROW(GetLastErrorMessage(&stack, buffer, sizeof buffer), copy_buffer_too_small);
    raise_error_number(-5);
    EXPECT_EQ(GetLastError(&stack), ~uint64_t(0) - 4);
    raise_error_text("boom");
    EXPECT_EQ(GetLastError(&stack), 1098u);
    EXPECT_THROW(GetLastErrorMessage(&stack, buffer, sizeof buffer), copy_buffer_too_small);
    EXPECT_STREQ(buffer, "untouched");
}

TEST_F(ErrorFunctions, ExceptionObjectAnswersItsFourPropertiesByName) {
    unsigned detail = classes.symbols.symbolize("detail");
    unsigned user_value = classes.symbols.symbolize("USERVALUE");
    unsigned other = classes.symbols.symbolize("Other");
    resolver.names[other] = "Other";
    Variant holder;
    ExceptionObject* object = create_exception_object(&stack, &holder);
    object->error_no.set_integer(7LL);
    object->detail.set_string(String("d"));
    Variant value;
    object->virtual_access(&stack, SYMBOL_ERRORNO, 0, &value);
    EXPECT_EQ(value.integer, 7);
    object->virtual_access(&stack, detail, 0, &value);
    EXPECT_EQ(value.str().u8str(), "d");
    value.release(&stack);
    object->virtual_access(&stack, user_value, 0, &value);
    EXPECT_EQ(value.tag, TAG_FALSE);
    try {
        object->virtual_access(&stack, other, 0, &value);
        ADD_FAILURE() << "an unknown property was answered";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, 1734);
        EXPECT_EQ(error.message.u8str(), "Property Other not found");
    }
    holder.release(&stack);
}
