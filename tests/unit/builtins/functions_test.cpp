#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <string>
#include <vector>

#include "builtins/handlers.h"
#include "builtins/library.h"
#include "runtime/runtime.h"
#include "runtime/screen.h"
#include "text/charset.h"
#include "values/variant.h"
#include "vm/vm_stack.h"

using namespace zobase;

namespace {

// Calls a handler as VmOpCallNative does: a result slot, then the arguments
// in source order, params_top at the result slot.
class Call {
public:
    explicit Call(VmStack* stack) : stack_(stack) {}
    ~Call() {
        for (Variant& v : args_) v.release(stack_);
        result_.release(stack_);
    }

    Call& i(long long v) { return add().set_integer(v), *this; }
    Call& n(double v) { return add().set_float(v, 2), *this; }
    Call& null() { return add().set_null(), *this; }
    Call& b(bool v) { return add().set_bool(v), *this; }
    Call& s(const char* text) { return add().set_string(String(text)), *this; }
    Call& s(const String& text) { return add().set_string(text), *this; }

    const Variant& run(native_function handler) {
        Memvar* slot = stack_->push();
        for (const Variant& v : args_) stack_->push()->set_variant(&v);
        Memvar* saved_top = stack_->params_top;
        stack_->params_top = slot;
        stack_->param_count = args_.size();
        try {
            handler(stack_, args_.size(), slot);
        } catch (...) {
            unwind(slot, saved_top);
            throw;
        }
        result_.set_variant(slot);
        unwind(slot, saved_top);
        return result_;
    }

    void run_command(native_command handler) {
        Memvar* top = stack_->esp;
        for (const Variant& v : args_) stack_->push()->set_variant(&v);
        stack_->params_top = top;
        handler(stack_, args_.size());
        stack_->pop_to(top);
    }

    std::string text(native_function handler) {
        const Variant& v = run(handler);
        return v.tag == TAG_STRING ? v.str().u8str() : "<tag " + std::to_string(v.tag) + ">";
    }
    long long integer(native_function handler) {
        const Variant& v = run(handler);
        EXPECT_EQ(v.tag, TAG_INTEGER);
        return v.integer;
    }
    int error(native_function handler) {
        try {
            run(handler);
        } catch (const RuntimeError& e) {
            return e.number;
        }
        return 0;
    }

private:
    Variant& add() {
        args_.emplace_back();
        return args_.back();
    }
    void unwind(Memvar* slot, Memvar* saved_top) {
        stack_->pop_to(slot + 1);
        stack_->params_top = saved_top;
    }

    VmStack* stack_;
    // A deque never moves its elements: Variants have no destructor, so a
    // vector's growth would leave the old copies' references behind.
    std::deque<Variant> args_;
    Variant result_;
};

class Functions : public ::testing::Test {
protected:
    VmStack stack{nullptr, 256, 16};
    Call call() { return Call(&stack); }
    void TearDown() override { EXPECT_EQ(stack.esp, stack.end()); }
};

}  // namespace

TEST_F(Functions, SubstrPositionsAndErrors) {
    EXPECT_EQ(call().s("abcdef").i(2).i(3).text(stackcall_substr), "bcd");
    EXPECT_EQ(call().s("abcdef").i(4).text(stackcall_substr), "def");
    EXPECT_EQ(call().s("abc").i(0).text(stackcall_substr), "");
    EXPECT_EQ(call().s("abc").i(4).text(stackcall_substr), "");
    EXPECT_EQ(call().s("abc").i(2).i(0).text(stackcall_substr), "");
    EXPECT_EQ(call().s("abc").i(-1).error(stackcall_substr), 39);
    EXPECT_EQ(call().s("abc").i(1).i(-1).error(stackcall_substr), 39);
    EXPECT_EQ(call().s("abc").i(1LL << 40).error(stackcall_substr), 39);
    EXPECT_EQ(call().null().i(-1).run(stackcall_substr).tag, TAG_NULL);
    EXPECT_EQ(call().s("abc").null().run(stackcall_substr).tag, TAG_NULL);
}

