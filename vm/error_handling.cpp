// Run-time error handling: the error list, the search for a TRY handler,
// the report and dialog for errors that nothing catches, and Ctrl-C.
#include "vm/error_handling.h"

#include <cstdio>
#include <list>
#include <string>

#include "base/call_trace.h"
#include "vm/interrupt.h"
#include "vm/program.h"
#include "vm/runtime_services.h"
#include "vm/scoped_flag.h"
#include "vm/screen.h"
#include "vm/try_scope.h"
#include "vm/vm_run.h"

namespace zobase {

Error::Error(const Error& other) {
    for (int i = 0; i < 7; ++i) values[i].set_variant(&other.values[i]);
}

Error::~Error() {
    for (Variant& value : values) value.release(nullptr);
}

void VmStack::error(const Error& row) {
    errors.clear();
    errors.push_back(row);
}

void enter_try_scope(VmFrame* frame, const VmOpTryEnter* scope) {
    for (try_scope_st* entry = frame->try_scopes; entry; entry = entry->next)
        if (entry->scope == scope) return;
    frame->try_scopes = new try_scope_st{scope, frame->try_scopes};
}

void free_try_scopes(VmFrame* frame) {
    while (try_scope_st* entry = frame->try_scopes) {
        frame->try_scopes = entry->next;
        delete entry;
    }
}

void report_final_error(Screen* screen, const RuntimeError& error) {
    if (error.compile_report.size()) screen->err(error.compile_report);
    screen->errendl(error.message);
}

// The CATCH variable may take the undo stack's reserve: the error being
// caught may be that the undo stack is full.
void enter_handler(VmStack* stack, VmFrame* frame, const Variant& value, unsigned symbol,
                   long long position) {
    if (symbol) {
        Memvar* var;
        {
            ScopedFlag reserve(&stack->undo_reserve_open, true);
            stack->alloc_undefined_memvar(symbol, &var);
        }
        var->release(stack);
        var->set_variant(&value);
    }
    frame->ip = const_cast<VmOp**>(frame->program->code()) + position;
}

namespace {

uint64_t position_in(const VmFrame* frame) {
    return static_cast<uint64_t>(frame->ip - frame->program->code());
}

// While a scope's filter runs, the scope is out of reach of the search: an
// error in a WHEN clause is not inside the TRY region the clause belongs to.
class FilteringScope {
public:
    FilteringScope(VmStack* stack, const VmOpTryEnter* scope) : stack_(stack) {
        stack_->filtering_scopes.push_back(scope);
    }
    ~FilteringScope() { stack_->filtering_scopes.pop_back(); }
    FilteringScope(const FilteringScope&) = delete;
    FilteringScope& operator=(const FilteringScope&) = delete;

private:
    VmStack* stack_;
};

bool is_filtering(const VmStack* stack, const VmOpTryEnter* scope) {
    for (const VmOpTryEnter* running : stack->filtering_scopes)
        if (running == scope) return true;
    return false;
}

// The filter sees the caught value as its one local, passed as its argument.
// An error the filter raised and that was recovered from (Ignore) must not
// replace the error being searched for.
bool filter_accepts(VmStack* stack, const VmOpTryEnter* scope, const Program* filter, const Variant* value) {
    if (!filter) return true;
    FilteringScope filtering(stack, scope);
    RuntimeError searched = stack->last_error;
    std::list<Error> searched_rows(stack->errors);
    Memvar* argument_top = stack->esp;
    size_t argc = 0;
    if (filter->frame_size() == 1) {
        Memvar* argument = stack->push();
        argument->set_variant(value);
        argument->kind = MEMVAR_LOCAL;
        argc = 1;
    }
    Variant result;
    try {
        execute_program(stack, argc, false, filter, &result);
    } catch (...) {
        stack->pop_to(argument_top);
        throw;
    }
    stack->pop_to(argument_top);
    stack->last_error = searched;
    stack->errors.swap(searched_rows);
    bool accepted = result.follow()->tag == TAG_TRUE;
    result.release(stack);
    return accepted;
}

std::string printf_text(const char* format, auto... arguments) {
    char buffer[4096];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

// The second line of a report: where the frame stands.
String place_line(const VmFrame* frame) {
    frame_place_st place = place_of(frame);
    return String(printf_text(" in %s, line %d, column %d, program %s", place.module.c_str(),
                              static_cast<int>(place.line), static_cast<int>(place.column), place.program.c_str())
                      .c_str());
}

void report_error(Screen* screen, const RuntimeError& error, const VmFrame* frame) {
    if (error.compile_report.size()) screen->err(error.compile_report);
    screen->errendl(String(printf_text("%s %d - %s", "(Runtime error)", error.number,
                                       error.message.u8str().c_str()).c_str()));
    screen->errendl(place_line(frame));
    screen->flush();
}

void print_stack_trace(Screen* screen, const VmFrame* newest) {
    screen->errendl(String("(Stack trace)"));
    for (const VmFrame* frame = newest; frame; frame = frame->previous) {
        frame_place_st place = place_of(frame);
        screen->errendl(String(printf_text(" #%03llu in %s, line %u, column %u, program %s",
                                           static_cast<unsigned long long>(frame->depth),
                                           place.module.c_str(), place.line, place.column,
                                           place.program.c_str())
                                   .c_str()));
    }
    screen->flush();
}

// Retry: back to the first instruction of the failing statement.
void rewind_to_statement_start(VmFrame* frame) {
    VmOp* const* code = frame->program->code();
    uint64_t statement = (*frame->ip)->statement;
    while (frame->ip > code && (*(frame->ip - 1))->statement == statement) --frame->ip;
}

// Ignore: on to the next statement. The last instruction is as far as it
// goes, so the frame never runs past its code.
void skip_to_next_statement(VmFrame* frame) {
    VmOp* const* last = frame->program->code() + frame->program->instruction_count() - 1;
    uint64_t statement = (*frame->ip)->statement;
    while (frame->ip < last && (*frame->ip)->statement == statement) ++frame->ip;
}

}  // namespace

frame_place_st place_of(const VmFrame* frame) {
    frame_place_st place;
    const Program* program = frame->program;
    if (program->module) place.module = program->module->file_name.u8str();
    document_location_st location;
    if (program->location_of(position_in(frame), &location)) {
        place.line = location.start.line;
        place.column = location.start.column;
    }
    place.program = program->name.size() == 0 ? "<anonymous>" : program->name.u8str();
    return place;
}

std::atomic<bool> vm_interrupt_requested{false};

// Where the program stood, so that a user who stopped a program that hung
// learns where it hung.
void take_interrupt(VmStack* stack) {
    if (!vm_interrupt_requested.exchange(false)) return;
    Screen* screen = stack->services ? stack->services->screen() : nullptr;
    if (screen) {
        screen->errendl(String("(Interrupted)"));
        if (stack->frame && stack->frame->program->module) screen->errendl(place_line(stack->frame));
        screen->flush();
    }
    throw RuntimeInterrupt(INTERRUPT_BREAK);
}

bool VmStack::find_handler(Variant* value, const VmFrame** handler_frame, long long* position,
                           unsigned int* symbol) {
    ZO_TRACE();
    const VmFrame* boundary = native_catches ? catch_boundary : nullptr;
    for (VmFrame* walked = frame; walked && walked != boundary; walked = walked->previous) {
        uint64_t at = position_in(walked);
        for (try_scope_st* entry = walked->try_scopes; entry; entry = entry->next) {
            if (!entry->scope->covers(at) || is_filtering(this, entry->scope)) continue;
            for (const catch_record_st& record : entry->scope->catches) {
                if (!filter_accepts(this, entry->scope, record.filter.get(), value)) continue;
                *handler_frame = walked;
                *position = static_cast<long long>(record.target);
                *symbol = record.symbol;
                return true;
            }
        }
    }
    return false;
}

// A DebugHook with no debugger connected answers -1, and the default hook
// never has one, so the debugger's answer plays no part here.
RuntimeErrorRecovery VmStack::handle_exception(how_to_handle_st& how) {
    ZO_TRACE();
    Error row;
    row.values[0].set_integer(last_error.number);
    row.values[1].set_string(last_error.message);
    row.values[2].set_string(last_error.parameter);
    error(row);

    // A stack made without a runtime has no services: its handlers get no object.
    if (services) services->create_exception_object(last_error, &how.exception);
    if (find_handler(&how.exception, &how.frame, &how.position, &how.symbol))
        return RECOVERY_HANDLER_FOUND;
    if (native_catches) return RECOVERY_ABANDON_FRAME;

    // Text run by run_command belongs to no module: the host reports it.
    Screen* screen = services ? services->screen() : nullptr;
    if (!frame->program->module || !screen) return RECOVERY_ABANDON_FRAME;
    report_error(screen, last_error, frame);
    last_error.compile_report = String();
    switch (screen->msgbox(String(""), String(""), ERROR_DIALOG_BUTTONS, MSGBOX_ABORT, 1)) {
    case MSGBOX_ABORT:
        print_stack_trace(screen, frame);
        return RECOVERY_ABANDON_FRAME;
    case MSGBOX_RETRY:
        rewind_to_statement_start(frame);
        return RECOVERY_CONTINUE;
    case MSGBOX_IGNORE:
        skip_to_next_statement(frame);
        return RECOVERY_CONTINUE;
    default:
        throw assert_failed_exception("unknown answer of the error dialog");
    }
}

}  // namespace zobase
