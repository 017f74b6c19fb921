#pragma once
// Instructions. They are objects only to own their operands; the dispatch
// loop reads the opcode byte and runs one switch, never a virtual call. The
// opcodes, the classes and their stack effects come from one table,
// vm/instructions.def.
#include <cstdint>

#include "values/number_types.h"
#include "values/string.h"
#include "vm/member_site.h"
#include "vm/name_site.h"

namespace zobase {

class VmStack;
class Variant;
class Program;
class UserFunction;

// OP_<ENUM> for each row of the instruction table.
enum Opcode : uint8_t {
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) OP_##ENUM = code,
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
};

namespace instruction_table_detail {
constexpr uint8_t codes[] = {
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) code,
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
};
constexpr bool dense() {
    for (size_t i = 0; i < sizeof codes; ++i)
        if (codes[i] != i) return false;
    return true;
}
}  // namespace instruction_table_detail

constexpr int OPCODE_COUNT = sizeof instruction_table_detail::codes;
static_assert(instruction_table_detail::dense(), "the table lists every opcode once, in order");

// How many slots an instruction takes from the top of the stack and leaves
// there; the markers below 0 are worked out from the instruction.
enum StackCount : int8_t {
    STACK_0 = 0,
    STACK_1 = 1,
    STACK_2 = 2,
    STACK_3 = 3,
    STACK_N = -1,      // the instruction's n operand
    STACK_N1 = -2,     // n + 1
    STACK_FRAME = -3,  // everything down to the frame's own slots
    STACK_TAKEN = -4,  // 1 when the jump was taken, else 0
};

struct instruction_info_st {
    const char* name;      // the class name
    const char* operands;  // the shape of its operands, as the table names it
    StackCount pops;
    StackCount pushes;
    const char* meaning;
};

// The row of an opcode; OPCODE_COUNT and above are no instruction.
const instruction_info_st& instruction_info(uint8_t opcode) noexcept;
// The class name of an opcode, for messages about instructions not built yet.
const char* opcode_class_name(uint8_t opcode) noexcept;

// The offset of DefPublicOffset and InitParameter in code that has no frame
// slots of its own (the prompt, macro text): frame slots count from 1.
constexpr uint64_t NO_FRAME_SLOT = 0;

class VmOp {
public:
    uint8_t opcode;
    uint64_t statement = 0;  // running number of the source statement

    explicit VmOp(uint8_t op) : opcode(op) {}
    virtual ~VmOp() = default;
    VmOp(const VmOp&) = delete;
    VmOp& operator=(const VmOp&) = delete;
};

// How many look-up places (vm/name_site.h) an instruction that finds a
// name at run time holds: one per way it looks the name up.
constexpr int name_sites_of(uint8_t op) {
    switch (op) {
    case OP_READ_BY_NAME:
    case OP_READ_MEMVAR_BY_NAME:
    case OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME:
    case OP_READ_MEMVAR_POINTER_BY_NAME:
    case OP_READ_ADD_WRITE:
    case OP_WRITE_MEMVAR_BY_NAME:
    case OP_READ_BARE_LOCAL:
    case OP_READ_ARRAY_BY_NAME:
    case OP_WRITE_ARRAY_BY_NAME:
    case OP_ADD_BY_BARE:
    case OP_MUL_BY_BARE:
    case OP_DIV_BY_BARE: return 1;
    // The bare name read, then the variable assigned.
    case OP_ADD_TO_BARE_NAME:
    case OP_ADD_TO_BARE_LOCAL: return 2;
    default: return 0;
    }
}

// Whether an instruction keeps the member its look-up found (vm/member_site.h).
constexpr int member_sites_of(uint8_t op) {
    switch (op) {
    case OP_OBJECT_CALL:
    case OP_OBJECT_READ:
    case OP_READ_THIS_MEMBER:
    case OP_WRITE_THIS_MEMBER:
    case OP_ADD_TO_THIS_MEMBER: return 1;
    default: return 0;
    }
}

// Instruction shapes. Each opcode is a distinct class named as in the
// instruction table; the shape only says which operands it holds.
template <uint8_t OP>
class VmOpPlain : public VmOp {
public:
    VmOpPlain() : VmOp(OP) {}
};

