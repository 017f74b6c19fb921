// What a work area does whatever its file format: the moves that skip
// records out of range, the filter, LOCATE and CONTINUE, and the fields as
// members of the object.
#include "tables/table_object.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/call_trace.h"
#include "objects/object.h"
#include "tables/index.h"
#include "tables/table_definition.h"
#include "tables/table_sessions.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/call_resolver.h"
#include "vm/param.h"
#include "vm/program.h"
#include "vm/vm_run.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// What a condition yields: false and null fail, true passes, anything else
// is the error given.
bool condition_holds(const Variant& value, int error) {
    if (value.tag == TAG_TRUE) return true;
    if (value.tag == TAG_FALSE || value.tag == TAG_NULL) return false;
    throw RuntimeError(error);
}

}  // namespace

void FieldSymbolMap::insert(uint32_t symbol, uint16_t index) {
    if (symbol == 0) return;
    if ((count_ + 1) * 2 > slots_.size()) grow();
    size_t i = hash(symbol) & mask_;
    while (slots_[i].symbol != 0 && slots_[i].symbol != symbol) i = (i + 1) & mask_;
    if (slots_[i].symbol == 0) ++count_;
    slots_[i] = {symbol, index};
}

void FieldSymbolMap::grow() {
    std::vector<slot_st> old = std::move(slots_);
    slots_.assign(old.empty() ? 8 : old.size() * 2, slot_st{0, 0});
    mask_ = slots_.size() - 1;
    count_ = 0;
    for (const slot_st& slot : old)
        if (slot.symbol != 0) insert(slot.symbol, slot.index);
}

const builtin_class_data_st table_class_data = {nullptr, false};

Table_Object::~Table_Object() = default;

void Table_Object::internal_open(VmStack* stack) {
    uint64_t count = cnt_fields();
    symbol_by_field_.resize(count);
    for (uint64_t index = 0; index < count; ++index) {
        table_field_info_st info = get_field_info(index);
        uint32_t symbol = stack->resolver->symbolize(info.name);
        symbol_by_field_[index] = symbol;
        field_by_symbol_.insert(symbol, static_cast<uint16_t>(index));
        add_field_member(info.name, symbol, index);
        // A general field has no value an expression could use.
        if (info.type == FIELD_TYPE_GENERAL || info.type == FIELD_TYPE_NONE) continue;
        expression_fields_.fields.push_back({symbol, static_cast<uint8_t>(info.type),
                                             static_cast<uint32_t>(info.width), static_cast<uint16_t>(index)});
    }
    publish_field_members();
}

fielddef_st Table_Object::get_field_definition(uint64_t index) const {
    table_field_info_st info = get_field_info(index);
    fielddef_st definition = {};
    definition.type = info.type;
    std::snprintf(definition.name, sizeof definition.name, "%s", info.name.u8str().c_str());
    // Fixed widths are the type's own; only these types take sizes.
    definition.default_length = !std::strchr("CVQNF", info.letter);
    definition.default_decimals = !std::strchr("NFB", info.letter);
    // Character widths are counted in characters, stored in bytes.
    bool characters = info.letter == 'C' || info.letter == 'V';
    definition.length = characters ? info.width / charset->max_char() : info.width;
    definition.decimals = info.decimals;
    definition.nullable = info.nullable ? FIELD_NULLABLE : FIELD_NOT_NULLABLE;
    definition.binary = info.binary;
    definition.autoincrement = info.autoincrement;
    definition.next_value = info.next_value;
    definition.step = info.step;
    definition.has_next_value = definition.has_step = info.autoincrement;
    return definition;
}

// The fields first, so that a field hides a class member of its name.
void Table_Object::add_field_member(const String& name, uint32_t symbol, uint64_t index) {
    auto member = std::make_unique<ClassMember>();
    member->index = field_tables_.members.size();
    member->type = MEMBER_PROPERTY;
    member->name = name;
    member->symbol = symbol;
    member->slot = index;
    member->access = field_member_access;
    member->assign = field_member_assign;
    field_tables_.members.push_back(member.get());
    field_tables_.by_symbol.insert(symbol, member.get());
    field_members_.push_back(std::move(member));
}