TEST_F(Functions, SubstrCountsCharactersNotBytes) {
    EXPECT_EQ(call().s("\xc3\xa4\xc3\xb6\xc3\xbc").i(2).i(1).text(stackcall_substr),
              "\xc3\xb6");
    EXPECT_EQ(call().s("\xc3\xa4\xc3\xb6\xc3\xbc").integer(stackcall_len), 3);
    Call empty_call = call();
    const Variant& empty = empty_call.s(String(u"xyz")).i(0).run(stackcall_substr);
    EXPECT_EQ(empty.str().get_charset(), Charset::utf16le);
}

TEST_F(Functions, LeftRightLen) {
    EXPECT_EQ(call().s("abcdef").i(2).text(stackcall_left), "ab");
    EXPECT_EQ(call().s("abc").i(10).text(stackcall_left), "abc");
    EXPECT_EQ(call().s("abc").i(-1).text(stackcall_left), "");
    EXPECT_EQ(call().s("abcdef").i(2).text(stackcall_right), "ef");
    EXPECT_EQ(call().s("abc").i(3).text(stackcall_right), "abc");
    EXPECT_EQ(call().s("abc").i(7).text(stackcall_right), "abc");
    EXPECT_EQ(call().s("abc").i(0).text(stackcall_right), "");
    EXPECT_EQ(call().s("").integer(stackcall_len), 0);
    EXPECT_EQ(call().null().run(stackcall_len).tag, TAG_NULL);
}

TEST_F(Functions, AtOccurrences) {
    EXPECT_EQ(call().s("a").s("banana").integer(stackcall_at), 2);
    EXPECT_EQ(call().s("a").s("banana").i(3).integer(stackcall_at), 6);
    EXPECT_EQ(call().s("a").s("banana").i(4).integer(stackcall_at), 0);
    EXPECT_EQ(call().s("na").s("banana").i(2).integer(stackcall_at), 5);
    EXPECT_EQ(call().s("x").s("banana").integer(stackcall_at), 0);
    EXPECT_EQ(call().s("").s("banana").integer(stackcall_at), 0);
    EXPECT_EQ(call().s("a").s("banana").i(0).error(stackcall_at), 11);
    EXPECT_EQ(call().s("a").null().i(0).run(stackcall_at).tag, TAG_NULL);
    EXPECT_EQ(call().s("\xc3\xb6").s("\xc3\xa4\xc3\xb6").integer(stackcall_at), 2);
}

TEST_F(Functions, CaseAndTrims) {
    EXPECT_EQ(call().s("aBc\xc3\xa4").text(stackcall_upper), "ABC\xc3\x84");
    EXPECT_EQ(call().s("AbC").text(stackcall_lower), "abc");
    EXPECT_EQ(call().s("  ab  ").text(stackcall_ltrim), "ab  ");
    EXPECT_EQ(call().s("  ab  ").text(stackcall_rtrim), "  ab");
    EXPECT_EQ(call().s("  ab  ").text(stackcall_alltrim), "ab");
    EXPECT_EQ(call().s("xyxyabxy").s("xy").text(stackcall_ltrim), "abxy");
    EXPECT_EQ(call().s("abxyXY").s("xy").text(stackcall_rtrim), "abxyXY");
    EXPECT_EQ(call().s("abxyXY").i(1).s("xy").text(stackcall_rtrim), "ab");
    EXPECT_EQ(call().s("abxyXY").i(0).s("xy").text(stackcall_rtrim), "abxyXY");
    EXPECT_EQ(call().s("*-a-*").s("*").s("-").text(stackcall_alltrim), "a");
    EXPECT_EQ(call().s(" a").null().run(stackcall_alltrim).tag, TAG_NULL);
}

