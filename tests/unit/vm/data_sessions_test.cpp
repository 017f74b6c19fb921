// The door to work areas and data sessions: what the VM asks of it, seen
// through the language with sessions that have one table, and the plain
// sessions a stack has before the table engine.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/compiler/compiler_test_support.h"
#include "vm/data_sessions.h"
#include "objects/object.h"

namespace zobase::testing {
namespace {

// The work area under the alias CUST: it answers for its field CITY.
class WorkAreaObject : public Object {
public:
    explicit WorkAreaObject(uint32_t field) : field_(field) {}
    void virtual_call(VmStack*, unsigned, size_t, Variant*) override { raise_not_available("call"); }
    void virtual_access(VmStack*, unsigned symbol, size_t, Variant* ret) override {
        if (symbol != field_) throw RuntimeError(ERR_PROPERTY_NOT_FOUND);
        ret->set_string(String("area city"));
    }
    void virtual_access_ref(VmStack*, unsigned, size_t, Variant*) override { raise_not_available("ref"); }
    void virtual_assign(VmStack*, unsigned, size_t) override { raise_not_available("assign"); }

private:
    uint32_t field_;
};

// Two sessions; the current work area has the one field CITY.
class OneTableSessions : public DataSessions {
public:
    session_settings_st sessions[2];

    OneTableSessions(uint32_t city, uint32_t cust) : DataSessions(&sessions[0]), city_(city), cust_(cust) {}
    void select_session(int number) {
        current_ = number;
        use_settings_of(&sessions[number]);
    }

    int32_t session_id() const override { return current_ + 1; }

    bool find_field(VmStack*, uint32_t symbol, field_ref_st* out) override {
        if (symbol != city_) return false;
        *out = {this, 0};
        return true;
    }
    void read_field(VmStack*, const field_ref_st& field, Variant* dest) override {
        EXPECT_EQ(field.table, this);
        dest->set_string(String("field city"));
    }
    void write_field(VmStack*, const field_ref_st&, const Variant&) override {
        ADD_FAILURE() << "reading code never writes a field";
    }
    bool find_work_area(VmStack*, uint32_t alias, Variant* dest) override {
        if (alias != cust_) return false;
        wrap_new_object(new WorkAreaObject(city_), dest);
        return true;
    }
    void read_expression_field(VmStack*, uint16_t index, Variant* dest) override {
        dest->set_integer(static_cast<long long>(index) * 10);
    }

private:
    uint32_t city_, cust_;
    int current_ = 0;
};

class DataSessionsDoor : public CompilerFixture {
protected:
    OneTableSessions* sessions = nullptr;

    DataSessionsDoor() {
        auto owned = std::make_unique<OneTableSessions>(runtime->symbols().symbolize("city"),
                                                        runtime->symbols().symbolize("cust"));
        sessions = owned.get();
        stack->sessions = std::move(owned);
    }
};

TEST_F(DataSessionsDoor, ABareNameReadsTheFieldBeforeTheVariable) {
    ASSERT_EQ(run("city = \"variable\""), 0);
    ASSERT_EQ(run("? city, m.city"), 0) << screen.errors;
    EXPECT_EQ(screen.output, "field city variable\n");
}

TEST_F(DataSessionsDoor, AnAliasReachesItsWorkAreaWithEitherOperator) {
    ASSERT_EQ(run("? cust.city, cust->city"), 0) << screen.errors;
    EXPECT_EQ(screen.output, "area city area city\n");
    EXPECT_EQ(run("? nocust.city"), ERR_VARIABLE_NOT_FOUND) << "no work area: the alias is a variable";
}

TEST_F(DataSessionsDoor, SetExactIsTheCurrentSessionsOwn) {
    ASSERT_EQ(run("SET EXACT ON"), 0);
    EXPECT_TRUE(sessions->sessions[0].exact);
    ASSERT_EQ(run("? \"AB\" = \"A\""), 0);
    sessions->select_session(1);
    ASSERT_EQ(run("? \"AB\" = \"A\""), 0);
    sessions->select_session(0);
    ASSERT_EQ(run("? \"AB\" = \"A\""), 0);
    EXPECT_EQ(screen.output, "false\ntrue\nfalse\n");
    EXPECT_FALSE(sessions->sessions[1].exact);
}

TEST_F(DataSessionsDoor, FieldsByPositionComeThroughTheDoor) {
    Program program;
    program.emit(new VmOpReadFieldByIndex(4));
    program.emit(new VmOpReturnValue());
    Variant result;
    execute_program(stack, 0, false, &program, &result);
    EXPECT_EQ(result.integer, 40);
}

// A bare name keeps what it found inside its instruction; sessions put in
// place of others start a names epoch of their own, so the same instruction
// looks again and finds the field.
class ReplacedSessions : public CompilerFixture {};

TEST_F(ReplacedSessions, AnAnswerKeptUnderTheOldSessionsNeverStands) {
    ASSERT_EQ(run("city = \"variable\""), 0);
    BuildInput input(stack);
    input.import_library(runtime->library());
    std::unique_ptr<Program> program(input.build_command(String("? city")));
    Variant result;
    execute_program(stack, 0, false, program.get(), &result);
    execute_program(stack, 0, false, program.get(), &result);
    stack->sessions = std::make_unique<OneTableSessions>(runtime->symbols().symbolize("city"), 0);
    execute_program(stack, 0, false, program.get(), &result);
    result.release(stack);
    EXPECT_EQ(screen.output, "variable\nvariable\nfield city\n");
}

// Sessions whose one table, with the field CITY, opens and closes.
class OpeningSessions : public DataSessions {
public:
    explicit OpeningSessions(uint32_t city) : DataSessions(&settings_), city_(city) {}
    void set_open(bool open) {
        open_ = open;
        fields_changed();
    }