void Table_Object::publish_field_members() {
    for (ClassMember* member : object_class->member_tables()->members) {
        if (field_tables_.by_symbol.find(member->symbol)) continue;
        field_tables_.members.push_back(member);
        field_tables_.by_symbol.insert(member->symbol, member);
    }
    tables.store(&field_tables_, std::memory_order_release);
}

// ---- evaluation

std::unique_ptr<Program> Table_Object::compile(VmStack* stack, const String& text) {
    return stack->resolver->compile_expression(stack, text, &expression_fields_);
}

// The program runs in the frame of the code that moves the cursor; its
// names are looked up there, after this table's fields.
void Table_Object::evaluate(VmStack* stack, const Program* program, Variant* result) {
    ExpressionTableScope scope(stack, this);
    vm_run_expression(stack, program, result);
}

bool Table_Object::record_in_range(VmStack* stack) {
    if (stack->sessions->settings().deleted && deleted()) return false;
    if (scoped() && (below_scope() || above_scope())) return false;
    if (!filter_) return true;
    Variant value;
    evaluate(stack, filter_.get(), &value);
    bool holds = condition_holds(value, ERR_FILTER_NOT_LOGICAL);
    value.release(stack);
    return holds;
}

void Table_Object::set_filter_to(VmStack* stack, const String& condition) {
    ZO_TRACE();
    filter_ = compile(stack, condition);
    filter_text_ = condition;
}

void Table_Object::set_filter_to() {
    filter_.reset();
    filter_text_ = String();
}

// ---- moves

// ---- the scope

void Table_Object::set_scope(int bound, const char* key, uint64_t length, unsigned range) {
    scope_st& scope = bound == SEEK_BACKWARD ? high_ : low_;
    scope.length = std::min(length, MAX_SCOPE_KEY);
    std::memcpy(scope.key, key, scope.length);
    scope.range = range;
    scope.set = true;
}

bool Table_Object::below_scope() {
    const char* key = low_.set ? get_index_key() : nullptr;
    if (!key) return false;
    int c = std::memcmp(key, low_.key, low_.length);
    return c < 0 || (c == 0 && !(low_.range & SEEK_RANGE_INCLUSIVE));
}

bool Table_Object::above_scope() {
    const char* key = high_.set ? get_index_key() : nullptr;
    if (!key) return false;
    int c = std::memcmp(key, high_.key, high_.length);
    return c > 0 || (c == 0 && !(high_.range & SEEK_RANGE_INCLUSIVE));
}

bool Table_Object::bof() { return bof_lowlevel() || before_scope(); }

bool Table_Object::eof() { return eof_lowlevel() || after_scope(); }

// A move that left the scope at its end shows the end of the table, as a
// move past the last record does.
void Table_Object::end_outside_scope() {
    if (!eof_lowlevel() && after_scope()) movetoeof();
}

// ---- moves

// With a scope the walk begins at the bound its order meets first.
void Table_Object::movefirst(VmStack* stack) {
    leave_record(stack);
    const scope_st& start = descending() ? high_ : low_;
    if (start.set) seek_lowlevel(stack, start.key, start.length, start.range, descending() ? SEEK_BACKWARD : SEEK_FORWARD);
    else movefirst_lowlevel(stack);
    if (!eof() && !record_in_range(stack)) movenext(stack, 1);
    end_outside_scope();
}

void Table_Object::movelast(VmStack* stack) {
    leave_record(stack);
    const scope_st& start = descending() ? low_ : high_;
    if (start.set) seek_lowlevel(stack, start.key, start.length, start.range, descending() ? SEEK_FORWARD : SEEK_BACKWARD);
    else movelast_lowlevel(stack);
    if (!bof() && !eof() && !record_in_range(stack)) moveprevious(stack, 1);
}

void Table_Object::movenext(VmStack* stack, uint64_t count) {
    leave_record(stack);
    bool at_end = eof();
    uint64_t passed = 0;
    for (;;) {
        movenext_lowlevel(stack);
        if (eof()) {
            if (at_end) throw RuntimeError(ERR_END_OF_FILE);
            return end_outside_scope();
        }
        if (record_in_range(stack) && ++passed == count) return;
    }
}

