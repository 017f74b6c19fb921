// The build driver for command lines and expressions, its diagnostics, and
// the linker step for programs.
#include "compiler/build_input.h"

#include <cstdio>
#include <memory>

#include "base/call_trace.h"
#include "compiler/expression.h"
#include "compiler/module.h"
#include "frontend/scanner.h"
#include "values/error.h"
#include "values/symtable.h"
#include "vm/program.h"
#include "vm/screen.h"
#include "vm/try_scope.h"
#include "vm/vm_stack.h"

namespace zobase {

// ---- linking ----

namespace {

// The WHEN filters of a program's TRY statements are programs of their own,
// linked along with it.
template <typename Link>
void link_catch_filters(Program* program, Link link) {
    VmOp** code = program->code();
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        if (code[i]->opcode != OP_TRY_ENTER) continue;
        for (catch_record_st& record : static_cast<VmOpTryEnter*>(code[i])->catches)
            if (record.filter) link(record.filter.get());
    }
}

}  // namespace

void link_program(LinkerInfo& info, Program* program, const Module* module) {
    ZO_TRACE();
    program->module = module;
    link_catch_filters(program, [&](Program* filter) { link_program(info, filter, module); });
    VmOp** code = program->code();
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        if (code[i]->opcode != OP_UNRESOLVED_CALL) continue;
        const auto* call = static_cast<const VmOpUnresolvedCall*>(code[i]);
        unsigned symbol = info.symbols->symbolize(call->name);
        const UserFunction* function =
            module && info.find_function ? info.find_function(module, symbol) : nullptr;
        VmOp* replacement = function ? static_cast<VmOp*>(new VmOpCallUserFunction(function, call->n))
                                     : static_cast<VmOp*>(new VmOpCallByName(symbol, call->n));
        replacement->statement = call->statement;
        program->replace_instruction(i, replacement);
    }
}

void link_anonymous_program(LinkerInfo& info, Program* program) {
    ZO_TRACE();
    link_catch_filters(program, [&](Program* filter) { link_anonymous_program(info, filter); });
    VmOp** code = program->code();
    for (size_t i = 0; i < program->instruction_count(); ++i) {
        if (code[i]->opcode != OP_UNRESOLVED_CALL) continue;
        const auto* call = static_cast<const VmOpUnresolvedCall*>(code[i]);
        VmOp* replacement = new VmOpCallByName(info.symbols->symbolize(call->name), call->n);
        replacement->statement = call->statement;
        program->replace_instruction(i, replacement);
    }
}

// ---- the front end's client ----

namespace {

void collect_statement(int kind, void* value, const document_location_st&, void* context) {
    if (kind != PARSE_STATEMENT) return;
    static_cast<statement_collector_st*>(context)->statements->emplace_back(static_cast<Statement*>(value));
}

void parse_statement_line(void* context, ParserToken start, const token_st* begin, const token_st* end,
                          line_parse_result_st& result) {
    auto* collector = static_cast<statement_collector_st*>(context);
    size_t before = collector->statements->size();
    parse_options_st options;
    options.callback = collect_statement;
    options.callback_context = collector;
    std::vector<parse_error_st> errors;
    result.error = parse_tokens(begin, end, static_cast<int>(start), options, errors);
    if (result.error) result.error_location = errors.front().location;
    result.statement_type =
        collector->statements->size() > before ? collector->statements->back()->type : -1;
}

}  // namespace

preprocessor_client_st make_statement_client(statement_collector_st* collector) {
    return preprocessor_client_st{collector, parse_statement_line, nullptr};
}

// ---- BuildInput ----

BuildInput::BuildInput(VmStack* s) : stack(s) {}

void BuildInput::import_library(const Library* library) { libraries.push_back(library); }

void BuildInput::set_module_context_from_frame(VmStack* running) {
    if (running->frame && running->frame->program) module = module_of(running->frame->program);
}

void BuildInput::init_compiler(Compiler& compiler) const {
    compiler.libraries = libraries;
    compiler.module = module;
    compiler.table = table;
    if (forced_location) {
        compiler.has_forced_location = true;
        compiler.forced_location = *forced_location;
    }
}

void BuildInput::add_diagnostic(int32_t category, int32_t number, const document_location_st& location,
                                const String& detail) {
    diagnostics.push_back({category, number, location, source, detail});
}

