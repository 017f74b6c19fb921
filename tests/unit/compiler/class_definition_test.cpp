// DEFINE CLASS compiled into a module: the members a body gives, the link
// step that finds a parent defined later in the file, and the body's errors.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../runtime/runtime_test_support.h"
#include "compiler/build_input.h"
#include "compiler/module.h"
#include "objects/user_class.h"
#include "values/symtable.h"
#include "vm/vm_stack.h"

namespace zobase::testing {
namespace {

class ClassDefinitionTest : public ::testing::Test {
protected:
    CaptureScreen screen;
    Runtime* runtime = Runtime::create_instance(&screen);
    std::unique_ptr<BuildInput> input;

    ~ClassDefinitionTest() override {
        input.reset();
        ReleaseRuntime(runtime);
    }

    std::unique_ptr<Module> build(const char* text) {
        input = std::make_unique<BuildInput>(runtime->get_main_stack());
        input->import_library(runtime->library());
        return std::unique_ptr<Module>(input->build_module(String("/src/classes.prg"), String(text)));
    }

    std::vector<int> errors_of(const char* text) {
        try {
            build(text);
        } catch (const RuntimeError&) {
        }
        std::vector<int> numbers;
        for (const diagnostic_st& diagnostic : input->diagnostics) numbers.push_back(diagnostic.number);
        return numbers;
    }

    UserClass* find(const Module& module, const char* name) {
        return static_cast<UserClass*>(module.find_class(runtime->symbols().symbolize(name)));
    }
};

}  // namespace

TEST_F(ClassDefinitionTest, BodyGivesPropertiesMethodsAndAccessors) {
    auto module = build(
        "DEFINE CLASS Gauge AS Custom\n"
        "  PROTECTED nLevel\n"
        "  nLevel = 2 * 3\n"
        "  cName = 'g'\n"
        "  DIMENSION aMarks[2, 3]\n"
        "  HIDDEN PROCEDURE Reset\n"
        "    This.nLevel = 0\n"
        "  ENDPROC\n"
        "  FUNCTION nLevel_access\n"
        "    RETURN This.nLevel\n"
        "  FUNCTION nPeak_assign(v)\n"
        "    This.nPeak = v\n"
        "  FUNCTION _access\n"
        "    RETURN 1\n"
        "ENDDEFINE\n");
    UserClass* gauge = find(*module, "gauge");
    ASSERT_NE(gauge, nullptr);
    const ClassMember* level = gauge->find(String("NLEVEL"));
    ASSERT_NE(level, nullptr);
    EXPECT_EQ(level->type, MEMBER_PROPERTY);
    EXPECT_EQ(level->visibility, MEMBER_PROTECTED);
    EXPECT_EQ(level->default_value.integer, 6);
    EXPECT_EQ(level->access, user_class_generic_access);
    EXPECT_EQ(level->assign, user_class_generic_write);
    const ClassMember* peak = gauge->find(String("nPeak"));
    ASSERT_NE(peak, nullptr) << "an assign method alone makes the property";
    EXPECT_EQ(peak->access, user_class_generic_read);
    EXPECT_EQ(peak->assign, user_class_generic_assign);
    EXPECT_EQ(gauge->find(String("Reset"))->visibility, MEMBER_HIDDEN);
    EXPECT_EQ(gauge->find(String("_access"))->type, MEMBER_METHOD) << "no name before the ending";
    EXPECT_EQ(gauge->find(String("aMarks"))->default_value.array.count, 6u);
    // Storage follows the names in order: aMarks, cName, nLevel, nPeak.
    EXPECT_EQ(gauge->stored_count, 4u);
    EXPECT_EQ(gauge->find(String("cName"))->slot, 1u);
    EXPECT_EQ(peak->slot, 3u);
}

TEST_F(ClassDefinitionTest, MethodsHoldThisInTheirFirstSlot) {
    auto module = build(
        "DEFINE CLASS Point AS Custom\n"
        "  x = 1\n"
        "  FUNCTION Moved(dx)\n"
        "    RETURN This.x + dx\n"
        "ENDDEFINE\n");
    const user_method_st& moved = find(*module, "Point")->methods().at(0);
    const Program* program = moved.function->program();
    uint64_t offset = 0;
    ASSERT_TRUE(program->find_local(SYMBOL_THIS, &offset));
    EXPECT_EQ(offset, 1u);
    EXPECT_EQ(program->parameter_count, 1u);
    bool this_from_slot = false;
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        const VmOp* op = program->code()[i];
        EXPECT_NE(op->opcode, OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME) << "no work area is looked for under THIS";
        EXPECT_NE(op->opcode, OP_OBJECT_READ) << "This.x is read in one instruction";
        if (op->opcode == OP_READ_THIS_MEMBER)
            this_from_slot |= static_cast<const VmOpReadThisMember*>(op)->offset == 1;
    }
    EXPECT_TRUE(this_from_slot);
}

TEST_F(ClassDefinitionTest, ParentLaterInTheFileIsLinkedAndCustomMakesARoot) {
    auto module = build(
        "DEFINE CLASS Child AS Parent\n"
        "ENDDEFINE\n"
        "DEFINE CLASS Parent AS custom\n"
        "  FUNCTION Hello\n"
        "    RETURN 1\n"
        "ENDDEFINE\n");
    VmStack* stack = runtime->get_main_stack();
    const std::vector<Class*>& line = find(*module, "Child")->line(stack);
    ASSERT_EQ(line.size(), 2u);
    EXPECT_EQ(line[1], find(*module, "Parent"));
    EXPECT_EQ(find(*module, "Parent")->line(stack).size(), 1u);
    EXPECT_EQ(find(*module, "Child")->base_class_name(stack).u8str(), "Custom");
}

TEST_F(ClassDefinitionTest, BodyErrorsAreCollectedAndTheBodyGoesOn) {
    EXPECT_EQ(errors_of("DEFINE CLASS Bad AS Custom\n"
                        "  x = 1\n"
                        "  IF .T.\n"
                        "  ENDIF\n"
                        "  a.b = 2\n"
                        "  DIMENSION z[0]\n"
                        "  y = {}\n"
                        "ENDDEFINE\n"),
              (std::vector<int>{1927, 1927, 1927, 230}));
    EXPECT_EQ(errors_of("DEFINE CLASS Open AS Custom\n  x = 1\n"), (std::vector<int>{10}));
    EXPECT_EQ(errors_of("x = 1\nENDDEFINE\n"), (std::vector<int>{10}));
}

TEST_F(ClassDefinitionTest, TheFirstClassOfANameStands) {
    auto module = build(
        "DEFINE CLASS Twice AS Custom\n  n = 1\nENDDEFINE\n"
        "DEFINE CLASS Twice AS Custom\n  n = 2\nENDDEFINE\n");
    EXPECT_EQ(module->classes.size(), 1u);
    EXPECT_EQ(find(*module, "twice")->find(String("n"))->default_value.integer, 1);
}

}  // namespace zobase::testing
