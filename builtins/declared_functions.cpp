// DECLARE's calls of C functions through libffi. Each declaration gets a
// closure of libffi with the form of a native function, so a late-bound call
// runs it like any library function; the closure converts the arguments to
// C, calls under a guard against crashes and writes back "@" parameters.
#include <ffi.h>
#include <setjmp.h>
#include <signal.h>

#include <mutex>
#include <string>

#include "base/call_trace.h"
#include "builtins/native_extensions.h"
#include "text/charset.h"
#include "values/error.h"
#include "vm/param.h"

namespace zobase {

struct declared_function_st {
    void* entry = nullptr;
    DeclareType result = DECLARE_VOID;
    std::vector<declare_parameter_st> parameters;
    std::vector<ffi_type*> parameter_types;
    ffi_cif call{};  // the C function's own
    ffi_type* handler_types[3] = {&ffi_type_pointer, &ffi_type_uint64, &ffi_type_pointer};
    ffi_cif handler{};  // native_function's
    ffi_closure* closure = nullptr;
    library_function_st form;
};

namespace {

// One C argument: its value, or for "@" the value whose address is passed.
struct c_argument_st {
    union {
        int16_t i16;
        int32_t i32;
        int64_t i64;
        float f32;
        double f64;
        void* pointer;
    };
    std::string bytes;  // the text of STRING and BINARY, NUL-terminated
    void* address;      // what the callee's parameter holds when passed by reference
};

ffi_type* ffi_type_of(DeclareType type) {
    switch (type) {
    case DECLARE_VOID: return &ffi_type_void;
    case DECLARE_SHORT: return &ffi_type_sint16;
    case DECLARE_INTEGER: return &ffi_type_sint32;
    case DECLARE_LONG_LONG: return &ffi_type_sint64;
    case DECLARE_SINGLE: return &ffi_type_float;
    case DECLARE_DOUBLE: return &ffi_type_double;
    case DECLARE_STRING:
    case DECLARE_BINARY: return &ffi_type_pointer;
    }
    return &ffi_type_void;
}

// The tag a late-bound call converts the argument to.
uint8_t argument_tag(DeclareType type) {
    switch (type) {
    case DECLARE_SINGLE:
    case DECLARE_DOUBLE: return TAG_NUMERIC;
    case DECLARE_STRING:
    case DECLARE_BINARY: return TAG_STRING;
    default: return TAG_INTEGER;
    }
}

void set_argument(const declare_parameter_st& parameter, const Variant& value, c_argument_st* argument) {
    switch (parameter.type) {
    case DECLARE_SHORT: argument->i16 = static_cast<int16_t>(value.integer); break;
    case DECLARE_INTEGER: argument->i32 = static_cast<int32_t>(value.integer); break;
    case DECLARE_LONG_LONG: argument->i64 = value.integer; break;
    case DECLARE_SINGLE: argument->f32 = static_cast<float>(value.numeric.value); break;
    case DECLARE_DOUBLE: argument->f64 = value.numeric.value; break;
    case DECLARE_STRING: argument->bytes = value.str().u8str(); break;
    case DECLARE_BINARY: argument->bytes.assign(value.str().read(), value.str().size()); break;
    case DECLARE_VOID: break;
    }
    if (parameter.type == DECLARE_STRING || parameter.type == DECLARE_BINARY) argument->pointer = argument->bytes.data();
    // A text is a buffer either way; "@" only adds the writing back.
    bool text = parameter.type == DECLARE_STRING || parameter.type == DECLARE_BINARY;
    argument->address = parameter.by_reference && !text ? static_cast<void*>(&argument->i64) : nullptr;
}

// "@" parameters give the variable what the callee left; a text keeps its length.
void write_back(VmStack* stack, const declare_parameter_st& parameter, const c_argument_st& argument, Variant* target) {
    switch (parameter.type) {
    case DECLARE_SHORT: target->set_integer(argument.i16); return;
    case DECLARE_INTEGER: target->set_integer(argument.i32); return;
    case DECLARE_LONG_LONG: target->set_integer(static_cast<long long>(argument.i64)); return;
    case DECLARE_SINGLE:
    case DECLARE_DOUBLE: {
        double value = parameter.type == DECLARE_SINGLE ? argument.f32 : argument.f64;
        target->set(numeric_type_st{value, target->numeric.decimals});
        return;
    }
    case DECLARE_STRING:
    case DECLARE_BINARY: {
        const Charset* charset = parameter.type == DECLARE_STRING ? Charset::utf8 : target->str().get_charset();
        String text = String::fromBytes(argument.bytes.data(), argument.bytes.size(), charset);
        target->release(stack);
        target->set_string(text);
        return;
    }
    case DECLARE_VOID: return;
    }
}

// ---- the guard against a crash in the callee ----

thread_local sigjmp_buf* crash_guard = nullptr;
constexpr int GUARDED_SIGNALS[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

// Signal handlers belong to the process, not to a thread: the guard's
// handlers stay in place while any thread is inside a guarded call, and
// the runtime's own ones (the call trace of a crash) come back when the
// last such call ends. Guarded calls counts them under the mutex.
std::mutex crash_guard_mutex;
size_t guarded_calls = 0;
struct sigaction runtime_handlers[std::size(GUARDED_SIGNALS)];

// A crash on a thread outside a guarded call is the runtime's: its handlers
// come back, and the faulting instruction, run again on return, reaches them.
void on_crash(int signal) {
    if (crash_guard) siglongjmp(*crash_guard, signal);
    for (size_t i = 0; i < std::size(GUARDED_SIGNALS); ++i)
        if (GUARDED_SIGNALS[i] == signal) sigaction(signal, &runtime_handlers[i], nullptr);
}

class CrashGuardScope {
public:
    CrashGuardScope() {
        std::lock_guard lock(crash_guard_mutex);
        if (guarded_calls++ > 0) return;
        struct sigaction guard{};
        guard.sa_handler = on_crash;
        sigemptyset(&guard.sa_mask);
        guard.sa_flags = SA_NODEFER;
        for (size_t i = 0; i < std::size(GUARDED_SIGNALS); ++i)
            sigaction(GUARDED_SIGNALS[i], &guard, &runtime_handlers[i]);
    }
    ~CrashGuardScope() {
        crash_guard = nullptr;
        std::lock_guard lock(crash_guard_mutex);
        if (--guarded_calls > 0) return;
        for (size_t i = 0; i < std::size(GUARDED_SIGNALS); ++i)
            sigaction(GUARDED_SIGNALS[i], &runtime_handlers[i], nullptr);
    }
    CrashGuardScope(const CrashGuardScope&) = delete;
    CrashGuardScope& operator=(const CrashGuardScope&) = delete;
};

// Nothing with a destructor lives in this frame between sigsetjmp and a jump back.
bool guarded_call(declared_function_st& function, void* result, void** values) {
    sigjmp_buf landing;
    if (sigsetjmp(landing, 1) != 0) return false;
    crash_guard = &landing;
    ffi_call(&function.call, FFI_FN(function.entry), result, values);
    crash_guard = nullptr;
    return true;
}

void set_result(DeclareType type, const void* raw, Variant* result) {
    switch (type) {
    case DECLARE_VOID: result->set_true(); return;
    case DECLARE_SHORT:
    case DECLARE_INTEGER: result->set_integer(static_cast<long long>(*static_cast<const ffi_sarg*>(raw))); return;
    case DECLARE_LONG_LONG: result->set_integer(static_cast<long long>(*static_cast<const int64_t*>(raw))); return;
    case DECLARE_SINGLE: result->set(numeric_type_st{*static_cast<const float*>(raw), DECIMALS_UNKNOWN}); return;
    case DECLARE_DOUBLE: result->set(numeric_type_st{*static_cast<const double*>(raw), DECIMALS_UNKNOWN}); return;
    case DECLARE_STRING:
    case DECLARE_BINARY: {
        const char* text = *static_cast<char* const*>(raw);
        const Charset* charset = type == DECLARE_STRING ? Charset::utf8 : Charset::binary;
        result->set_string(String::fromBytes(text ? text : "", charset));
        return;
    }
    }
}

void call_declared(declared_function_st& function, VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    std::vector<c_argument_st> arguments(argc);
    std::vector<void*> values(argc);
    for (unsigned long long i = 0; i < argc; ++i) {
        set_argument(function.parameters[i], *Param(stack, i + 1)->follow(), &arguments[i]);
        values[i] = arguments[i].address ? static_cast<void*>(&arguments[i].address) : &arguments[i].i64;
    }
    union {
        ffi_sarg integer;
        int64_t i64;
        float f32;
        double f64;
        void* pointer;
    } raw{};
    bool returned;
    {
        CrashGuardScope guard;
        returned = guarded_call(function, &raw, values.data());
    }
    if (!returned) throw RuntimeError(ERR_DLL_CALL_EXCEPTION);
    for (unsigned long long i = 0; i < argc; ++i) {
        Memvar* slot = Param(stack, i + 1);
        if (function.parameters[i].by_reference && slot->tag == TAG_POINTER)
            write_back(stack, function.parameters[i], arguments[i], slot->pointer.target);
    }
    set_result(function.result, &raw, result);
}

// The closure's body: the arguments are those of a native function.
void run_declared(ffi_cif*, void*, void** arguments, void* data) {
    call_declared(*static_cast<declared_function_st*>(data), *static_cast<VmStack**>(arguments[0]),
                  *static_cast<unsigned long long*>(arguments[1]), *static_cast<Variant**>(arguments[2]));
}

}  // namespace

bool declared_function_matches(const declared_function_st& function, void* entry, DeclareType result,
                               const std::vector<declare_parameter_st>& parameters) {
    return function.entry == entry && function.result == result && function.parameters == parameters;
}

declared_function_ptr make_declared_function(void* entry, DeclareType result,
                                             const std::vector<declare_parameter_st>& parameters) {
    declared_function_ptr function(new declared_function_st());
    function->entry = entry;
    function->result = result;
    function->parameters = parameters;
    for (const declare_parameter_st& parameter : parameters) {
        function->parameter_types.push_back(parameter.by_reference && parameter.type != DECLARE_STRING &&
                                                    parameter.type != DECLARE_BINARY
                                                ? &ffi_type_pointer
                                                : ffi_type_of(parameter.type));
        function->form.parameters.push_back({argument_tag(parameter.type), false, false});
    }
    if (ffi_prep_cif(&function->call, FFI_DEFAULT_ABI, static_cast<unsigned>(parameters.size()), ffi_type_of(result),
                     function->parameter_types.data()) != FFI_OK ||
        ffi_prep_cif(&function->handler, FFI_DEFAULT_ABI, 3, &ffi_type_void, function->handler_types) != FFI_OK)
        raise_not_available("DECLARE of this signature");
    void* code = nullptr;
    function->closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
    if (!function->closure ||
        ffi_prep_closure_loc(function->closure, &function->handler, run_declared, function.get(), code) != FFI_OK)
        raise_not_available("DECLARE closures");
    function->form.handler = reinterpret_cast<native_function>(code);
    return function;
}

const library_function_st& declared_function_entry(const declared_function_st& function) { return function.form; }

void release_declared_function(declared_function_st* function) {
    if (function->closure) ffi_closure_free(function->closure);
    delete function;
}

}  // namespace zobase