TEST_F(Functions, ConcatReplicateSpace) {
    EXPECT_EQ(call().s("ab").s("").s("cd").text(stackcall_concat), "abcd");
    EXPECT_EQ(call().s("ab").null().s("cd").run(stackcall_concat).tag, TAG_NULL);
    Call mixed_call = call();
    const Variant& mixed = mixed_call.s("a").s(String(u"\u00e9")).run(stackcall_concat);
    EXPECT_EQ(mixed.str().u8str(), "a\xc3\xa9");
    EXPECT_EQ(call().s("ab").i(3).text(stackcall_replicate), "ababab");
    EXPECT_EQ(call().s("ab").i(0).text(stackcall_replicate), "");
    EXPECT_EQ(call().i(3).text(stackcall_space), "   ");
    Call wide_call = call();
    const Variant& wide = wide_call.i(2).s("utf-16le").run(stackcall_space);
    EXPECT_EQ(wide.str().get_charset(), Charset::utf16le);
    EXPECT_EQ(wide.str().size(), 4u);
    EXPECT_EQ(call().i(2).s("no-such-charset").error(stackcall_space), 9003);
}

TEST_F(Functions, ChrAsc) {
    EXPECT_EQ(call().i(65).text(stackcall_chr), "A");
    Call euro_call = call();
    const Variant& euro = euro_call.i(0x80).run(stackcall_chr);
    EXPECT_EQ(euro.str().get_charset(), GetCharsetByWindowsCodepage(1252));
    EXPECT_EQ(euro.str().u8str(), "\xe2\x82\xac");
    EXPECT_EQ(call().i(256).error(stackcall_chr), 39);
    EXPECT_EQ(call().i(-1).error(stackcall_chr), 39);
    EXPECT_EQ(call().s("ABC").integer(stackcall_asc), 65);
    EXPECT_EQ(call().s("").integer(stackcall_asc), 0);
    EXPECT_EQ(call().s("\xe2\x82\xac").integer(stackcall_asc), 0x80);  // UTF-8 euro, via 1252
}

TEST_F(Functions, Padding) {
    EXPECT_EQ(call().s("abc").i(7).s("xy").text(stackcall_padl), "xyxyabc");
    EXPECT_EQ(call().s("abc").i(6).s("xy").text(stackcall_padl), "xyxabc");
    EXPECT_EQ(call().s("abc").i(6).s("xy").text(stackcall_padr), "abcxyx");
    EXPECT_EQ(call().s("abc").i(5).text(stackcall_padr), "abc  ");
    EXPECT_EQ(call().s("abcdef").i(3).text(stackcall_padl), "def");
    EXPECT_EQ(call().s("abcdef").i(3).text(stackcall_padr), "abc");
}

TEST_F(Functions, ReplacingCharactersAndStrings) {
    EXPECT_EQ(call().s("banana").s("an").s("AN").text(stackcall_strtran), "bANANa");
    EXPECT_EQ(call().s("banana").s("a").text(stackcall_strtran), "bnn");
    EXPECT_EQ(call().s("banana").s("").s("x").text(stackcall_strtran), "banana");
    EXPECT_EQ(call().s("abcabc").s("ac").s("x").text(stackcall_chrtran), "xbxb");
    EXPECT_EQ(call().s("abc").s("").s("x").text(stackcall_chrtran), "abc");
    EXPECT_EQ(call().s("\xc3\xa4" "b").s("\xc3\xa4").s("ae").text(stackcall_chrtran), "ab");
}

TEST_F(Functions, Words) {
    EXPECT_EQ(call().s("  a  b  ").integer(stackcall_getwordcount), 2);
    EXPECT_EQ(call().s("a\r\nb\tc").integer(stackcall_getwordcount), 3);
    EXPECT_EQ(call().s("a--b").s("-").integer(stackcall_getwordcount), 2);
    EXPECT_EQ(call().s("a-b").s("--").integer(stackcall_getwordcount), 1);
    EXPECT_EQ(call().s("").integer(stackcall_getwordcount), 0);
    EXPECT_EQ(call().s("a b").i(2).text(stackcall_getwordnum), "b");
    EXPECT_EQ(call().s("a b").i(3).text(stackcall_getwordnum), "");
    EXPECT_EQ(call().s("a b").i(0).text(stackcall_getwordnum), "");
    EXPECT_EQ(call().s("one::two").i(2).s("::").text(stackcall_getwordnum), "two");
    EXPECT_EQ(call().s("a b").i(1LL << 33).error(stackcall_getwordnum), 39);
}

