// The instruction table's rows, indexed by opcode.
#include "vm/vm_op.h"

namespace zobase {

namespace {

const instruction_info_st instruction_rows[OPCODE_COUNT] = {
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) \
    {"VmOp" #Name, #operands, STACK_##pops, STACK_##pushes, meaning},
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
};

const instruction_info_st no_instruction = {"VmOp", "UNUSED", STACK_0, STACK_0, "no instruction"};

}  // namespace

const instruction_info_st& instruction_info(uint8_t opcode) noexcept {
    return opcode < OPCODE_COUNT ? instruction_rows[opcode] : no_instruction;
}

const char* opcode_class_name(uint8_t opcode) noexcept { return instruction_info(opcode).name; }

uint64_t count_operand(const VmOp* op) noexcept {
    switch (op->opcode) {
#define ZO_COUNT_OF(ENUM, Class) \
    case OP_##ENUM: return static_cast<const Class*>(op)->n;
#define ZO_COUNT_COUNT(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_SYMBOL_COUNT(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_OFFSET_COUNT(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_FUNCTION(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_COMMAND(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_CALL(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_UNRESOLVED(Name, ENUM) ZO_COUNT_OF(ENUM, VmOp##Name)
#define ZO_COUNT_NONE(Name, ENUM)
#define ZO_COUNT_SYMBOL(Name, ENUM)
#define ZO_COUNT_OFFSET(Name, ENUM)
#define ZO_COUNT_OFFSET_SYMBOL(Name, ENUM)
#define ZO_COUNT_JUMP(Name, ENUM)
#define ZO_COUNT_CAST(Name, ENUM)
#define ZO_COUNT_INTEGER(Name, ENUM)
#define ZO_COUNT_NUMERIC(Name, ENUM)
#define ZO_COUNT_MONEY(Name, ENUM)
#define ZO_COUNT_STRING(Name, ENUM)
#define ZO_COUNT_DATE(Name, ENUM)
#define ZO_COUNT_DATETIME(Name, ENUM)
#define ZO_COUNT_FIELD_INDEX(Name, ENUM)
#define ZO_COUNT_CHECK(Name, ENUM)
#define ZO_COUNT_TRY(Name, ENUM)
#define ZO_COUNT_FOR_NEXT(Name, ENUM)
#define ZO_COUNT_ADD_BARE(Name, ENUM)
#define ZO_COUNT_MUL_ADD_INTEGER(Name, ENUM)
#define ZO_COUNT_MUL_ADD_NUMERIC(Name, ENUM)
#define ZO_COUNT_BARE_BY_BARE(Name, ENUM)
#define ZO_COUNT_NAME_MEMBER(Name, ENUM)
#define ZO_COUNT_UNUSED(Name, ENUM)
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) ZO_COUNT_##operands(Name, ENUM)
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
    default: return 0;
    }
}

}  // namespace zobase