    int32_t session_id() const override { return 1; }
    bool find_field(VmStack*, uint32_t symbol, field_ref_st* out) override {
        if (!open_ || symbol != city_) return false;
        *out = {this, 0};
        return true;
    }
    void read_field(VmStack*, const field_ref_st&, Variant* dest) override { dest->set_string(String("field")); }
    void write_field(VmStack*, const field_ref_st&, const Variant&) override { ADD_FAILURE(); }
    bool find_work_area(VmStack*, uint32_t, Variant*) override { return false; }
    void read_expression_field(VmStack*, uint16_t, Variant*) override { ADD_FAILURE(); }

private:
    session_settings_st settings_;
    uint32_t city_;
    bool open_ = false;
};

// The stack keeps the epoch of whichever sessions it holds: what they
// change after they were put in place reaches every kept answer.
TEST_F(ReplacedSessions, WhatTheNewSessionsChangeReachesKeptAnswers) {
    ASSERT_EQ(run("city = \"variable\""), 0);
    auto owned = std::make_unique<OpeningSessions>(runtime->symbols().symbolize("city"));
    OpeningSessions* sessions = owned.get();
    stack->sessions = std::move(owned);
    BuildInput input(stack);
    input.import_library(runtime->library());
    std::unique_ptr<Program> program(input.build_command(String("?? city, \"\"")));
    Variant result;
    for (bool open : {false, true, true, false, false, true}) {
        sessions->set_open(open);
        execute_program(stack, 0, false, program.get(), &result);
        execute_program(stack, 0, false, program.get(), &result);
    }
    result.release(stack);
    EXPECT_EQ(screen.output,
              "variable variable field field field field variable variable variable variable field field ");
}

TEST(PlainDataSessions, ANewSessionHasTheTraditionalSettings) {
    PlainDataSessions plain;
    const session_settings_st& settings = plain.settings();
    EXPECT_EQ(settings.formats.point.code_point, U'.');
    EXPECT_EQ(std::string(settings.formats.point.bytes, settings.formats.point.length), ".");
    EXPECT_EQ(settings.formats.separator, U',');
    EXPECT_EQ(settings.formats.decimals, 2);
    EXPECT_EQ(settings.formats.date_style, DATE_STYLE_AMERICAN);
    EXPECT_STREQ(settings.formats.date_mark, "/");
    EXPECT_FALSE(settings.formats.century);
    EXPECT_EQ(settings.formats.hours, 12);
    EXPECT_TRUE(settings.formats.seconds);
    EXPECT_FALSE(settings.exact);
    EXPECT_FALSE(settings.near);
    EXPECT_TRUE(settings.exclusive);
    EXPECT_FALSE(settings.deleted);
    EXPECT_EQ(settings.blocksize, 64u);
}

TEST(PlainDataSessions, HaveNoFieldsAndNoWorkAreas) {
    VmStack stack(nullptr, 16, 4);
    field_ref_st field{};
    Variant object;
    EXPECT_FALSE(stack.sessions->find_field(&stack, 200, &field));
    EXPECT_FALSE(stack.sessions->find_work_area(&stack, 200, &object));
    EXPECT_EQ(object.tag, TAG_FALSE);
    Variant value;
    try {
        stack.sessions->read_expression_field(&stack, 0, &value);
        FAIL() << "an expression field without a table engine";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number, ERR_NOT_AVAILABLE);
        EXPECT_EQ(e.parameter.u8str(), "VmOpReadFieldByIndex");
    }
}

}  // namespace
}  // namespace zobase::testing