TEST_F(Functions, ClassificationAndStrconv) {
    EXPECT_EQ(call().s("a1").run(stackcall_isalpha).tag, TAG_TRUE);
    EXPECT_EQ(call().s("1a").run(stackcall_isalpha).tag, TAG_FALSE);
    EXPECT_EQ(call().s("1a").run(stackcall_isdigit).tag, TAG_TRUE);
    EXPECT_EQ(call().s("\xc3\x84").run(stackcall_isupper).tag, TAG_TRUE);
    EXPECT_EQ(call().s("").run(stackcall_isalnum).tag, TAG_FALSE);
    EXPECT_EQ(call().null().run(stackcall_islower).tag, TAG_FALSE);
    EXPECT_EQ(call().s("AB").i(15).text(stackcall_strconv), "4142");
    EXPECT_EQ(call().s("AB").i(1).error(stackcall_strconv), 1001);
}

TEST_F(Functions, Numbers) {
    EXPECT_EQ(call().i(-5).integer(stackcall_abs), 5);
    EXPECT_DOUBLE_EQ(call().n(-2.5).run(stackcall_abs).numeric.value, 2.5);
    EXPECT_EQ(call().null().run(stackcall_abs).tag, TAG_NULL);
    EXPECT_EQ(call().s("x").error(stackcall_abs), 11);
    EXPECT_EQ(call().i(7).i(3).integer(stackcall_mod), 1);
    EXPECT_EQ(call().i(-7).i(3).integer(stackcall_mod), 2);
    EXPECT_EQ(call().i(7).null().run(stackcall_mod).tag, TAG_NULL);
    EXPECT_EQ(call().n(2.5).i(0).integer(stackcall_round), 3);
    EXPECT_DOUBLE_EQ(call().n(1.2345).i(2).run(stackcall_round).numeric.value, 1.23);
    EXPECT_EQ(call().n(2.5).integer(stackcall_floor), 2);
    EXPECT_EQ(call().n(2.1).integer(stackcall_ceiling), 3);
    EXPECT_DOUBLE_EQ(call().i(9).run(stackcall_sqrt).numeric.value, 3.0);
    EXPECT_EQ(call().i(-9).error(stackcall_sqrt), 61);
    EXPECT_EQ(call().i(42).integer(stackcall_int), 42);
    EXPECT_NEAR(call().n(1.0).run(stackcall_exp).numeric.value, std::exp(1.0), 1e-12);
    EXPECT_NEAR(call().n(180).run(stackcall_dtor).numeric.value, M_PI, 1e-12);
    EXPECT_NEAR(call().n(1).n(1).run(stackcall_atn2).numeric.value, M_PI / 4, 1e-12);
}

TEST_F(Functions, MaxMinCompareAcrossNumberTypes) {
    EXPECT_EQ(call().i(3).i(9).i(4).integer(stackcall_max), 9);
    EXPECT_EQ(call().i(3).i(9).i(-4).integer(stackcall_min), -4);
    EXPECT_DOUBLE_EQ(call().i(3).n(3.5).run(stackcall_max).numeric.value, 3.5);
    EXPECT_EQ(call().s("b").s("abc").text(stackcall_max), "b");
    EXPECT_EQ(call().i(1).null().run(stackcall_max).tag, TAG_NULL);
}

TEST_F(Functions, Bits) {
    EXPECT_EQ(call().i(12).i(10).integer(stackcall_bitand), 8);
    EXPECT_EQ(call().i(12).i(10).i(1).integer(stackcall_bitor), 15);
    EXPECT_EQ(call().i(12).i(10).integer(stackcall_bitxor), 6);
    EXPECT_EQ(call().i(0).integer(stackcall_bitnot), -1);
    EXPECT_EQ(call().i(1).i(4).integer(stackcall_bitlshift), 16);
    EXPECT_EQ(call().i(-16).i(2).integer(stackcall_bitrshift), -4);
    EXPECT_EQ(call().i(0).i(3).integer(stackcall_bitset), 8);
    EXPECT_EQ(call().i(15).i(0).integer(stackcall_bitclear), 14);
    EXPECT_EQ(call().i(8).i(3).run(stackcall_bittest).tag, TAG_TRUE);
    EXPECT_EQ(call().i(8).i(64).error(stackcall_bittest), 11);
    EXPECT_EQ(call().i(8).null().run(stackcall_bitand).tag, TAG_NULL);
}