template <uint8_t OP>
class VmOpSymbol : public VmOp, public NameSites<name_sites_of(OP)> {
public:
    uint32_t symbol;
    explicit VmOpSymbol(uint32_t s) : VmOp(OP), symbol(s) {}
};

template <uint8_t OP>
class VmOpCount : public VmOp {
public:
    uint64_t n;
    explicit VmOpCount(uint64_t count) : VmOp(OP), n(count) {}
};

template <uint8_t OP>
class VmOpOffset : public VmOp {
public:
    uint64_t offset;
    explicit VmOpOffset(uint64_t off) : VmOp(OP), offset(off) {}
};

template <uint8_t OP>
class VmOpOffsetSymbol : public VmOp, public NameSites<name_sites_of(OP)>, public MemberSites<member_sites_of(OP)> {
public:
    uint64_t offset;
    uint32_t symbol;
    VmOpOffsetSymbol(uint64_t off, uint32_t s) : VmOp(OP), offset(off), symbol(s) {}
};

template <uint8_t OP>
class VmOpSymbolCount : public VmOp, public NameSites<name_sites_of(OP)>, public MemberSites<member_sites_of(OP)> {
public:
    uint32_t symbol;
    uint64_t n;
    VmOpSymbolCount(uint32_t s, uint64_t count) : VmOp(OP), symbol(s), n(count) {}
};

template <uint8_t OP>
class VmOpOffsetCount : public VmOp {
public:
    uint64_t offset;
    uint64_t n;
    VmOpOffsetCount(uint64_t off, uint64_t count) : VmOp(OP), offset(off), n(count) {}
};

// A jump target is the address of an element of the program's code array.
class VmOpJumpBase : public VmOp {
public:
    VmOp** target = nullptr;
    explicit VmOpJumpBase(uint8_t op) : VmOp(op) {}
};

template <uint8_t OP>
class VmOpJumpShape : public VmOpJumpBase {
public:
    VmOpJumpShape() : VmOpJumpBase(OP) {}
};

class VmOpCastBase : public VmOp {
public:
    bool allow_null;
    VmOpCastBase(uint8_t op, bool allow) : VmOp(op), allow_null(allow) {}
};

template <uint8_t OP>
class VmOpCast : public VmOpCastBase {
public:
    explicit VmOpCast(bool allow) : VmOpCastBase(OP, allow) {}
};

template <uint8_t OP, typename T>
class VmOpConst : public VmOp {
public:
    T value;
    explicit VmOpConst(const T& v) : VmOp(OP), value(v) {}
};

typedef void (*native_function)(VmStack* stack, unsigned long long argc, Variant* result);
typedef void (*native_command)(VmStack* stack, unsigned long long argc);

template <uint8_t OP, typename Handler>
class VmOpNative : public VmOp {
public:
    Handler handler;
    uint64_t n;
    VmOpNative(Handler h, uint64_t count) : VmOp(OP), handler(h), n(count) {}
};

// A direct call of a function the linker found.
class VmOpCallUserFunction : public VmOp {
public:
    const UserFunction* function;
    uint64_t n;
    VmOpCallUserFunction(const UserFunction* f, uint64_t count)
        : VmOp(OP_CALL_USER_FUNCTION), function(f), n(count) {}
};

// Bits of VmOpCheckArgument's flags.
enum ArgumentFlags : uint8_t {
    ARGUMENT_BY_REFERENCE = 1,  // must be a by-reference slot
    ARGUMENT_MAY_BE_REFERENCE = 2,
    ARGUMENT_NULL_ALLOWED = 4,
};

class VmOpCheckArgument : public VmOp {
public:
    uint8_t type;  // the wanted tag
    uint8_t flags;
    VmOpCheckArgument(uint8_t wanted, uint8_t argument_flags)
        : VmOp(OP_CHECK_ARGUMENT), type(wanted), flags(argument_flags) {}
};

// A call the linker missed; running it is a compiler fault.
class VmOpUnresolvedCall : public VmOp {
public:
    String name;
    uint64_t n;
    VmOpUnresolvedCall(const String& function_name, uint64_t count)
        : VmOp(OP_UNRESOLVED_CALL), name(function_name), n(count) {}
};

