#pragma once
// Instructions. They are objects only to own their operands; the dispatch
// loop reads the opcode byte and runs one switch, never a virtual call.
#include <cstdint>

#include "values/number_types.h"
#include "values/string.h"

namespace zobase {

class VmStack;
class Variant;
class Program;
class UserFunction;

enum Opcode : uint8_t {
    OP_UNWIND_FRAME = 0,
    OP_RESET_ESP = 1,
    OP_BINARY_ADD = 2,
    OP_BINARY_SUB = 3,
    OP_BINARY_MUL = 4,
    OP_BINARY_DIV = 5,
    OP_BINARY_POW = 6,
    OP_BINARY_MOD = 7,
    OP_BINARY_EQ = 8,
    OP_BINARY_LT = 9,
    OP_BINARY_LTEQ = 10,
    OP_BINARY_GT = 11,
    OP_BINARY_GTEQ = 12,
    OP_BINARY_LTGT = 13,
    OP_BINARY_EQEQ = 14,
    OP_CALL_USER_FUNCTION = 15,
    OP_CALL_BY_NAME = 16,
    OP_CALL_NATIVE = 17,
    OP_CALL_NATIVE_VOID = 18,
    OP_CAST_TO_BOOLEAN = 19,
    OP_CAST_TO_INTEGER = 20,
    OP_CAST_TO_NUMERIC = 21,
    OP_CAST_TO_MONEY = 22,
    OP_CAST_TO_DATE = 23,
    OP_CAST_TO_DATETIME = 24,
    OP_CAST_TO_STRING = 25,
    OP_CAST_TO_OBJECT = 26,
    OP_CHECK_NOT_NULL = 27,
    OP_CHECK_ARGUMENT = 28,
    OP_COND_TRUE_JUMP = 29,
    OP_COND_TRUE_JUMP_KEEP_ESP = 30,
    OP_COND_FALSE_OR_NULL_JUMP = 31,
    OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP = 32,
    OP_COND_TRUE_OR_NULL_MERGE_2P = 33,
    OP_READ_MEMVAR_POINTER_CREATE = 34,
    OP_DEF_LOCAL = 35,
    OP_DEF_LOCAL_OFFSET = 36,
    OP_DEF_PRIVATE_SYMBOL = 37,
    OP_DEF_PUBLIC_OFFSET = 38,
    OP_ESP_ALLOC = 39,
    OP_ESP_FREE = 40,
    OP_FOR_COND_FALSE_JUMP = 41,
    OP_INIT_LPARAMETERS = 42,
    OP_INIT_PARAMETER = 43,
    OP_JUMP = 44,
    OP_MACRO_EXECUTE = 45,
    OP_OBJECT_CALL = 46,
    OP_OBJECT_CALL_POINTER = 47,
    OP_RETURN_VALUE = 48,
    OP_RETURN_POINTER = 49,
    OP_RETURN = 50,
    OP_READ_BY_NAME = 51,
    OP_READ_MEMVAR_BY_NAME = 52,
    OP_READ_MEMVAR_OR_FALSE = 53,
    OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME = 54,
    OP_READ_LOCAL_MEMVAR_BY_OFFSET = 55,
    OP_READ_ARRAY_BY_NAME = 56,
    OP_READ_ARRAY_BY_OFFSET = 57,
    OP_READ_CONST_TRUE = 58,
    OP_READ_CONST_FALSE = 59,
    OP_READ_CONST_INTEGER = 60,
    OP_READ_CONST_NUMERIC = 61,
    OP_READ_CONST_MONEY = 62,
    OP_READ_CONST_STRING = 63,
    OP_READ_CONST_DATE = 64,
    OP_READ_CONST_DATETIME = 65,
    OP_READ_CONST_NULL = 66,
    OP_UNUSED_67 = 67,  // never emitted
    OP_OBJECT_READ = 68,
    OP_OBJECT_READ_POINTER = 69,
    OP_READ_MEMVAR_POINTER_BY_NAME = 70,
    OP_READ_LOCAL_MEMVAR_POINTER_BY_OFFSET = 71,
    OP_READ_ADD_WRITE = 72,
    OP_READ_ADD_WRITE_LOCAL = 73,
    OP_STORE = 74,
    OP_UNARY_NOT = 75,
    OP_UNARY_NEG = 76,
    OP_TEST_TEXTMERGE_ON = 77,
    OP_WRITE_MEMVAR_BY_NAME = 78,
    OP_WRITE_MEMVAR_BY_OFFSET = 79,
    OP_WRITE_ARRAY_BY_NAME = 80,
    OP_WRITE_ARRAY_BY_OFFSET = 81,
    OP_OBJECT_WRITE = 82,
    OP_UNRESOLVED_CALL = 83,
    OP_TRY_ENTER = 84,
    OP_READ_FIELD_BY_INDEX = 85,
};
constexpr int OPCODE_COUNT = 86;

// The class name of an opcode, for messages about instructions not built yet.
const char* opcode_class_name(uint8_t opcode) noexcept;

class VmOp {
public:
    uint8_t opcode;
    uint64_t statement = 0;  // running number of the source statement

