// The codecs of the instructions and their table.
#include "vm/instruction_codec.h"

#include <cstring>

#include "base/call_trace.h"
#include "values/error.h"
#include "values/money.h"
#include "text/charset.h"
#include "vm/try_scope.h"

namespace zobase {

namespace {

[[noreturn]] void raise_bad_stream(const char* what) { throw RuntimeError(ERR_FILE_READ, String(what)); }

void read_bytes(std::istream& in, char* into, size_t count) {
    if (!in.read(into, static_cast<std::streamsize>(count))) raise_bad_stream("instruction stream ends early");
}

template <typename T>
T read_big_endian(std::istream& in) {
    unsigned char bytes[sizeof(T)];
    read_bytes(in, reinterpret_cast<char*>(bytes), sizeof bytes);
    T value = 0;
    for (unsigned char byte : bytes) value = static_cast<T>((value << 8) | byte);
    return value;
}

uint32_t narrow_u32(uint64_t value) {
    if (value > UINT32_MAX) throw RuntimeError(ERR_INTEGER_OUT_OF_RANGE);
    return static_cast<uint32_t>(value);
}

}  // namespace

// ---- the writer ----

module_writer::module_writer(std::streambuf* buffer, const CodeTargets* code_targets)
    : std::ostream(buffer), targets(code_targets) {
    exceptions(std::ios::badbit | std::ios::failbit);
}

uint64_t module_writer::position() { return static_cast<uint64_t>(tellp()); }

void module_writer::u8(uint8_t value) { put(static_cast<char>(value)); }

void module_writer::u16(uint16_t value) {
    u8(static_cast<uint8_t>(value >> 8));
    u8(static_cast<uint8_t>(value));
}

void module_writer::u32(uint32_t value) {
    u16(static_cast<uint16_t>(value >> 16));
    u16(static_cast<uint16_t>(value));
}

void module_writer::u64(uint64_t value) {
    u32(static_cast<uint32_t>(value >> 32));
    u32(static_cast<uint32_t>(value));
}

void module_writer::symbol(uint32_t id) {
    auto [entry, added] = symbol_indexes.try_emplace(id, next_symbol_index);
    if (added) ++next_symbol_index;
    u64(entry->second);
}

void module_writer::jump(VmOp* const* target) {
    jump_fields.emplace(position(), target);
    u64(0);
}

void module_writer::string(const String& text) {
    u16(static_cast<uint16_t>(text.get_charset() ? text.get_charset()->csid : Charset::utf8->csid));
    u64(text.size());
    write(text.read(), static_cast<std::streamsize>(text.size()));
}

void module_writer::location(const document_location_st& location) {
    for (const document_position_st* end : {&location.start, &location.end}) {
        u32(end->offset_chars);
        u32(end->offset_bytes);
        u32(end->line);
        u32(end->column);
    }
}

void module_writer::patch_jumps() {
    uint64_t end = position();
    for (auto [field, target] : jump_fields) {
        auto found = slot_positions.find(target);
        if (found == slot_positions.end()) throw assert_failed_exception("a jump names no written instruction");
        seekp(static_cast<std::streamoff>(field));
        u64(found->second);
    }
    seekp(static_cast<std::streamoff>(end));
    jump_fields.clear();
}

// ---- the readers ----

uint8_t read_u8(std::istream& in) { return read_big_endian<uint8_t>(in); }
uint16_t read_u16(std::istream& in) { return read_big_endian<uint16_t>(in); }
uint32_t read_u32(std::istream& in) { return read_big_endian<uint32_t>(in); }
uint64_t read_u64(std::istream& in) { return read_big_endian<uint64_t>(in); }

String read_string(const opcode_decoder_stack_st& decoder, std::istream& in) {
    uint16_t id = read_u16(in);
    uint64_t size = read_u64(in);
    const Charset* charset = nullptr;
    auto mapped = decoder.charsets.find(id);
    if (mapped != decoder.charsets.end()) charset = mapped->second;
    if (!charset) charset = GetCharsetByCSID(id);
    if (!charset) charset = decoder.default_charset ? decoder.default_charset : Charset::utf8;
    std::string bytes;
    // Read in pieces, so that a corrupt length fails at the stream's end
    // rather than on a huge allocation.
    constexpr uint64_t PIECE = 1 << 16;
    for (uint64_t done = 0; done < size;) {
        size_t piece = static_cast<size_t>(std::min(PIECE, size - done));
        bytes.resize(bytes.size() + piece);
        read_bytes(in, bytes.data() + done, piece);
        done += piece;
    }
    return String::fromBytes(bytes.data(), bytes.size(), charset);
}

document_location_st read_location(std::istream& in) {
    document_location_st location{};
    for (document_position_st* end : {&location.start, &location.end}) {
        end->offset_chars = read_u32(in);
        end->offset_bytes = read_u32(in);
        end->line = read_u32(in);
        end->column = read_u32(in);
    }
    return location;
}

uint32_t opcode_decoder_stack_st::symbol(std::istream& in) const {
    auto found = symbols.find(read_u64(in));
    if (found == symbols.end()) raise_bad_stream("instruction stream names an unknown symbol");
    return found->second;
}

void opcode_decoder_stack_st::resolve_jumps() {
    for (VmOp*** field : jump_patches) {
        auto found = slots.find(reinterpret_cast<uint64_t>(*field));
        if (found == slots.end()) raise_bad_stream("a jump names no instruction");
        *field = found->second;
    }
    jump_patches.clear();
}

namespace {

// ---- operand kinds that need a look-up ----

void write_native(module_writer& out, bool named, const native_name_st& name, const char* what) {
    if (!named) raise_not_available(what);
    out.u8(name.table);
    out.string(name.name);
}

native_name_st read_native(opcode_decoder_stack_st& decoder, std::istream& in) {
    native_name_st name;
    name.table = read_u8(in);
    name.name = read_string(decoder, in);
    return name;
}

const CodeTargets& targets_of(const CodeTargets* targets) {
    if (!targets) throw assert_failed_exception("instruction codecs need the code's targets");
    return *targets;
}

template <class Jump>
Jump* read_jump(opcode_decoder_stack_st& decoder, std::istream& in) {
    uint64_t position = read_u64(in);
    auto* op = new Jump();
    op->target = reinterpret_cast<VmOp**>(position);
    decoder.jump_patches.push_back(&op->target);
    return op;
}

// ---- encoders and decoders by operand shape ----

template <class Op>
struct shape_codec;

template <uint8_t OP>
struct shape_codec<VmOpPlain<OP>> {
    static void encode(const VmOp&, module_writer&) {}
    static VmOp* decode(opcode_decoder_stack_st&, std::istream&) { return new VmOpPlain<OP>(); }
};

template <uint8_t OP>
struct shape_codec<VmOpSymbol<OP>> {
    static void encode(const VmOp& op, module_writer& out) { out.symbol(static_cast<const VmOpSymbol<OP>&>(op).symbol); }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        return new VmOpSymbol<OP>(decoder.symbol(in));
    }
};

template <uint8_t OP>
struct shape_codec<VmOpCount<OP>> {
    static void encode(const VmOp& op, module_writer& out) { out.u32(narrow_u32(static_cast<const VmOpCount<OP>&>(op).n)); }
    static VmOp* decode(opcode_decoder_stack_st&, std::istream& in) { return new VmOpCount<OP>(read_u32(in)); }
};

template <uint8_t OP>
struct shape_codec<VmOpOffset<OP>> {
    static void encode(const VmOp& op, module_writer& out) { out.u64(static_cast<const VmOpOffset<OP>&>(op).offset); }
    static VmOp* decode(opcode_decoder_stack_st&, std::istream& in) { return new VmOpOffset<OP>(read_u64(in)); }
};

template <uint8_t OP>
struct shape_codec<VmOpOffsetSymbol<OP>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& shaped = static_cast<const VmOpOffsetSymbol<OP>&>(op);
        out.u32(narrow_u32(shaped.offset));
        out.symbol(shaped.symbol);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        uint64_t offset = read_u32(in);
        return new VmOpOffsetSymbol<OP>(offset, decoder.symbol(in));
    }
};

