#pragma once
// One thread of the language: the value stack, the chain of frames, the
// memory variables and the state of the last error.
#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "base/export.h"
#include "values/error.h"
#include "vm/data_sessions.h"
#include "vm/macro_cache.h"
#include "vm/memvar.h"
#include "vm/name_cache.h"
#include "vm/vm_op.h"

namespace zobase {

class Runtime;
class Program;
class CallResolver;
class RuntimeServices;
class DebugHook;

struct try_scope_st;
class VmOpTryEnter;
struct how_to_handle_st;
class Object;
struct ClassMember;

// Which member of which object is running: set around every member handler
// (objects/), read by the handlers and by the visibility rules. `this_object`
// is the object the member was asked of, `class_object` the link of its
// chain that holds the member.
struct member_context_st {
    Object* this_object = nullptr;
    Object* class_object = nullptr;
    const ClassMember* member = nullptr;
    uint32_t symbol = 0;
    uint32_t mode = 0;  // a MemberMode
};

// One row of the error list: number, message, detail, and four values that
// stay false here.
struct Error {
    Variant values[7];

    Error() = default;
    Error(const Error& other);
    Error& operator=(const Error&) = delete;
    ~Error();
};

enum RuntimeErrorRecovery : int {
    RECOVERY_ABANDON_FRAME = 0,  // unwind this frame
    RECOVERY_CONTINUE = 1,       // go on at the frame's ip
    RECOVERY_HANDLER_FOUND = 2,
};

// What a name meant before a frame shadowed it; previous is null when the
// name was free.
struct UndoMemvar {
    uint32_t symbol;
    Memvar* previous;
};

struct VmFrame {
    uint64_t depth;
    VmFrame* previous;
    VmOp** ip;
    VmOp** saved_ip;  // where an exception left the frame, for the trace
    const Program* program;
    try_scope_st* try_scopes;  // newest first; owned
    Memvar* saved_locals;
    Memvar* saved_frame_esp;
    Memvar* saved_esp;
    UndoMemvar* saved_undo_top;
    uint64_t saved_argc;
    std::unordered_map<uint32_t, Memvar*>* saved_dynamic_locals;
    Variant* ret;  // where the frame's RETURN puts its value
    uint64_t saved_program_id;
    // A method's frame entered in place keeps what its call changed.
    bool member_call;
    member_context_st saved_context;
    Memvar* saved_params_top;
    uint64_t saved_param_count;
};

constexpr uint64_t MAX_FRAME_DEPTH = 128;
// Runs of compiled text inside the running frame (evaluate(), macro text, a
// macro condition) that may be nested in each other, each a re-entry of the
// dispatch loop without a frame of its own.
constexpr uint32_t MAX_EVALUATION_DEPTH = 128;

class ZO_API VmStack {
public:
    VmStack(Runtime* runtime, uint64_t slots, uint64_t undo_slots);
    ~VmStack();
    VmStack(const VmStack&) = delete;
    VmStack& operator=(const VmStack&) = delete;

