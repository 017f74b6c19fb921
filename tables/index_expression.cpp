// Key and filter expressions of a tag: compiling, classifying the key by the
// value it gives, and evaluating both on the shown record.
#include <cstring>

#include "tables/dbf_file.h"
#include "tables/index.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"
#include "values/variant.h"
#include "vm/call_resolver.h"
#include "vm/program.h"
#include "vm/table_context.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// Releases a result on every way out.
struct ExpressionResult {
    VmStack* stack;
    Variant value;
    explicit ExpressionResult(VmStack* s) : stack(s) {}
    ~ExpressionResult() { value.release(stack); }
};

// A key that is one field: its kind, width and nullability are known
// before any record is read.
const DbfField* field_of_expression(const DbfFile* table, const String& text) {
    String name = text;
    name.alltrim();
    std::string wanted = name.upper().u8str();
    for (const DbfField* field : table->visible_fields)
        if (table->field_name(field).upper().u8str() == wanted) return field;
    return nullptr;
}

bool static_kind_of(const DbfField* field, IndexKeyKind* kind) {
    switch (field->type) {
    case 'L': *kind = KEY_LOGICAL; return true;
    case 'I': *kind = KEY_INTEGER; return true;
    case 'N': case 'F': case 'B': *kind = KEY_NUMERIC; return true;
    case 'Y': *kind = KEY_MONEY; return true;
    case 'D': *kind = KEY_DATE; return true;
    case 'T': *kind = KEY_DATETIME; return true;
    case 'C': case 'V': *kind = field->binary ? KEY_BINARY : KEY_CHARACTER; return true;
    case 'Q': *kind = KEY_BINARY; return true;
    default: return false;
    }
}

std::unique_ptr<Program> compile(VmStack* stack, const DbfFile* table, const String& text) {
    return stack->resolver->compile_expression(stack, text, table->expression_fields);
}

}  // namespace

std::unique_ptr<Program> Index::analze_expression(VmStack* stack, DbfFile* table, const String& text,
                                                  const Collation* collation, IndexExpressionInfo* info) {
    std::unique_ptr<Program> program = compile(stack, table, text);
    const DbfField* field = field_of_expression(table, text);
    IndexKeyKind static_kind = KEY_CHARACTER;
    bool known = field && static_kind_of(field, &static_kind);
    uint64_t width = known && (static_kind == KEY_CHARACTER || static_kind == KEY_BINARY) ? field->length : 0;
    info->nullable = known && field->nullable;
    ExpressionResult result(stack);
    vm_run_expression(stack, program.get(), &result.value);
    const Variant* value = result.value.follow();
    switch (value->tag) {
    case TAG_FALSE:
    case TAG_TRUE: info->kind = KEY_LOGICAL; break;
    case TAG_INTEGER: info->kind = KEY_INTEGER; break;
    case TAG_NUMERIC: info->kind = KEY_NUMERIC; break;
    case TAG_MONEY: info->kind = KEY_MONEY; break;
    case TAG_DATE: info->kind = KEY_DATE; break;
    case TAG_DATETIME: info->kind = KEY_DATETIME; break;
    case TAG_NULL:
        if (!known) throw dbf_error_type_index_expression();
        info->kind = static_kind;
        info->nullable = true;
        break;
    case TAG_STRING:
        info->kind = value->str().get_charset() == Charset::binary || static_kind == KEY_BINARY ? KEY_BINARY
                                                                                              : KEY_CHARACTER;
        width = std::max<uint64_t>(width, value->str().size());
        break;
    default: throw dbf_error_type_index_expression();
    }
    if (known && value->tag != TAG_NULL && static_kind != info->kind && !(value->is_logical() && static_kind == KEY_LOGICAL))
        if (!(static_kind == KEY_NUMERIC && info->kind == KEY_INTEGER)) throw dbf_invalid_index_key_len();
    if (known && static_kind == KEY_NUMERIC) info->kind = KEY_NUMERIC;
    uint64_t length = fixed_key_length(info->kind);
    if (!length) length = width * (info->kind == KEY_CHARACTER && !info->nullable ? collation->key_size_factor : 1);
    info->length = length + (info->nullable ? 1 : 0);
    return program;
}

void Index::open(VmStack* stack, DbfFile* table) {
    collation = collation_for_group(table->charset, String(header.collation.c_str()));
    pad = collation->pad;
    if (header.key_expression.empty()) {  // the directory
        kind = KEY_CHARACTER;
        create_key_op = key_operation_for(KEY_BINARY, false);
        pad = ' ';
        return;
    }
    IndexExpressionInfo info;
    key_program = analze_expression(stack, table, key_text(table->charset), collation, &info);
    kind = info.kind;
    create_key_op = key_operation_for(kind, header.has(INDEX_OPTION_NULLABLE));
    if (header.has(INDEX_OPTION_FILTER)) {
        filter_program = compile(stack, table, filter_text(table->charset));
        ExpressionResult result(stack);
        vm_run_expression(stack, filter_program.get(), &result.value);
        const Variant* value = result.value.follow();
        if (!value->is_logical() && !value->is_null()) throw dbf_index_filter_must_be_logical();
    }
}

uint64_t Index::create_key(const Variant* value, char* out, uint64_t length, bool full_length) const {
    if (length > key_length()) length = key_length();
    return create_key_op(value->follow(), full_length, out, length, collation);
}

uint64_t Index::eval_key(VmStack* stack, char* out) const {
    ExpressionResult result(stack);
    vm_run_expression(stack, key_program.get(), &result.value);
    if (result.value.follow()->is_null() && !header.has(INDEX_OPTION_NULLABLE))
        throw dbf_error_index_cannot_store_null();
    return create_key(&result.value, out, key_length(), true);
}

bool Index::eval_filter(VmStack* stack) const {
    if (!filter_program) return true;
    ExpressionResult result(stack);
    vm_run_expression(stack, filter_program.get(), &result.value);
    const Variant* value = result.value.follow();
    if (value->tag == TAG_TRUE) return true;
    if (value->tag == TAG_FALSE || value->tag == TAG_NULL) return false;
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

String Index::key_text(const Charset* charset) const {
    return String::fromBytes(header.key_expression.data(), header.key_expression.size(), charset);
}

String Index::filter_text(const Charset* charset) const {
    return String::fromBytes(header.filter_expression.data(), header.filter_expression.size(), charset);
}

}  // namespace zobase

namespace zobase {

internal_indexdef_st Index::definition(const Charset* charset) const {
    internal_indexdef_st d;
    d.tag = name;
    d.key_expression = key_text(charset);
    d.filter_expression = filter_text(charset);
    d.collation = String(header.collation.c_str());
    d.defined = header.has(INDEX_OPTION_DEFINED);
    d.unique = unique();
    d.descending = header.descending;
    d.binary = binary();
    return d;
}

}  // namespace zobase