void Table_Object::moveprevious(VmStack* stack, uint64_t count) {
    leave_record(stack);
    if (bof()) throw RuntimeError(ERR_BEGINNING_OF_FILE);
    uint64_t passed = 0;
    for (;;) {
        moveprevious_lowlevel(stack);
        if (bof()) return;
        if (record_in_range(stack) && ++passed == count) return;
    }
}

void Table_Object::go_record(VmStack* stack, uint64_t number) {
    leave_record(stack);
    go(stack, number);
}

void Table_Object::append_blank(VmStack* stack) {
    leave_record(stack);
    begin_append();
    commit(stack);
}

// ---- scopes

Table_Object::ScopeWalk::ScopeWalk(VmStack* stack, Table_Object* table, const record_scope_st& scope)
    : stack_(stack), table_(table), scope_(scope) {
    if (scope.for_condition.size()) for_ = table->compile(stack, scope.for_condition);
    if (scope.while_condition.size()) while_ = table->compile(stack, scope.while_condition);
}

bool Table_Object::ScopeWalk::holds(const std::unique_ptr<Program>& condition) {
    if (!condition) return true;
    Variant value;
    table_->evaluate(stack_, condition.get(), &value);
    bool result = condition_holds(value, ERR_FOR_WHILE_NOT_LOGICAL);
    value.release(stack_);
    return result;
}

// ALL starts at the top, REST and NEXT on the current record (skipping on
// when it is out of range), RECORD on its record whatever the range.
bool Table_Object::ScopeWalk::next() {
    if (done_) return false;
    if (!started_) {
        started_ = true;
        if (scope_.kind == SCOPE_ALL) table_->movefirst(stack_);
        else if (scope_.kind == SCOPE_RECORD) table_->go_record(stack_, scope_.count);
        else if (!table_->eof() && !table_->record_in_range(stack_)) table_->movenext(stack_, 1);
    } else if (scope_.kind != SCOPE_RECORD && !table_->eof()) {
        table_->movenext(stack_, 1);
    }
    for (;;) {
        bool ended = table_->eof() || (scope_.kind == SCOPE_NEXT && taken_ == scope_.count) ||
                     (scope_.kind == SCOPE_RECORD && taken_ == 1);
        if (ended || !holds(while_)) {
            done_ = true;
            return false;
        }
        ++taken_;
        if (holds(for_)) return true;
        if (scope_.kind == SCOPE_RECORD) continue;
        table_->movenext(stack_, 1);
    }
}

// ---- LOCATE

void Table_Object::locate_for(VmStack* stack, const String& condition, bool rest) {
    ZO_TRACE();
    locate_for_ = compile(stack, condition);
    locate_while_.reset();
    if (!rest) movefirst(stack);
    locate_continue_for(stack);
}

void Table_Object::locate_for_while(VmStack* stack, const String& condition, const String& while_condition,
                                    bool rest) {
    ZO_TRACE();
    locate_for_ = compile(stack, condition);
    locate_while_ = compile(stack, while_condition);
    if (!rest) movefirst(stack);
    locate_continue_for(stack);
}

// Stops at the first record where FOR holds, or where WHILE no longer does.
void Table_Object::locate_continue_for(VmStack* stack) {
    found = false;
    while (!eof()) {
        if (locate_stops_here(stack)) return;
        movenext(stack, 1);
    }
}

bool Table_Object::locate_stops_here(VmStack* stack) {
    Variant value;
    if (locate_while_) {
        evaluate(stack, locate_while_.get(), &value);
        bool holds = condition_holds(value, ERR_FOR_WHILE_NOT_LOGICAL);
        value.release(stack);
        if (!holds) return true;
    }
    evaluate(stack, locate_for_.get(), &value);
    found = condition_holds(value, ERR_FOR_WHILE_NOT_LOGICAL);
    value.release(stack);
    return found;
}

// CONTINUE before any LOCATE searches nothing and finds nothing.
void Table_Object::locate_continue(VmStack* stack) {
    if (eof()) throw RuntimeError(ERR_END_OF_FILE);
    movenext(stack, 1);
    if (!locate_for_) {
        found = false;
        return;
    }
    locate_continue_for(stack);
}

