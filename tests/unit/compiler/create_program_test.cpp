// Flattening code lists into programs: labels, locations, statement map and
// the threading of short-circuit jumps.
#include "compiler_test_support.h"

namespace zobase::testing {
namespace {

class CreateProgramTest : public CompilerFixture {
protected:
    document_location_st line(uint32_t n) {
        document_location_st location{};
        location.start.line = location.end.line = n;
        location.start.column = 1;
        return location;
    }
    std::unique_ptr<Program> build() {
        return std::unique_ptr<Program>(compiler.create_program(String("t"), &compiler.code, compiler.locals, 0,
                                                                line(1), nullptr));
    }
    static VmOp** target_of(const Program& program, size_t i) {
        return static_cast<const VmOpJumpBase*>(program.code()[i])->target;
    }
};

TEST_F(CreateProgramTest, TwoLabelsInARowStandForTheSameElement) {
    AddressLabelRecord* a = compiler.create_addresslabel(String("a"));
    AddressLabelRecord* b = compiler.create_addresslabel(String("b"));
    compiler.code.push_back(jump_to<VmOpJump>(a));
    compiler.code.push_back(jump_to<VmOpJump>(b));
    compiler.code.push_back(a);
    compiler.code.push_back(b);
    compiler.code.push_back(new VmOpReturn());
    auto program = build();
    ASSERT_EQ(program->instruction_count(), 3u);
    EXPECT_EQ(target_of(*program, 0), program->code() + 2);
    EXPECT_EQ(target_of(*program, 1), program->code() + 2);
}

TEST_F(CreateProgramTest, LabelPlacedLastIsTheTerminatingElement) {
    AddressLabelRecord* end = compiler.create_addresslabel(String("end"));
    compiler.code.push_back(jump_to<VmOpJump>(end));
    compiler.code.push_back(new VmOpReturn());
    compiler.code.push_back(end);
    auto program = build();
    ASSERT_EQ(program->instruction_count(), 2u);
    EXPECT_EQ(target_of(*program, 0), program->code() + 2);
    EXPECT_EQ(program->code()[2], nullptr);
    EXPECT_TRUE(compiler.code.empty());
}

TEST_F(CreateProgramTest, UnplacedLabelIsAnInternalError) {
    compiler.code.push_back(jump_to<VmOpJump>(compiler.create_addresslabel(String("never"))));
    compiler.code.push_back(new VmOpReturn());
    EXPECT_THROW(build(), assert_failed_exception);
}

// false; jump-if-false-or-null to A; true; A: <second jump> to B; true; B: return
template <class SecondJump>
std::unique_ptr<Program> two_jump_chain(Compiler& compiler, std::function<std::unique_ptr<Program>()> build) {
    AddressLabelRecord* first = compiler.create_addresslabel(String("first"));
    AddressLabelRecord* second = compiler.create_addresslabel(String("second"));
    compiler.code.push_back(new VmOpReadConstFalse());
    compiler.code.push_back(jump_to<VmOpCondFalseOrNullJumpKeepEsp>(first));
    compiler.code.push_back(new VmOpReadConstTrue());
    compiler.code.push_back(first);
    compiler.code.push_back(jump_to<SecondJump>(second));
    compiler.code.push_back(new VmOpReadConstTrue());
    compiler.code.push_back(second);
    compiler.code.push_back(new VmOpReturnValue());
    return build();
}

TEST_F(CreateProgramTest, FalseOrNullChainJumpsStraightToItsEnd) {
    auto program = two_jump_chain<VmOpCondFalseOrNullJumpKeepEsp>(compiler, [this] { return build(); });
    EXPECT_EQ(target_of(*program, 1), program->code() + 5);
    EXPECT_EQ(target_of(*program, 3), program->code() + 5);
}

TEST_F(CreateProgramTest, FalseOrNullJumpSkipsATrueJump) {
    auto program = two_jump_chain<VmOpCondTrueJumpKeepEsp>(compiler, [this] { return build(); });
    EXPECT_EQ(target_of(*program, 1), program->code() + 4);
    EXPECT_EQ(target_of(*program, 3), program->code() + 5);
}

TEST_F(CreateProgramTest, LocationsAndStatementsAreRecorded) {
    compiler.statement_number = 1;
    compiler.code.push_back(line(3), new VmOpReadConstTrue());
    compiler.code.push_back(new VmOpEspFree());
    compiler.statement_number = 2;
    compiler.code.push_back(line(7), new VmOpReadConstTrue());
    compiler.code.push_back(line(5), new VmOpReturnValue());
    auto program = build();
    size_t position = 0;
    ASSERT_TRUE(program->first_position_of_statement(2, &position));
    EXPECT_EQ(position, 2u);
    document_location_st where{};
    ASSERT_TRUE(program->location_of(1, &where));
    EXPECT_EQ(where.start.line, 3u);  // no location of its own: the one before
    EXPECT_EQ(program->last_location.start.line, 7u);
}

TEST_F(CreateProgramTest, ForcedLocationWins) {
    compiler.has_forced_location = true;
    compiler.forced_location = line(9);
    compiler.code.push_back(line(2), new VmOpReadConstTrue());
    compiler.code.push_back(new VmOpReturnValue());
    auto program = build();
    document_location_st where{};
    ASSERT_TRUE(program->location_of(1, &where));
    EXPECT_EQ(where.start.line, 9u);
}

TEST_F(CreateProgramTest, UnresolvedCallsAreListedAndLinkedByName) {
    compiler.code.push_back(new VmOpEspAlloc());
    compiler.code.push_back(new VmOpUnresolvedCall(String("later"), 0));
    compiler.code.push_back(new VmOpReturnValue());
    std::vector<size_t> unresolved;
    std::unique_ptr<Program> program(
        compiler.create_program(String("t"), &compiler.code, compiler.locals, 0, line(1), &unresolved));
    ASSERT_EQ(unresolved, std::vector<size_t>{1});
    LinkerInfo info{&runtime->symbols()};
    link_anonymous_program(info, program.get());
    ASSERT_EQ(program->code()[1]->opcode, OP_CALL_BY_NAME);
    EXPECT_EQ(static_cast<const VmOpCallByName*>(program->code()[1])->symbol,
              runtime->symbols().symbolize("LATER"));
}

TEST_F(CreateProgramTest, LocalSlotsOnlyWithFlagOne) {
    unsigned long long offset = 0;
    EXPECT_FALSE(compiler.compile_time_define_memvar(300, &offset));
    compiler.reset(COMPILER_FLAGS_FUNCTION, true);
    ASSERT_TRUE(compiler.compile_time_define_memvar(300, &offset));
    EXPECT_EQ(offset, 1u);
    ASSERT_TRUE(compiler.compile_time_define_memvar(301, &offset));
    EXPECT_EQ(offset, 2u);
    ASSERT_TRUE(compiler.compile_time_define_memvar(300, &offset));
    EXPECT_EQ(offset, 1u);
}

TEST_F(CreateProgramTest, TemporaryKeepsItsSlotButNotItsNameOutsideTheBlock) {
    compiler.reset(COMPILER_FLAGS_FUNCTION, true);
    std::unique_ptr<Operand_Variable> temp;
    unsigned symbol;
    {
        CodePath inner(path);
        temp.reset(inner.compile_create_temp_memvar(line(1), "if", &compiler.code));
        symbol = inner.symbolize(temp->name);
        unsigned long long offset;
        bool certain = false;
        ASSERT_TRUE(inner.variable_get(symbol, &offset, &certain));
        EXPECT_TRUE(certain);
    }
    EXPECT_EQ(temp->name.u8str(), ".local~if~0");
    unsigned long long offset;
    bool certain = true;
    ASSERT_TRUE(path.variable_get(symbol, &offset, &certain));
    EXPECT_FALSE(certain);
    EXPECT_EQ(opcodes(), std::vector<uint8_t>{OP_DEF_LOCAL_OFFSET});
}

}  // namespace
}  // namespace zobase::testing