void BuildInput::log_compiler_errors(Compiler& compiler) {
    for (const compile_error_st& error : compiler.errors)
        add_diagnostic(DIAGNOSTIC_CATEGORY_COMPILER, error.number, error.location, error.detail);
    compiler.errors.clear();
}

void BuildInput::raise_diagnostics() const {
    if (diagnostics.empty()) return;
    const diagnostic_st& first = diagnostics.front();
    RuntimeError error = first.detail.size() ? RuntimeError(first.number, first.detail) : RuntimeError(first.number);
    error.compile_report = String(diagnostics_report().c_str());
    throw error;
}

void BuildInput::parse_statements(const String& text, statement_list& statements) {
    ZO_TRACE();
    statement_collector_st collector{this, &statements};
    Preprocessor preprocessor(make_statement_client(&collector));
    preprocessor.run(text, file_name);
    for (const preprocessor_error_st& error : preprocessor.errors) {
        diagnostics.push_back({error.category, error.number, error.location, error.file.size() ? String() : text});
    }
}

namespace {

// Block closers and branches that reach the top level have no opener to end.
bool is_block_keyword(int32_t type) {
    switch (type) {
    case STMT_CASE:
    case STMT_CATCH:
    case STMT_ENDCASE:
    case STMT_ENDTRY:
    case STMT_FINALLY:
    case STMT_OTHERWISE: return true;
    default: return false;
    }
}

}  // namespace

Program* BuildInput::build_command(const String& text) {
    ZO_TRACE();
    source = text;
    statement_list statements;
    parse_statements(text, statements);

    Compiler compiler(stack);
    init_compiler(compiler);
    compiler.reset(COMPILER_FLAGS_COMMAND, true);
    CodePath path(&compiler);
    statement_iterator it = statements.cbegin();
    compile_statement_list(statements.cend(), it, &compiler.code, path);
    // What ends a list and reaches the top: a closer without its opener is a
    // syntax error, a statement of a module's outline has no place here.
    while (it != statements.cend()) {
        if (is_block_keyword((*it)->type)) compiler.record_error(ERR_SYNTAX, (*it)->location);
        else compiler.record_error(ERR_NOT_AVAILABLE, (*it)->location, String("statement"));
        ++it;
        compile_statement_list(statements.cend(), it, &compiler.code, path);
    }
    VmOp* last = compiler.code.last_instruction();
    if (!last || (last->opcode != OP_RETURN_VALUE && last->opcode != OP_RETURN_POINTER))
        compiler.code.push_back(new VmOpReturn());
    log_compiler_errors(compiler);

    document_location_st start{};
    std::unique_ptr<Program> program(
        compiler.create_program(String(), &compiler.code, compiler.locals, 0, start, &compiler.unresolved));
    raise_diagnostics();
    LinkerInfo info{&compiler.symbols()};
    link_program(info, program.get(), module);
    link_anonymous_program(info, program.get());
    return program.release();
}

void BuildInput::compile_operand(const Operand* operand, const Program** out) {
    ZO_TRACE();
    Compiler compiler(stack);
    init_compiler(compiler);
    compiler.reset(COMPILER_FLAGS_COMMAND, true);
    CodePath path(&compiler);
    compiler_type_info_st type{};
    try {
        __compiletime_compact_constexpr(operand, &compiler.code, path, &type);
    } catch (const RuntimeError& error) {
        compiler.code.truncate(0);
        compiler.record_error(error.number, operand->location, error.parameter);
    }
    compiler.code.push_back(new VmOpReturnValue());
    log_compiler_errors(compiler);
    std::unique_ptr<Program> program(compiler.create_program(String(), &compiler.code, compiler.locals, 0,
                                                             operand->location, &compiler.unresolved));
    raise_diagnostics();
    LinkerInfo info{&compiler.symbols()};
    link_program(info, program.get(), module);
    if (!module) link_anonymous_program(info, program.get());
    *out = program.release();
}

Operand* BuildInput::parse_operand(const token_st* begin, const token_st* end, const token_st** used_end) {
    return zobase::parse_operand(begin, end, true, used_end);
}