template <uint8_t OP>
struct shape_codec<VmOpSymbolCount<OP>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& shaped = static_cast<const VmOpSymbolCount<OP>&>(op);
        out.symbol(shaped.symbol);
        out.u64(shaped.n);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        uint32_t symbol = decoder.symbol(in);
        return new VmOpSymbolCount<OP>(symbol, read_u64(in));
    }
};

template <uint8_t OP>
struct shape_codec<VmOpOffsetCount<OP>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& shaped = static_cast<const VmOpOffsetCount<OP>&>(op);
        out.u64(shaped.offset);
        out.u64(shaped.n);
    }
    static VmOp* decode(opcode_decoder_stack_st&, std::istream& in) {
        uint64_t offset = read_u64(in);
        return new VmOpOffsetCount<OP>(offset, read_u64(in));
    }
};

template <uint8_t OP>
struct shape_codec<VmOpJumpShape<OP>> {
    static void encode(const VmOp& op, module_writer& out) { out.jump(static_cast<const VmOpJumpBase&>(op).target); }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        return read_jump<VmOpJumpShape<OP>>(decoder, in);
    }
};

template <uint8_t OP>
struct shape_codec<VmOpCast<OP>> {
    static void encode(const VmOp& op, module_writer& out) { out.u8(static_cast<const VmOpCastBase&>(op).allow_null); }
    static VmOp* decode(opcode_decoder_stack_st&, std::istream& in) { return new VmOpCast<OP>(read_u8(in) != 0); }
};