// The end of a FOR round in a frame with slots for its limit and step: the
// step is added to the loop variable (a frame slot known to be LOCAL, or
// the variable of that name), then the loop's test reads the variable as a
// bare name, as the test at the loop's head does. The target is the body.
// Its look-up places: the variable the step goes to, the bare name tested.
class VmOpForNextJump : public VmOpJumpBase, public NameSites<2> {
public:
    uint64_t variable = 0;  // 0: by name
    uint32_t symbol = 0;
    uint64_t limit = 0;
    uint64_t step = 0;
    VmOpForNextJump() : VmOpJumpBase(OP_FOR_NEXT_JUMP) {}
};

// `x = x + y` with y a bare name: AddToBareName (or AddToBareLocal, with the
// slot) whose right side is read as ReadByName (or ReadBareLocal) reads it.
// One instruction instead of two, and two numbers add with no slot pushed.
// Its look-up places: the target read bare, the target assigned, the source.
class VmOpAddBareToBare : public VmOp, public NameSites<3> {
public:
    uint64_t offset = 0;  // the target's frame slot; 0: by name
    uint32_t symbol = 0;
    uint64_t source_offset = 0;  // the source's frame slot; 0: by name
    uint32_t source = 0;
    VmOpAddBareToBare() : VmOp(OP_ADD_BARE_TO_BARE) {}
};

// `x = x * factor + addend` with two number constants of one type: the bare
// read, MulConst, AddConst and the assignment in one; two numbers take the
// product and the sum in the variable itself.
// Its look-up places: the name read bare, the variable assigned.
template <uint8_t OP, typename T>
class VmOpMulAddToBare : public VmOp, public NameSites<2> {
public:
    uint64_t offset = 0;  // the target's frame slot; 0: by name
    uint32_t symbol = 0;
    T factor{};
    T addend{};
    VmOpMulAddToBare() : VmOp(OP) {}
};

// `left op right` with both operands bare names: the two reads and the
// operator in one; the names read as ReadByName (ReadBareLocal, with the
// slot) reads them. Its look-up places: the left name, the right name.
template <uint8_t OP>
class VmOpBareByBare : public VmOp, public NameSites<2> {
public:
    uint64_t left_offset = 0;  // 0: by name
    uint32_t left = 0;
    uint64_t offset = 0;  // the right operand's slot; 0: by name
    uint32_t symbol = 0;
    VmOpBareByBare() : VmOp(OP) {}
};

// `name.member` read where the name is looked up as an alias or else a
// variable: ReadFileObjectOrMemvarByName and ObjectRead without subscripts
// in one, and the variable's object is read in place, not copied.
class VmOpReadNameMember : public VmOp, public NameSites<1>, public MemberSites<1> {
public:
    uint32_t root;    // the name
    uint32_t symbol;  // the member
    VmOpReadNameMember(uint32_t name, uint32_t member) : VmOp(OP_READ_NAME_MEMBER), root(name), symbol(member) {}
};