void BuildInput::build_operand(const token_st* begin, const token_st* end, const Program** out) {
    ZO_TRACE();
    std::vector<parse_error_st> errors;
    parse_options_st options;
    Operand* parsed = nullptr;
    options.callback = [](int kind, void* value, const document_location_st&, void* context) {
        if (kind == PARSE_OPERAND) *static_cast<Operand**>(context) = static_cast<Operand*>(value);
    };
    options.callback_context = &parsed;
    parse_tokens(begin, end, static_cast<int>(ParserToken::start_expression), options, errors);
    std::unique_ptr<Operand> operand(parsed);
    for (const parse_error_st& error : errors)
        add_diagnostic(DIAGNOSTIC_CATEGORY_PARSER, error.number, error.location);
    raise_diagnostics();
    if (!operand) throw RuntimeError(ERR_SYNTAX);
    compile_operand(operand.get(), out);
}

void BuildInput::build_expression(const String& text, const Program** out) {
    ZO_TRACE();
    source = text;
    token_vector tokens;
    tokenize(text, tokens);
    build_operand(tokens.data(), tokens.data() + tokens.size(), out);
}

// ---- reporting ----

const char* BuildInput::category_name(int32_t category) noexcept {
    switch (category) {
    case DIAGNOSTIC_CATEGORY_PREPROCESSOR: return "(Preprocessor error)";
    case DIAGNOSTIC_CATEGORY_PARSER: return "(Parser error)";
    case DIAGNOSTIC_CATEGORY_COMPILER: return "(Compiler error)";
    default: return "(Generic error)";
    }
}

std::string BuildInput::place_name() const {
    std::string name = file_name.u8str();
    size_t separator = name.find_last_of("/\\");
    size_t after = separator == std::string::npos ? name.size() : name.size() - separator - 1;
    return after < 2 ? std::string("<command prompt>") : name;
}

namespace {

std::string trimmed(const std::string& text) {
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return std::string();
    size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

// A report shows this much of a long line, marking the cut with "...".
constexpr size_t SHOWN_SOURCE_BYTES = 240;

bool utf8_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

enum ShownEnd { SHOW_START, SHOW_END };

// A piece of the source for display, bounds clamped to the text; a long piece
// keeps its start or its end.
std::string source_piece(const String& source, size_t from, size_t to, ShownEnd shown = SHOW_START) {
    size_t size = source.size();
    from = std::min(from, size);
    to = std::min(std::max(to, from), size);
    String piece = String::fromBytes(source.read() + from, to - from, source.get_charset());
    std::string text = trimmed(Scanner::canoncializeDocumentContent(piece).u8str());
    if (text.size() <= SHOWN_SOURCE_BYTES) return text;
    if (shown == SHOW_START) {
        size_t cut = SHOWN_SOURCE_BYTES;
        while (cut > 0 && utf8_continuation(text[cut])) --cut;
        return text.substr(0, cut) + "...";
    }
    size_t cut = text.size() - SHOWN_SOURCE_BYTES;
    while (cut < text.size() && utf8_continuation(text[cut])) ++cut;
    return "..." + text.substr(cut);
}

size_t line_start(const String& source, size_t offset) {
    const char* text = source.read();
    offset = std::min(offset, source.size());
    while (offset > 0 && text[offset - 1] != '\n' && text[offset - 1] != '\r') --offset;
    return offset;
}

}  // namespace

std::string BuildInput::format_diagnostic(const diagnostic_st& diagnostic) const {
    char head[1024];
    std::string message = format_error_message(diagnostic.number, diagnostic.detail).u8str();
    std::snprintf(head, sizeof head, "%s %d - %s", category_name(diagnostic.category), diagnostic.number,
                  message.c_str());
    const document_location_st& location = diagnostic.location;
    std::string at = source_piece(diagnostic.source, location.start.offset_bytes, location.end.offset_bytes);
    std::string behind = source_piece(diagnostic.source, line_start(diagnostic.source, location.start.offset_bytes),
                                      location.start.offset_bytes, SHOW_END);
    std::string place = place_name();
    char block[8192];
    if (behind.empty())
        std::snprintf(block, sizeof block, "%s\n in %s, line %d, column %d, somewhere at: %s\n\n", head,
                      place.c_str(), static_cast<int>(location.start.line), static_cast<int>(location.start.column),
                      at.c_str());
    else
        std::snprintf(block, sizeof block, "%s\n in %s, line %d, column %d, somewhere at: %s\n  somwhere behind: %s\n\n",
                      head, place.c_str(), static_cast<int>(location.start.line),
                      static_cast<int>(location.start.column), at.c_str(), behind.c_str());
    return block;
}

std::string BuildInput::diagnostics_report() const {
    std::string report;
    for (const diagnostic_st& diagnostic : diagnostics) report += format_diagnostic(diagnostic);
    return report;
}

}  // namespace zobase