// Constants, by the type of their value.
void write_value(module_writer& out, integer_type_st value) { out.u64(static_cast<uint64_t>(value)); }
void read_value(opcode_decoder_stack_st&, std::istream& in, integer_type_st* value) {
    *value = static_cast<integer_type_st>(read_u64(in));
}

// The double's bytes as the machine holds them, then the decimals.
void write_value(module_writer& out, const numeric_type_st& value) {
    out.write(reinterpret_cast<const char*>(&value.value), sizeof value.value);
    out.u64(value.decimals);
}
void read_value(opcode_decoder_stack_st&, std::istream& in, numeric_type_st* value) {
    read_bytes(in, reinterpret_cast<char*>(&value->value), sizeof value->value);
    value->decimals = read_u64(in);
}

// Money constants are written as their 64-bit count of units.
void write_value(module_writer& out, const money_type_st& value) {
    __int128 units = money_to_i128(value);
    if (units > INT64_MAX || units < INT64_MIN) throw RuntimeError(ERR_CURRENCY_OUT_OF_RANGE);
    out.u64(static_cast<uint64_t>(static_cast<int64_t>(units)));
}
void read_value(opcode_decoder_stack_st&, std::istream& in, money_type_st* value) {
    *value = money_from_i128(static_cast<int64_t>(read_u64(in)));
}

void write_value(module_writer& out, const String& value) { out.string(value); }
void read_value(opcode_decoder_stack_st& decoder, std::istream& in, String* value) { *value = read_string(decoder, in); }

void write_value(module_writer& out, const date_st& value) { out.u32(value.julian); }
void read_value(opcode_decoder_stack_st&, std::istream& in, date_st* value) { value->julian = read_u32(in); }

void write_value(module_writer& out, const datetime_st& value) {
    out.u32(value.julian);
    out.u32(value.msecs);
}
void read_value(opcode_decoder_stack_st&, std::istream& in, datetime_st* value) {
    value->julian = read_u32(in);
    value->msecs = read_u32(in);
}

void write_value(module_writer& out, uint16_t value) { out.u16(value); }
void read_value(opcode_decoder_stack_st&, std::istream& in, uint16_t* value) { *value = read_u16(in); }

template <uint8_t OP, typename T>
struct shape_codec<VmOpConst<OP, T>> {
    static void encode(const VmOp& op, module_writer& out) { write_value(out, static_cast<const VmOpConst<OP, T>&>(op).value); }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        T value{};
        read_value(decoder, in, &value);
        return new VmOpConst<OP, T>(value);
    }
};

bool name_handler(const CodeTargets& targets, native_function handler, native_name_st* out) {
    return targets.name_function(handler, out);
}
bool name_handler(const CodeTargets& targets, native_command handler, native_name_st* out) {
    return targets.name_command(handler, out);
}
void find_handler(const CodeTargets& targets, const native_name_st& name, native_function* out) {
    *out = targets.find_function(name);
}
void find_handler(const CodeTargets& targets, const native_name_st& name, native_command* out) {
    *out = targets.find_command(name);
}