// ---- writing fields

// The value's kind picks the setter; objects and arrays fit no field.
void Table_Object::set_field(VmStack* stack, uint64_t index, const Variant* value) {
    const Variant* v = value->follow();
    switch (v->tag) {
    case TAG_NULL: return set_field_null(index);
    case TAG_FALSE: return set_field_bool(index, false);
    case TAG_TRUE: return set_field_bool(index, true);
    case TAG_INTEGER: return set_field_integer(index, v->integer);
    case TAG_NUMERIC: return set_field_numeric(index, v->numeric);
    case TAG_MONEY: return set_field_money(index, v->money);
    case TAG_DATE: return set_field_date(index, v->date);
    case TAG_DATETIME: return set_field_datetime(index, v->datetime);
    case TAG_STRING: return set_field_string(index, v->str());
    case TAG_OBJECT:
    case TAG_ARRAY: throw RuntimeError(ERR_ARGUMENT_INVALID);
    default: raise_not_available("field value of this kind");
    }
}

// A name held here keeps its text alive, so a name with the same bytes at
// the same place is the same name.
uint64_t Table_Object::field_by_name(VmStack* stack, const String& name) {
    constexpr size_t REMEMBERED_NAMES = 8;
    for (const named_field_st& known : named_fields_)
        if (known.name.read() == name.read() && known.name.size() == name.size() &&
            known.name.get_charset() == name.get_charset())
            return known.index;
    uint32_t symbol = stack->resolver->symbolize(name);
    int index = get_field_by_symbol_id(symbol);
    if (index < 0) throw RuntimeError(ERR_VARIABLE_NOT_FOUND, name);
    named_field_st known{name, static_cast<uint64_t>(index)};
    if (named_fields_.size() < REMEMBERED_NAMES) named_fields_.push_back(known);
    else named_fields_[next_named_field_++ % REMEMBERED_NAMES] = known;
    return known.index;
}

void Table_Object::set_field_by_symbol(VmStack* stack, uint32_t symbol, const Variant* value) {
    int index = get_field_by_symbol_id(symbol);
    if (index < 0) throw RuntimeError(ERR_VARIABLE_NOT_FOUND, stack->symbol_text(symbol));
    set_field(stack, static_cast<uint64_t>(index), value);
}

// A write that cannot be committed is taken back, so that the work area
// never carries a change that is neither on disk nor wanted.
void Table_Object::commit(VmStack* stack) {
    if (buffering != BUFFERING_NONE) return;
    try {
        update(stack);
    } catch (...) {
        revert();
        throw;
    }
}

void Table_Object::leave_record(VmStack* stack) {
    if (buffering != BUFFERING_NONE) update(stack);
}

// ---- the object protocol

void Table_Object::field_member_access(VmStack* stack, unsigned long long argc, Variant* ret) {
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    ret->release(stack);
    current_object<Table_Object>(stack)->get_field(stack, stack->context.member->slot, ret);
}

void Table_Object::field_member_assign(VmStack* stack, unsigned long long argc) {
    if (argc != 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    Table_Object* self = current_object<Table_Object>(stack);
    self->set_field(stack, stack->context.member->slot, Param(stack, argc));
    self->commit(stack);
}

void Table_Object::virtual_access(VmStack* stack, unsigned symbol, size_t argc, Variant* ret) {
    int index = get_field_by_symbol_id(symbol);
    if (index < 0) return Object::virtual_access(stack, symbol, argc, ret);
    if (argc) throw RuntimeError(ERR_ARGUMENT_INVALID);
    ret->release(stack);
    get_field(stack, static_cast<uint64_t>(index), ret);
}

void Table_Object::virtual_assign(VmStack* stack, unsigned symbol, size_t argc) {
    const ClassMember* member;
    Object* holder;
    if (get_field_by_symbol_id(symbol) < 0 && get_member(symbol, &member, &holder))
        return Object::virtual_assign(stack, symbol, argc);
    if (argc != 1) throw RuntimeError(ERR_ARGUMENT_INVALID);
    set_field_by_symbol(stack, symbol, Param(stack, argc));
    commit(stack);
}

}  // namespace zobase