// The class of each row whose operands have a template shape; the rows of
// shape CALL, CHECK, UNRESOLVED, FOR_NEXT, ADD_BARE, NAME_MEMBER and TRY name the classes above and in
// vm/try_scope.h.
#define ZO_SHAPE_NONE(Name, ENUM) using VmOp##Name = VmOpPlain<OP_##ENUM>;
#define ZO_SHAPE_SYMBOL(Name, ENUM) using VmOp##Name = VmOpSymbol<OP_##ENUM>;
#define ZO_SHAPE_COUNT(Name, ENUM) using VmOp##Name = VmOpCount<OP_##ENUM>;
#define ZO_SHAPE_OFFSET(Name, ENUM) using VmOp##Name = VmOpOffset<OP_##ENUM>;
#define ZO_SHAPE_OFFSET_SYMBOL(Name, ENUM) using VmOp##Name = VmOpOffsetSymbol<OP_##ENUM>;
#define ZO_SHAPE_SYMBOL_COUNT(Name, ENUM) using VmOp##Name = VmOpSymbolCount<OP_##ENUM>;
#define ZO_SHAPE_OFFSET_COUNT(Name, ENUM) using VmOp##Name = VmOpOffsetCount<OP_##ENUM>;
#define ZO_SHAPE_JUMP(Name, ENUM) using VmOp##Name = VmOpJumpShape<OP_##ENUM>;
#define ZO_SHAPE_CAST(Name, ENUM) using VmOp##Name = VmOpCast<OP_##ENUM>;
#define ZO_SHAPE_INTEGER(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, integer_type_st>;
#define ZO_SHAPE_NUMERIC(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, numeric_type_st>;
#define ZO_SHAPE_MONEY(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, money_type_st>;
#define ZO_SHAPE_STRING(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, String>;
#define ZO_SHAPE_DATE(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, date_st>;
#define ZO_SHAPE_DATETIME(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, datetime_st>;
#define ZO_SHAPE_FIELD_INDEX(Name, ENUM) using VmOp##Name = VmOpConst<OP_##ENUM, uint16_t>;
#define ZO_SHAPE_FUNCTION(Name, ENUM) using VmOp##Name = VmOpNative<OP_##ENUM, native_function>;
#define ZO_SHAPE_COMMAND(Name, ENUM) using VmOp##Name = VmOpNative<OP_##ENUM, native_command>;
#define ZO_SHAPE_CALL(Name, ENUM)
#define ZO_SHAPE_CHECK(Name, ENUM)
#define ZO_SHAPE_UNRESOLVED(Name, ENUM)
#define ZO_SHAPE_TRY(Name, ENUM)
#define ZO_SHAPE_FOR_NEXT(Name, ENUM)
#define ZO_SHAPE_ADD_BARE(Name, ENUM)
#define ZO_SHAPE_BARE_BY_BARE(Name, ENUM) using VmOp##Name = VmOpBareByBare<OP_##ENUM>;
#define ZO_SHAPE_MUL_ADD_INTEGER(Name, ENUM) using VmOp##Name = VmOpMulAddToBare<OP_##ENUM, integer_type_st>;
#define ZO_SHAPE_MUL_ADD_NUMERIC(Name, ENUM) using VmOp##Name = VmOpMulAddToBare<OP_##ENUM, numeric_type_st>;
#define ZO_SHAPE_NAME_MEMBER(Name, ENUM)
#define ZO_SHAPE_UNUSED(Name, ENUM)
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) ZO_SHAPE_##operands(Name, ENUM)
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
#undef ZO_SHAPE_NONE
#undef ZO_SHAPE_SYMBOL
#undef ZO_SHAPE_COUNT
#undef ZO_SHAPE_OFFSET
#undef ZO_SHAPE_OFFSET_SYMBOL
#undef ZO_SHAPE_SYMBOL_COUNT
#undef ZO_SHAPE_OFFSET_COUNT
#undef ZO_SHAPE_JUMP
#undef ZO_SHAPE_CAST
#undef ZO_SHAPE_INTEGER
#undef ZO_SHAPE_NUMERIC
#undef ZO_SHAPE_MONEY
#undef ZO_SHAPE_STRING
#undef ZO_SHAPE_DATE
#undef ZO_SHAPE_DATETIME
#undef ZO_SHAPE_FIELD_INDEX
#undef ZO_SHAPE_FUNCTION
#undef ZO_SHAPE_COMMAND
#undef ZO_SHAPE_CALL
#undef ZO_SHAPE_CHECK
#undef ZO_SHAPE_UNRESOLVED
#undef ZO_SHAPE_TRY
#undef ZO_SHAPE_FOR_NEXT
#undef ZO_SHAPE_ADD_BARE
#undef ZO_SHAPE_BARE_BY_BARE
#undef ZO_SHAPE_MUL_ADD_INTEGER
#undef ZO_SHAPE_MUL_ADD_NUMERIC
#undef ZO_SHAPE_NAME_MEMBER
#undef ZO_SHAPE_UNUSED

// The n operand of an instruction that has one, else 0.
uint64_t count_operand(const VmOp* op) noexcept;

}  // namespace zobase