template <uint8_t OP, typename Handler>
struct shape_codec<VmOpNative<OP, Handler>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& call = static_cast<const VmOpNative<OP, Handler>&>(op);
        native_name_st name;
        write_native(out, name_handler(targets_of(out.targets), call.handler, &name), name, opcode_class_name(OP));
        out.u64(call.n);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        native_name_st name = read_native(decoder, in);
        Handler handler = nullptr;
        find_handler(targets_of(decoder.targets), name, &handler);
        if (!handler) throw RuntimeError(ERR_FILE_NOT_FOUND, name.name);
        return new VmOpNative<OP, Handler>(handler, read_u64(in));
    }
};

template <>
struct shape_codec<VmOpCallUserFunction> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& call = static_cast<const VmOpCallUserFunction&>(op);
        uint32_t symbol = 0;
        if (!targets_of(out.targets).name_user_function(call.function, &symbol))
            throw assert_failed_exception("a linked call names a function of no module");
        out.symbol(symbol);
        out.u64(call.n);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        uint32_t symbol = decoder.symbol(in);
        const UserFunction* function = targets_of(decoder.targets).find_user_function(symbol);
        if (!function) raise_bad_stream("a linked call names an unknown function");
        return new VmOpCallUserFunction(function, read_u64(in));
    }
};

template <>
struct shape_codec<VmOpCheckArgument> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& check = static_cast<const VmOpCheckArgument&>(op);
        out.u16(check.flags);
        out.u8(check.type);
    }
    static VmOp* decode(opcode_decoder_stack_st&, std::istream& in) {
        auto flags = static_cast<uint8_t>(read_u16(in));
        return new VmOpCheckArgument(read_u8(in), flags);
    }
};

template <>
struct shape_codec<VmOpUnresolvedCall> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& call = static_cast<const VmOpUnresolvedCall&>(op);
        out.string(call.name);
        out.u32(narrow_u32(call.n));
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        String name = read_string(decoder, in);
        return new VmOpUnresolvedCall(name, read_u32(in));
    }
};

// Region and catch targets are positions in the program's own array, so
// they are written as they are; each WHEN filter follows as a program.
template <>
struct shape_codec<VmOpTryEnter> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& enter = static_cast<const VmOpTryEnter&>(op);
        out.u64(enter.region_start);
        out.u64(enter.region_end);
        out.u64(enter.catches.size());
        for (const catch_record_st& record : enter.catches) {
            out.u64(record.target);
            out.u8(record.symbol != 0);
            if (record.symbol) out.symbol(record.symbol);
            out.u8(record.filter != nullptr);
            if (record.filter) encode_program(*record.filter, out);
        }
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        uint64_t start = read_u64(in);
        auto enter = std::make_unique<VmOpTryEnter>(start, read_u64(in));
        for (uint64_t count = read_u64(in); count > 0; --count) {
            uint64_t target = read_u64(in);
            uint32_t symbol = read_u8(in) ? decoder.symbol(in) : 0;
            std::unique_ptr<Program> filter = read_u8(in) ? decode_program(decoder, in) : nullptr;
            enter->add_catch(target, symbol, filter.release());
        }
        return enter.release();
    }
};

template <>
struct shape_codec<VmOpForNextJump> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& next = static_cast<const VmOpForNextJump&>(op);
        out.jump(next.target);
        out.u64(next.variable);
        out.symbol(next.symbol);
        out.u64(next.limit);
        out.u64(next.step);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        auto* next = read_jump<VmOpForNextJump>(decoder, in);
        next->variable = read_u64(in);
        next->symbol = decoder.symbol(in);
        next->limit = read_u64(in);
        next->step = read_u64(in);
        return next;
    }
};

template <>
struct shape_codec<VmOpAddBareToBare> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& add = static_cast<const VmOpAddBareToBare&>(op);
        out.u64(add.offset);
        out.symbol(add.symbol);
        out.u64(add.source_offset);
        out.symbol(add.source);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        auto add = std::make_unique<VmOpAddBareToBare>();
        add->offset = read_u64(in);
        add->symbol = decoder.symbol(in);
        add->source_offset = read_u64(in);
        add->source = decoder.symbol(in);
        return add.release();
    }
};