    uint64_t id;
    // Unique in the process and never reused: what claims the look-up places
    // of instructions (vm/name_site.h).
    const uint64_t stamp;
    Memvar* base;  // lowest valid slot
    uint64_t argc = 0;
    Memvar* locals;
    Memvar* frame_esp;
    Memvar* esp;  // top slot; equal to `end()` when the stack is empty
    Memvar* params_top = nullptr;
    uint64_t param_count = 0;
    uint64_t capacity;
    UndoMemvar* undo_base;  // the lowest entry an ordinary push may take
    UndoMemvar* undo_top;  // grows downward
    uint64_t undo_capacity;
    // Below undo_base the array keeps a few entries that only a CATCH's
    // variable may take, so that a TRY can catch a full undo stack.
    static constexpr uint64_t UNDO_HANDLER_RESERVE = 8;
    bool undo_reserve_open = false;
    uint64_t pending_args = 0;
    // The stack's data sessions: work areas, fields and the current
    // session's settings. Never null; see vm/data_sessions.h.
    StackDataSessions sessions;
    bool textmerge = false;
    bool textmerge_show = true;
    uint32_t textmerge_memvar = 0;  // SET TEXTMERGE TO MEMVAR: the variable collecting output
    DebugHook* debug_hook = nullptr;
    std::unordered_map<uint32_t, Memvar*> names;  // visible PRIVATE and PUBLIC variables
    // Every change of what a name may mean as a variable (an entry of
    // `names` made, hidden or restored, a LOCAL declared by name) moves the
    // sessions' names epoch, which the fields move too.
    void names_changed() noexcept { sessions->names_changed(); }
    // What by-name instructions found, while both versions stand.
    NameCache name_cache;
    // Macro statements compiled on this stack (vm/macro_cache.h).
    MacroCache macro_cache;
    VmFrame* frame = nullptr;
    // The frames of calls the dispatch loop runs in place, one per depth:
    // a frame of depth d lives at call_frames[d] (no two live frames share
    // a depth). Frames with an activation of their own live in it.
    std::unique_ptr<VmFrame[]> call_frames;
    // The running frame's Program::id, 0 at rest: what kept names are checked
    // against, read without going through the frame.
    uint64_t frame_program_id = 0;
    std::list<Error> errors;
    RuntimeError last_error;
    RuntimeThrow pending_throw;
    // The TRY scopes whose CATCH filters are running, innermost last.
    std::vector<const VmOpTryEnter*> filtering_scopes;
    std::unordered_map<uint32_t, Memvar*>* dynamic_locals = nullptr;
    Runtime* runtime;  // the owner; the VM never looks inside
    bool space = true;  // SET SPACE: ? and ?? separate values by a blank
    // Installed by the runtime: symbol texts and the targets of late-bound calls.
    const CallResolver* resolver = nullptr;
    // Installed by the runtime: its screen, symbols and settings.
    RuntimeServices* services = nullptr;
    // Set by a native function that catches errors itself (NativeErrorCatch):
    // handlers are looked for only in frames newer than `catch_boundary`.
    bool native_catches = false;
    const VmFrame* catch_boundary = nullptr;
    member_context_st context;  // the running member, if any
    // Nested runs of compiled text in the running frame; see EvaluationLevel.
    uint32_t evaluation_depth = 0;
    // A macro statement runs with no frame around it (the prompt): the text
    // it compiled may not hold another macro statement.
    bool macro_at_rest = false;

    Memvar* end() const noexcept { return base + capacity; }
    UndoMemvar* undo_end() const noexcept { return undo_base + undo_capacity; }
    // Slots in use between esp and the end of the array.
    uint64_t depth() const noexcept { return static_cast<uint64_t>(end() - esp); }

    // Pushes a clean slot, or raises 9010 without changing anything.
    Memvar* push() {
        if (esp - 1 < base) throw RuntimeError(ERR_STACK_OVERFLOW);
        return --esp;
    }
    void pop() {
        esp->clear(this);
        ++esp;
    }
    // Pops every slot from esp up to (not including) mark.
    void pop_to(Memvar* mark) {
        while (esp < mark) pop();
    }

    // Names the running frame knows: its compiled local names, then the
    // variables that macro text introduced.
    bool get_frame_memvar_pointer(uint32_t symbol, Memvar** out);
    // The language's lookup: a frame slot hides only when declared LOCAL;
    // otherwise the visible PRIVATE and PUBLIC variables.
    bool get_memvar(uint32_t symbol, Memvar** out);
    // The frame's variable of that name, made a dynamic local when new.
    void alloc_memvar(uint32_t symbol, Memvar** out);
    // What assigning to the name finds or creates.
    void alloc_undefined_memvar(uint32_t symbol, Memvar** out);
    void define_undefined_memvar(uint32_t symbol, Memvar** var);
    // Records what the name meant before this frame shadowed it. A full undo
    // stack raises 103; undo_reserve_open lets the push go into the reserve.
    void alloc_undo_memvar(uint32_t symbol, Memvar* previous);

    // Records the error, offers it to the TRY scopes of every frame and, for
    // code of a module, to the user (the report and the Abort/Retry/Ignore
    // dialog). Retry and Ignore move the frame's ip.
    RuntimeErrorRecovery handle_exception(how_to_handle_st& how);
    // The newest TRY scope around the current position of any frame whose
    // catch filter accepts value.
    bool find_handler(Variant* value, const VmFrame** frame, long long* position,
                      unsigned int* symbol);
    // Makes row the only entry of the error list.
    void error(const Error& row);

    // The text of a symbol for messages; empty without a resolver.
    String symbol_text(uint32_t symbol) const;
};

// One nested run of compiled text for as long as it lives; past
// MAX_EVALUATION_DEPTH it raises 103 instead.
class EvaluationLevel {
public:
    explicit EvaluationLevel(VmStack* stack);
    ~EvaluationLevel() { --stack_->evaluation_depth; }
    EvaluationLevel(const EvaluationLevel&) = delete;
    EvaluationLevel& operator=(const EvaluationLevel&) = delete;

private:
    VmStack* stack_;
};

// Ends a frame's variables: pops to esp_mark, undoes the shadowing recorded
// since undo_mark, and frees the frame's dynamic locals.
void __release_variables(VmStack* stack, UndoMemvar* undo_mark, Memvar* esp_mark);

}  // namespace zobase