    explicit VmOp(uint8_t op) : opcode(op) {}
    virtual ~VmOp() = default;
    VmOp(const VmOp&) = delete;
    VmOp& operator=(const VmOp&) = delete;
};

// Instruction shapes. Each opcode is a distinct class named as in the
// instruction table; the shape only says which operands it holds.
template <uint8_t OP>
class VmOpPlain : public VmOp {
public:
    VmOpPlain() : VmOp(OP) {}
};

template <uint8_t OP>
class VmOpSymbol : public VmOp {
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
class VmOpOffsetSymbol : public VmOp {
public:
    uint64_t offset;
    uint32_t symbol;
    VmOpOffsetSymbol(uint64_t off, uint32_t s) : VmOp(OP), offset(off), symbol(s) {}
};

template <uint8_t OP>
class VmOpSymbolCount : public VmOp {
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

using VmOpUnwindFrame = VmOpPlain<OP_UNWIND_FRAME>;
using VmOpResetEsp = VmOpPlain<OP_RESET_ESP>;
using VmOpBinaryAdd = VmOpPlain<OP_BINARY_ADD>;
using VmOpBinarySub = VmOpPlain<OP_BINARY_SUB>;
using VmOpBinaryMul = VmOpPlain<OP_BINARY_MUL>;
using VmOpBinaryDiv = VmOpPlain<OP_BINARY_DIV>;
using VmOpBinaryPow = VmOpPlain<OP_BINARY_POW>;
using VmOpBinaryMod = VmOpPlain<OP_BINARY_MOD>;
using VmOpBinaryEq = VmOpPlain<OP_BINARY_EQ>;
using VmOpBinaryLt = VmOpPlain<OP_BINARY_LT>;
using VmOpBinaryLtEq = VmOpPlain<OP_BINARY_LTEQ>;
using VmOpBinaryGt = VmOpPlain<OP_BINARY_GT>;
using VmOpBinaryGtEq = VmOpPlain<OP_BINARY_GTEQ>;
using VmOpBinaryLtGt = VmOpPlain<OP_BINARY_LTGT>;
using VmOpBinaryEqEq = VmOpPlain<OP_BINARY_EQEQ>;
using VmOpCallByName = VmOpSymbolCount<OP_CALL_BY_NAME>;
using VmOpCallNative = VmOpNative<OP_CALL_NATIVE, native_function>;
using VmOpCallNativeVoid = VmOpNative<OP_CALL_NATIVE_VOID, native_command>;
using VmOpCastToBooleanImplicitly = VmOpCast<OP_CAST_TO_BOOLEAN>;
using VmOpCastToIntegerImplicitly = VmOpCast<OP_CAST_TO_INTEGER>;
using VmOpCastToNumericImplicitly = VmOpCast<OP_CAST_TO_NUMERIC>;
using VmOpCastToMoneyImplicitly = VmOpCast<OP_CAST_TO_MONEY>;
using VmOpCastToDateImplicitly = VmOpCast<OP_CAST_TO_DATE>;
using VmOpCastToDatetimeImplicitly = VmOpCast<OP_CAST_TO_DATETIME>;
using VmOpCastToStringImplicitly = VmOpCast<OP_CAST_TO_STRING>;
using VmOpCastToObjectImplicitly = VmOpCast<OP_CAST_TO_OBJECT>;
using VmOpCheckNotNull = VmOpPlain<OP_CHECK_NOT_NULL>;
using VmOpCondTrueJump = VmOpJumpShape<OP_COND_TRUE_JUMP>;
using VmOpCondTrueJumpKeepEsp = VmOpJumpShape<OP_COND_TRUE_JUMP_KEEP_ESP>;
using VmOpCondFalseOrNullJump = VmOpJumpShape<OP_COND_FALSE_OR_NULL_JUMP>;
using VmOpCondFalseOrNullJumpKeepEsp = VmOpJumpShape<OP_COND_FALSE_OR_NULL_JUMP_KEEP_ESP>;
using VmOpCondTrueOrNullMerge2P = VmOpPlain<OP_COND_TRUE_OR_NULL_MERGE_2P>;
using VmOpReadMemvarPointerCreate = VmOpSymbol<OP_READ_MEMVAR_POINTER_CREATE>;
using VmOpDefLocal = VmOpSymbol<OP_DEF_LOCAL>;
using VmOpDefLocalOffset = VmOpOffsetSymbol<OP_DEF_LOCAL_OFFSET>;
using VmOpDefPrivateSymbol = VmOpSymbol<OP_DEF_PRIVATE_SYMBOL>;
using VmOpDefPublicOffset = VmOpOffsetSymbol<OP_DEF_PUBLIC_OFFSET>;
using VmOpEspAlloc = VmOpPlain<OP_ESP_ALLOC>;
using VmOpEspFree = VmOpPlain<OP_ESP_FREE>;
using VmOpForCondFalseJump = VmOpJumpShape<OP_FOR_COND_FALSE_JUMP>;
using VmOpInitLparameters = VmOpCount<OP_INIT_LPARAMETERS>;
using VmOpInitParameter = VmOpOffsetSymbol<OP_INIT_PARAMETER>;
using VmOpJump = VmOpJumpShape<OP_JUMP>;
using VmOpMacroExecute = VmOpPlain<OP_MACRO_EXECUTE>;
using VmOpObjectCall = VmOpSymbolCount<OP_OBJECT_CALL>;
using VmOpObjectCallPointer = VmOpSymbolCount<OP_OBJECT_CALL_POINTER>;
using VmOpReturnValue = VmOpPlain<OP_RETURN_VALUE>;
using VmOpReturnPointer = VmOpPlain<OP_RETURN_POINTER>;
using VmOpReturn = VmOpPlain<OP_RETURN>;
using VmOpReadByName = VmOpSymbol<OP_READ_BY_NAME>;
using VmOpReadMemvarByName = VmOpSymbol<OP_READ_MEMVAR_BY_NAME>;
using VmOpReadMemvarOrFalse = VmOpSymbol<OP_READ_MEMVAR_OR_FALSE>;
using VmOpReadFileObjectOrMemvarByName = VmOpSymbol<OP_READ_FILE_OBJECT_OR_MEMVAR_BY_NAME>;
using VmOpReadLocalMemvarByOffset = VmOpOffset<OP_READ_LOCAL_MEMVAR_BY_OFFSET>;
using VmOpReadArrayByName = VmOpSymbolCount<OP_READ_ARRAY_BY_NAME>;
using VmOpReadArrayByOffset = VmOpOffsetCount<OP_READ_ARRAY_BY_OFFSET>;
using VmOpReadConstTrue = VmOpPlain<OP_READ_CONST_TRUE>;
using VmOpReadConstFalse = VmOpPlain<OP_READ_CONST_FALSE>;
using VmOpReadConstInteger = VmOpConst<OP_READ_CONST_INTEGER, integer_type_st>;
using VmOpReadConstNumeric = VmOpConst<OP_READ_CONST_NUMERIC, numeric_type_st>;
using VmOpReadConstMoney = VmOpConst<OP_READ_CONST_MONEY, money_type_st>;
using VmOpReadConstString = VmOpConst<OP_READ_CONST_STRING, String>;
using VmOpReadConstDate = VmOpConst<OP_READ_CONST_DATE, date_st>;
using VmOpReadConstDatetime = VmOpConst<OP_READ_CONST_DATETIME, datetime_st>;
using VmOpReadConstNull = VmOpPlain<OP_READ_CONST_NULL>;
using VmOpObjectRead = VmOpSymbolCount<OP_OBJECT_READ>;
using VmOpObjectReadPointer = VmOpSymbolCount<OP_OBJECT_READ_POINTER>;
using VmOpReadMemvarPointerByName = VmOpSymbol<OP_READ_MEMVAR_POINTER_BY_NAME>;
using VmOpReadLocalMemvarPointerByOffset = VmOpOffset<OP_READ_LOCAL_MEMVAR_POINTER_BY_OFFSET>;
using VmOpReadAddWrite = VmOpSymbol<OP_READ_ADD_WRITE>;
using VmOpReadAddWriteLocal = VmOpOffset<OP_READ_ADD_WRITE_LOCAL>;
using VmOpStore = VmOpPlain<OP_STORE>;
using VmOpUnaryNot = VmOpPlain<OP_UNARY_NOT>;
using VmOpUnaryNeg = VmOpPlain<OP_UNARY_NEG>;
using VmOpTestTextmergeOn = VmOpPlain<OP_TEST_TEXTMERGE_ON>;
using VmOpWriteMemarByName = VmOpSymbol<OP_WRITE_MEMVAR_BY_NAME>;
using VmOpWriteMemvarByOffset = VmOpOffset<OP_WRITE_MEMVAR_BY_OFFSET>;
using VmOpWriteArrayByName = VmOpSymbolCount<OP_WRITE_ARRAY_BY_NAME>;
using VmOpWriteArrayByOffset = VmOpOffsetCount<OP_WRITE_ARRAY_BY_OFFSET>;
using VmOpObjectWrite = VmOpSymbolCount<OP_OBJECT_WRITE>;
using VmOpReadFieldByIndex = VmOpConst<OP_READ_FIELD_BY_INDEX, uint16_t>;

}  // namespace zobase