template <uint8_t OP, typename T>
struct shape_codec<VmOpMulAddToBare<OP, T>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& update = static_cast<const VmOpMulAddToBare<OP, T>&>(op);
        out.u64(update.offset);
        out.symbol(update.symbol);
        write_value(out, update.factor);
        write_value(out, update.addend);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        auto update = std::make_unique<VmOpMulAddToBare<OP, T>>();
        update->offset = read_u64(in);
        update->symbol = decoder.symbol(in);
        read_value(decoder, in, &update->factor);
        read_value(decoder, in, &update->addend);
        return update.release();
    }
};

template <uint8_t OP>
struct shape_codec<VmOpBareByBare<OP>> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& binary = static_cast<const VmOpBareByBare<OP>&>(op);
        out.u64(binary.left_offset);
        out.symbol(binary.left);
        out.u64(binary.offset);
        out.symbol(binary.symbol);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        auto binary = std::make_unique<VmOpBareByBare<OP>>();
        binary->left_offset = read_u64(in);
        binary->left = decoder.symbol(in);
        binary->offset = read_u64(in);
        binary->symbol = decoder.symbol(in);
        return binary.release();
    }
};

template <>
struct shape_codec<VmOpReadNameMember> {
    static void encode(const VmOp& op, module_writer& out) {
        const auto& read = static_cast<const VmOpReadNameMember&>(op);
        out.symbol(read.root);
        out.symbol(read.symbol);
    }
    static VmOp* decode(opcode_decoder_stack_st& decoder, std::istream& in) {
        uint32_t root = decoder.symbol(in);
        return new VmOpReadNameMember(root, decoder.symbol(in));
    }
};

template <class Op>
void encode_as(const VmOp* const& slot, module_writer& out) {
    shape_codec<Op>::encode(*slot, out);
}

template <class Op>
void decode_as(opcode_decoder_stack_st& decoder, std::istream& in, VmOp** out) {
    *out = shape_codec<Op>::decode(decoder, in);
}

// File ids by class name; an instruction without one is a compile error below.
namespace file_ids {
#define ZO_FILE_ID(id, Name) constexpr uint16_t Name = id;
#include "vm/instruction_file_ids.def"
#undef ZO_FILE_ID
}  // namespace file_ids

#define ZO_CODEC_ROW(Name, ENUM) \
    {file_ids::Name, OP_##ENUM, "VmOp" #Name, encode_as<VmOp##Name>, decode_as<VmOp##Name>},
#define ZO_CODEC_UNUSED(Name, ENUM)
#define ZO_CODEC_SHAPE_NONE ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_SYMBOL ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_COUNT ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_OFFSET ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_OFFSET_SYMBOL ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_SYMBOL_COUNT ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_OFFSET_COUNT ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_JUMP ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_CAST ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_INTEGER ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_NUMERIC ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_MONEY ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_STRING ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_DATE ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_DATETIME ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_FIELD_INDEX ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_FUNCTION ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_COMMAND ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_CALL ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_CHECK ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_UNRESOLVED ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_TRY ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_FOR_NEXT ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_ADD_BARE ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_MUL_ADD_INTEGER ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_MUL_ADD_NUMERIC ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_BARE_BY_BARE ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_NAME_MEMBER ZO_CODEC_ROW
#define ZO_CODEC_SHAPE_UNUSED ZO_CODEC_UNUSED

const std::vector<instruction_codec_st> codec_rows = {
#define ZO_INSTRUCTION(code, Name, ENUM, operands, pops, pushes, meaning) ZO_CODEC_SHAPE_##operands(Name, ENUM)
#include "vm/instructions.def"
#undef ZO_INSTRUCTION
};

struct codec_index_st {
    std::vector<const instruction_codec_st*> by_opcode = std::vector<const instruction_codec_st*>(OPCODE_COUNT);
    std::map<uint16_t, const instruction_codec_st*> by_file_id;
    codec_index_st() {
        for (const instruction_codec_st& row : codec_rows) {
            by_opcode[row.opcode] = &row;
            if (!by_file_id.emplace(row.file_id, &row).second)
                throw assert_failed_exception("two instructions share a file id");
        }
    }
};

const codec_index_st& codec_index() {
    static const codec_index_st index;
    return index;
}

}  // namespace

