#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "text/charset.h"
#include "values/error.h"
#include "vm/instruction_codec.h"
#include "vm/try_scope.h"

namespace zobase {
namespace {

// Programs without native calls or linked calls ask nothing of the targets.
class NoTargets : public CodeTargets {
public:
    bool name_function(native_function, native_name_st*) const override { return false; }
    bool name_command(native_command, native_name_st*) const override { return false; }
    native_function find_function(const native_name_st&) const override { return nullptr; }
    native_command find_command(const native_name_st&) const override { return nullptr; }
    bool name_user_function(const UserFunction*, uint32_t*) const override { return false; }
    const UserFunction* find_user_function(uint32_t) const override { return nullptr; }
};

struct round_trip_st {
    std::string bytes;
    std::unique_ptr<Program> decoded;
};

// Symbols keep their ids: the decoder maps each index back to its id.
round_trip_st round_trip(const Program& program) {
    NoTargets targets;
    std::stringbuf buffer(std::ios::in | std::ios::out | std::ios::binary);
    module_writer out(&buffer, &targets);
    encode_program(program, out);
    out.patch_jumps();
    opcode_decoder_stack_st decoder;
    decoder.targets = &targets;
    for (auto [id, index] : out.symbol_indexes) decoder.symbols[index] = id;
    std::istream in(&buffer);
    round_trip_st result{buffer.str(), decode_program(decoder, in)};
    decoder.resolve_jumps();
    return result;
}

int error_of_decoding(const std::string& bytes) {
    std::istringstream in(bytes);
    opcode_decoder_stack_st decoder;
    try {
        decode_program(decoder, in);
    } catch (const RuntimeError& error) {
        return error.number;
    }
    return 0;
}

TEST(InstructionCodec, EveryInstructionHasOneRowAndADistinctFileId) {
    std::set<uint16_t> ids;
    for (int opcode = 0; opcode < OPCODE_COUNT; ++opcode) {
        bool unused = std::string(instruction_info(opcode).operands) == "UNUSED";
        const instruction_codec_st* row = find_codec_by_opcode(static_cast<uint8_t>(opcode));
        ASSERT_EQ(row == nullptr, unused) << opcode;
        if (!row) continue;
        EXPECT_STREQ(row->name, opcode_class_name(opcode));
        EXPECT_TRUE(ids.insert(row->file_id).second) << row->name;
        EXPECT_EQ(find_codec_by_file_id(row->file_id), row);
    }
}

TEST(InstructionCodec, IntegersAreBigEndian) {
    std::stringbuf buffer;
    NoTargets targets;
    module_writer out(&buffer, &targets);
    out.u32(1);
    out.u16(0x0102);
    EXPECT_EQ(buffer.str(), std::string("\0\0\0\1\1\2", 6));
}

// Operands of several shapes, a jump to the end slot and one backwards, a
// TRY with a filter program, and the program's own tables.
TEST(InstructionCodec, AProgramComesBackWhole) {
    Program program;
    program.name = String("demo");
    program.parameter_count = 1;
    program.local_names.push_back({7, 0});
    program.emit(new VmOpReadConstString(String::fromBytes("h\xC3\xA9", 3, Charset::utf8)));
    program.emit(new VmOpUnresolvedCall(String("later"), 3));
    program.emit(new VmOpCondTrueJump());
    program.emit(new VmOpReadConstDatetime(datetime_st{2460000, 1234}));
    program.emit(new VmOpJump());
    auto* enter = new VmOpTryEnter(1, 4);
    auto* filter = new Program();
    filter->emit(new VmOpReadMemvarByName(9));
    filter->emit(new VmOpReturnValue());
    enter->add_catch(4, 9, filter);
    program.emit(enter);
    program.emit(new VmOpReturn());
    program.set_jump_target(2, 7);  // the end
    program.set_jump_target(4, 0);
    program.code()[3]->statement = 42;
    program.locations.push_back({3, document_location_st{{1, 2, 3, 4}, {5, 6, 7, 8}}});
    program.statement_positions[42] = 3;

    round_trip_st result = round_trip(program);
    const Program& decoded = *result.decoded;
    ASSERT_EQ(decoded.instruction_count(), program.instruction_count());
    EXPECT_EQ(decoded.name.u8str(), "demo");
    EXPECT_EQ(decoded.local_names.at(0).symbol, 7u);
    EXPECT_EQ(static_cast<const VmOpReadConstString*>(decoded.code()[0])->value.u8str(), "h\xC3\xA9");
    const auto* call = static_cast<const VmOpUnresolvedCall*>(decoded.code()[1]);
    EXPECT_EQ(call->name.u8str(), "later");
    EXPECT_EQ(call->n, 3u);
    EXPECT_EQ(static_cast<const VmOpJumpBase*>(decoded.code()[2])->target, decoded.code() + 7);
    EXPECT_EQ(static_cast<const VmOpJumpBase*>(decoded.code()[4])->target, decoded.code());
    EXPECT_EQ(decoded.code()[3]->statement, 42u);
    EXPECT_EQ(static_cast<const VmOpReadConstDatetime*>(decoded.code()[3])->value.msecs, 1234u);
    const auto* try_enter = static_cast<const VmOpTryEnter*>(decoded.code()[5]);
    ASSERT_EQ(try_enter->catches.size(), 1u);
    EXPECT_EQ(try_enter->catches[0].symbol, 9u);
    EXPECT_EQ(static_cast<const VmOpReadMemvarByName*>(try_enter->catches[0].filter->code()[0])->symbol, 9u);
    EXPECT_EQ(decoded.locations.at(0).second.end.column, 8u);
    EXPECT_EQ(decoded.statement_positions.at(42), 3u);
    // The copy writes the same bytes again.
    EXPECT_EQ(round_trip(decoded).bytes, result.bytes);
}

TEST(InstructionCodec, BrokenStreamsAreError1104) {
    Program program;
    program.emit(new VmOpReadConstInteger(5));
    program.emit(new VmOpDefLocal(3));
    std::string bytes = round_trip(program).bytes;
    // Cut anywhere, the stream ends early.
    for (size_t cut : {size_t(0), size_t(5), bytes.size() / 2, bytes.size() - 1})
        EXPECT_EQ(error_of_decoding(bytes.substr(0, cut)), ERR_FILE_READ) << cut;
    // A file id no instruction has, and a symbol the decoder was not told.
    std::string unknown = bytes;
    size_t first_instruction = 2 + 8 + 8 + 8 + 8 + 8;  // empty name, parameters, locals, count
    unknown[first_instruction] = '\x7F';
    EXPECT_EQ(error_of_decoding(unknown), ERR_FILE_READ);
    EXPECT_EQ(error_of_decoding(bytes), ERR_FILE_READ);
}

TEST(InstructionCodec, NativeCallsNeedANamedHandler) {
    Program program;
    program.emit(new VmOpCallNative(nullptr, 0));
    try {
        round_trip(program);
        FAIL() << "encoded a handler without a name";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number, ERR_NOT_AVAILABLE);
    }
}

}  // namespace
}  // namespace zobase
