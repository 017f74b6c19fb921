// TEXT ... ENDTEXT and the `\` and `\\` lines. Both become one built-in call
// whose arguments are pairs: 0 and a literal, or 1 and a merge field's value.
#include <algorithm>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "compiler/expression.h"
#include "compiler/statements.h"
#include "frontend/parser.h"
#include "values/error.h"

namespace zobase {

namespace {

// Bits of the first argument of stackcall_text.
enum TextFlags : long long { TEXT_NOSHOW = 1, TEXT_ADDITIVE = 2, TEXT_MERGE = 4 };

void add_literal(const std::string& text, BorrowedOperands& list) {
    list.own(new_integer_constant(0));
    list.own(new Const_String(String(text.c_str())));
}

size_t utf8_characters(const std::string& text, size_t from, size_t to) {
    size_t count = 0;
    for (size_t i = from; i < to; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ++count;
    return count;
}

// The source position of the byte `offset` of a merged text.
document_position_st position_in_source(const std::string& text, size_t offset, const text_line_starts& lines) {
    size_t line = 0, line_begin = 0;
    for (size_t i = 0; i < offset; ++i)
        if (text[i] == '\n') {
            ++line;
            line_begin = i + 1;
        }
    document_position_st position = lines.empty() ? document_position_st{0, 0, 1, 1}
                                                   : lines[std::min(line, lines.size() - 1)];
    uint32_t characters = static_cast<uint32_t>(utf8_characters(text, line_begin, offset));
    position.column += characters;
    position.offset_chars += characters;
    position.offset_bytes += static_cast<uint32_t>(offset - line_begin);
    return position;
}

void add_field(const std::string& source, const document_location_st& location, CodePath& path,
               BorrowedOperands& list) {
    list.own(new_integer_constant(1));
    if (source.find_first_not_of(" \t") == std::string::npos) {
        list.own(new Const_String(String("")));
        return;
    }
    std::vector<parse_error_st> errors;
    Operand* field = parse_expression_text(source.c_str(), errors, location.start);
    if (!field || !errors.empty()) {
        delete field;
        path.compiler->record_error(ERR_SYNTAX, location);
        list.own(new Const_String(String("")));
        return;
    }
    list.own(field);
}

int compile_stmt_textmerge_operator(const statement_iterator&, statement_iterator& it, CompiledCodeCollection* code,
                                    CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const Stmt_Text*>((it++)->get());
    const library_command_def_st& textmerge = require_command(path, "textmerge");
    long long linefeed = statement->no_linefeed ? 0 : 1;
    std::string text = statement->text.u8str();
    if (text.empty()) {
        BorrowedOperands arguments;
        arguments.own(new_integer_constant(linefeed));
        compile_call_spec_void_core(statement->location, textmerge, arguments.get(), code, path);
        return 0;
    }
    // SET TEXTMERGE may change at any moment, so the choice is made at run time.
    AddressLabelRecord* merge = path.compiler->create_addresslabel(String("textmerge on:"));
    AddressLabelRecord* after = path.compiler->create_addresslabel(String("after textmerge:"));
    code->push_back(statement->location, new VmOpTestTextmergeOn());
    code->push_back(statement->location, jump_to<VmOpCondTrueJump>(merge));
    BorrowedOperands literal;
    literal.own(new_integer_constant(linefeed));
    add_literal(text, literal);
    compile_call_spec_void_core(statement->location, textmerge, literal.get(), code, path);
    code->push_back(jump_to<VmOpJump>(after));
    code->push_back(merge);
    BorrowedOperands merged;
    merged.own(new_integer_constant(linefeed));
    create_merge_list(path, statement->text, {statement->text_start}, merged);
    compile_call_spec_void_core(statement->location, textmerge, merged.get(), code, path);
    code->push_back(after);
    return 0;
}

// The lines up to ENDTEXT, joined by line ends, and where each begins.
String collect_text_lines(const statement_iterator& end, statement_iterator& it, text_line_starts& lines) {
    std::string text;
    bool first = true;
    for (; it != end && (*it)->type == STMT_TEXT_LINE; ++it) {
        if (!first) text += '\n';
        const auto* line = static_cast<const Stmt_Text*>(it->get());
        text += line->text.u8str();
        lines.push_back(line->text.size() ? line->text_start : line->location.start);
        first = false;
    }
    if (it != end && (*it)->type == STMT_ENDTEXT) ++it;
    return String(text.c_str());
}

long long text_flags(const option_ptr_list& options) {
    long long flags = 0;
    if (options.has("NOSHOW")) flags |= TEXT_NOSHOW;
    if (options.has("ADDITIVE")) flags |= TEXT_ADDITIVE;
    if (options.has("TEXTMERGE")) flags |= TEXT_MERGE;
    return flags;
}

int compile_stmt_text(const statement_iterator& end, statement_iterator& it, CompiledCodeCollection* code,
                      CodePath& path) {
    ZO_TRACE();
    const auto* statement = static_cast<const BasicCommand*>((it++)->get());
    text_line_starts lines;
    String text = collect_text_lines(end, it, lines);
    const library_func_def_st& function = require_function(path, "stackcall_text");
    const Option* target = statement->options.find("TO");
    const Option* pretext = statement->options.find("PRETEXT");
    long long flags = text_flags(statement->options);
    BorrowedOperands arguments;
    arguments.own(new_integer_constant(flags));
    if (pretext) arguments.add(pretext->value.get());
    else arguments.own(new_null_constant());
    if (flags & TEXT_MERGE) create_merge_list(path, text, lines, arguments);
    else add_literal(text.u8str(), arguments);
    const document_location_st& location = statement->location;
    auto emit_call = [&] {
        code->push_back(location, new VmOpEspAlloc());
        code->push_back(location, new VmOpReadConstInteger(flags));
        if (target && (flags & TEXT_ADDITIVE)) compile_target_argument(target->value.get(), code, path);
        else code->push_back(location, new VmOpReadConstNull());
        for (size_t i = 1; i < arguments.size(); ++i) compile_value(arguments.get()->at(i), code, path);
        code->push_back(location, new VmOpCallNative(function.handler, arguments.size() + 1));
    };
    if (target) {
        compile_assign_with(target->value.get(), emit_call, code, path);
    } else {
        emit_call();
        code->push_back(location, new VmOpEspFree());
    }
    return 0;
}

}  // namespace

void create_merge_list(CodePath& path, const String& text, const text_line_starts& lines, BorrowedOperands& list) {
    std::string source = text.u8str();
    size_t at = 0;
    for (;;) {
        size_t open = source.find("<<", at);
        size_t close = open == std::string::npos ? open : source.find(">>", open + 2);
        if (close == std::string::npos) break;
        if (open > at) add_literal(source.substr(at, open - at), list);
        document_location_st field{position_in_source(source, open + 2, lines),
                                   position_in_source(source, close, lines)};
        add_field(source.substr(open + 2, close - open - 2), field, path, list);
        at = close + 2;
    }
    if (at < source.size()) add_literal(source.substr(at), list);
}

void register_text_merge_statements(StatementTable& table) {
    table.add(STMT_TEXT, compile_stmt_text);
    table.add(STMT_TEXTMERGE, compile_stmt_textmerge_operator);
}

}  // namespace zobase