const std::vector<instruction_codec_st>& instruction_codecs() { return codec_rows; }

const instruction_codec_st* find_codec_by_opcode(uint8_t opcode) {
    return opcode < OPCODE_COUNT ? codec_index().by_opcode[opcode] : nullptr;
}

const instruction_codec_st* find_codec_by_file_id(uint16_t file_id) {
    const auto& by_file_id = codec_index().by_file_id;
    auto found = by_file_id.find(file_id);
    return found == by_file_id.end() ? nullptr : found->second;
}

void encode_instruction(const VmOp* const& slot, module_writer& out) {
    const instruction_codec_st* codec = find_codec_by_opcode(slot->opcode);
    if (!codec) throw assert_failed_exception("an instruction with no codec");
    out.slot_positions.emplace(&slot, out.position());
    out.u16(codec->file_id);
    out.u64(slot->statement);
    codec->encode(slot, out);
}

void decode_instruction(opcode_decoder_stack_st& decoder, std::istream& in, VmOp** slot) {
    uint64_t position = static_cast<uint64_t>(in.tellg());
    const instruction_codec_st* codec = find_codec_by_file_id(read_u16(in));
    if (!codec) raise_bad_stream("instruction stream holds an unknown instruction");
    uint64_t statement = read_u64(in);
    codec->decode(decoder, in, slot);
    (*slot)->statement = statement;
    decoder.slots.emplace(position, slot);
}

void encode_program(const Program& program, module_writer& out) {
    ZO_TRACE();
    out.string(program.name);
    out.u64(program.parameter_count);
    out.u64(program.local_names.size());
    for (const local_name_st& local : program.local_names) {
        out.symbol(local.symbol);
        out.u64(local.offset);
    }
    uint64_t count = program.instruction_count();
    out.u64(count);
    VmOp* const* code = program.code();
    for (uint64_t i = 0; i < count; ++i) encode_instruction(code[i], out);
    // A jump may name the slot after the last instruction.
    out.slot_positions.emplace(code + count, out.position());
    out.u64(program.locations.size());
    for (const auto& [position, location] : program.locations) {
        out.u64(position);
        out.location(location);
    }
    out.u64(program.statement_positions.size());
    for (auto [statement, position] : program.statement_positions) {
        out.u64(statement);
        out.u64(position);
    }
    out.location(program.last_location);
}

std::unique_ptr<Program> decode_program(opcode_decoder_stack_st& decoder, std::istream& in) {
    ZO_TRACE();
    auto program = std::make_unique<Program>();
    program->name = read_string(decoder, in);
    program->parameter_count = read_u64(in);
    for (uint64_t count = read_u64(in); count > 0; --count) {
        uint32_t symbol = decoder.symbol(in);
        program->local_names.push_back({symbol, read_u64(in)});
    }
    uint64_t count = read_u64(in);
    // Jumps name code slots, which are known once the array stands.
    std::vector<VmOp*> code;
    std::vector<uint64_t> positions;
    try {
        for (uint64_t i = 0; i < count; ++i) {
            VmOp* op = nullptr;
            positions.push_back(static_cast<uint64_t>(in.tellg()));
            decode_instruction(decoder, in, &op);
            code.push_back(op);
        }
    } catch (...) {
        for (VmOp* op : code) delete op;
        throw;
    }
    positions.push_back(static_cast<uint64_t>(in.tellg()));
    code.push_back(nullptr);
    program->adopt_code(std::move(code));
    for (size_t i = 0; i < positions.size(); ++i) decoder.slots[positions[i]] = program->code() + i;
    for (uint64_t n = read_u64(in); n > 0; --n) {
        uint64_t position = read_u64(in);
        program->locations.emplace_back(position, read_location(in));
    }
    for (uint64_t n = read_u64(in); n > 0; --n) {
        uint64_t statement = read_u64(in);
        program->statement_positions.emplace(statement, read_u64(in));
    }
    program->last_location = read_location(in);
    return program;
}

}  // namespace zobase
