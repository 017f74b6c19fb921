#pragma once
// Instruction codecs: each instruction written to a byte stream and read
// back, one encoder and one decoder per instruction, found in a table keyed
// by opcode or by the instruction's file id (vm/instruction_file_ids.def).
// The table is generated from vm/instructions.def, so every instruction has
// its row.
//
// No whole-file format stands above them: a driver that saves modules
// writes its own frame (the symbol texts of `module_writer::symbol_indexes`,
// the programs) and fills the decoder's symbol map before decoding.
//
// All integers are big-endian. Operands by kind:
//   symbol   u64 index: each new symbol id takes the writer's next index
//   jump     u64 stream position of the target instruction; written as 0,
//            then patched by module_writer::patch_jumps
//   string   u16 charset id, u64 byte length, the bytes
//   native   u8 NativeTable, string name: a built-in's handler by its name
//   program  a nested program (a catch filter): see encode_program
// Each instruction is its u16 file id, its u64 statement number, then its
// operands (the table of the source file vm/instruction_codec.cpp).
//
// Addresses of this process (native handlers, linked functions) go by name
// through CodeTargets. A stream that ends early or names what the reader
// doesn't know raises 1104.
#include <cstdint>
#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <unordered_map>
#include <vector>

#include "values/string.h"
#include "vm/program.h"
#include "vm/vm_op.h"

namespace zobase {

class Charset;
class UserFunction;

// The table of a library that holds a native handler.
enum NativeTable : uint8_t {
    NATIVE_FUNCTIONS = 0,
    NATIVE_VARIABLE_READERS = 1,
    NATIVE_COMMANDS = 2,
    NATIVE_VARIABLE_WRITERS = 3,
};

struct native_name_st {
    uint8_t table = NATIVE_FUNCTIONS;
    String name;
};

// Names for what an instruction holds by address, and the way back.
class CodeTargets {
public:
    virtual ~CodeTargets() = default;
    // False when no library table holds the handler.
    virtual bool name_function(native_function handler, native_name_st* out) const = 0;
    virtual bool name_command(native_command handler, native_name_st* out) const = 0;
    // Null when there is none of that name.
    virtual native_function find_function(const native_name_st& name) const = 0;
    virtual native_command find_command(const native_name_st& name) const = 0;
    // A linked call's target goes by the symbol of its name and is found
    // again as the linker found it.
    virtual bool name_user_function(const UserFunction* function, uint32_t* symbol) const = 0;
    virtual const UserFunction* find_user_function(uint32_t symbol) const = 0;
};

class module_writer : public std::ostream {
public:
    module_writer(std::streambuf* buffer, const CodeTargets* targets);

    const CodeTargets* targets;
    uint64_t next_symbol_index = 0;
    std::unordered_map<uint32_t, uint64_t> symbol_indexes;  // symbol id -> index in the stream
    // Code slots by address: the position of a jump operand -> its target
    // slot, and a slot -> the position of its instruction.
    std::map<uint64_t, const void*> jump_fields;
    std::unordered_map<const void*, uint64_t> slot_positions;

    void u8(uint8_t value);
    void u16(uint16_t value);
    void u32(uint32_t value);
    void u64(uint64_t value);
    void symbol(uint32_t id);
    void jump(VmOp* const* target);
    void string(const String& text);
    void location(const document_location_st& location);
    // Writes the target positions into the jump operands; every target slot
    // must have been written (an instruction or the end of its program).
    void patch_jumps();
    uint64_t position();
};

struct opcode_decoder_stack_st {
    std::map<uint64_t, uint32_t> symbols;  // stream symbol index -> symbol id
    // Jump operands read so far: each holds its raw stream position until
    // resolve_jumps points it at the slot decoded from there.
    std::vector<VmOp***> jump_patches;
    std::map<uint16_t, const Charset*> charsets;  // stream charset id -> charset; else the registry's
    const Charset* default_charset = nullptr;     // for an unknown id; UTF-8 when null
    const CodeTargets* targets = nullptr;
    std::map<uint64_t, VmOp**> slots;  // position of a decoded instruction -> its code slot

    uint32_t symbol(std::istream& in) const;
    void resolve_jumps();
};

// Readers of the operand kinds; a short stream raises 1104.
uint8_t read_u8(std::istream& in);
uint16_t read_u16(std::istream& in);
uint32_t read_u32(std::istream& in);
uint64_t read_u64(std::istream& in);
String read_string(const opcode_decoder_stack_st& decoder, std::istream& in);
document_location_st read_location(std::istream& in);

typedef void (*instruction_encoder)(const VmOp* const& slot, module_writer& out);
typedef void (*instruction_decoder)(opcode_decoder_stack_st& decoder, std::istream& in, VmOp** out);

struct instruction_codec_st {
    uint16_t file_id;
    uint8_t opcode;
    const char* name;
    instruction_encoder encode;
    instruction_decoder decode;
};

// The rows in opcode order, one per instruction; the unused opcodes have none.
const std::vector<instruction_codec_st>& instruction_codecs();
// Null for an opcode or file id without a row.
const instruction_codec_st* find_codec_by_opcode(uint8_t opcode);
const instruction_codec_st* find_codec_by_file_id(uint16_t file_id);

// One instruction: its file id, statement number and operands. The slot is
// the instruction's element of its code array, which jumps name.
void encode_instruction(const VmOp* const& slot, module_writer& out);
void decode_instruction(opcode_decoder_stack_st& decoder, std::istream& in, VmOp** slot);

// A program: name, parameter count, local names, u64 instruction count and
// the instructions, source locations, statement positions, last location.
// Jumps are patched or resolved by the caller once the stream is complete.
void encode_program(const Program& program, module_writer& out);
std::unique_ptr<Program> decode_program(opcode_decoder_stack_st& decoder, std::istream& in);

}  // namespace zobase