TEST_F(Functions, ValueFunctions) {
    EXPECT_EQ(call().null().i(1).i(2).integer(stackcall_iif), 2);
    EXPECT_EQ(call().b(true).i(1).i(2).integer(stackcall_iif), 1);
    EXPECT_EQ(call().null().s("x").text(stackcall_nvl), "x");
    EXPECT_EQ(call().s("a").s("x").text(stackcall_nvl), "a");
    EXPECT_EQ(call().s("  ").s("x").text(stackcall_evl), "x");
    EXPECT_EQ(call().null().s("x").run(stackcall_evl).tag, TAG_NULL);
    EXPECT_EQ(call().i(0).run(stackcall_empty).tag, TAG_TRUE);
    EXPECT_EQ(call().s("a").run(stackcall_empty).tag, TAG_FALSE);
    EXPECT_EQ(call().null().run(stackcall_isnull).tag, TAG_TRUE);
    EXPECT_EQ(call().i(0).run(stackcall_isnull).tag, TAG_FALSE);
    EXPECT_EQ(call().n(1.5).text(stackcall_vartype), "N");
    EXPECT_EQ(call().null().text(stackcall_vartype), "X");
    EXPECT_EQ(call().s(String::fromBytes("x", 1, Charset::binary)).text(stackcall_vartype), "Q");
}

TEST_F(Functions, InlistAndBetween) {
    EXPECT_EQ(call().i(1).null().i(1).run(stackcall_inlist).tag, TAG_TRUE);
    EXPECT_EQ(call().i(2).null().i(1).run(stackcall_inlist).tag, TAG_NULL);
    EXPECT_EQ(call().i(2).i(3).i(1).run(stackcall_inlist).tag, TAG_FALSE);
    EXPECT_EQ(call().i(1).run(stackcall_inlist).tag, TAG_FALSE);
    EXPECT_EQ(call().null().i(1).run(stackcall_inlist).tag, TAG_NULL);
    EXPECT_EQ(call().i(5).i(1).i(5).run(stackcall_between).tag, TAG_TRUE);
    EXPECT_EQ(call().i(6).i(1).i(5).run(stackcall_between).tag, TAG_FALSE);
    EXPECT_EQ(call().i(0).i(1).i(5).run(stackcall_between).tag, TAG_FALSE);
    EXPECT_EQ(call().i(3).i(1).null().run(stackcall_between).tag, TAG_NULL);
    EXPECT_EQ(call().i(1).s("a").error(stackcall_inlist), 107);
}

namespace {

class CapturingScreen : public Screen {
public:
    std::string text;
    void internal_out(const String& s) override { text += s.u8str(); }
    void internal_err(const String&) override {}
};

}  // namespace

TEST(EchoCommands, SeparatesBySpaceSetting) {
    CapturingScreen screen;
    Runtime runtime(&screen);
    VmStack stack(&runtime, 64, 8);
    stack.services = runtime.services();
    Call(&stack).i(1).s("a").null().b(true).run_command(void_stackcall_echo_linefeed);
    EXPECT_EQ(screen.text, "1 a null true\n");
    screen.text.clear();
    stack.space = false;
    Call(&stack).i(1).s("a").run_command(void_stackcall_echo);
    EXPECT_EQ(screen.text, "1a");
    screen.text.clear();
    Call(&stack).run_command(void_stackcall_echo);
    EXPECT_EQ(screen.text, "");
    Call(&stack).run_command(void_stackcall_echo_linefeed);
    EXPECT_EQ(screen.text, "\n");
    EXPECT_EQ(stack.esp, stack.end());
}
