#pragma once
#include "base/export.h"

namespace zobase {

// A per-thread chain of the functions being run, kept so that the crash
// handlers can print where the program was. Opening one costs two stores.
struct CallTraceScope {
    const char* name;
    CallTraceScope* previous;

    explicit CallTraceScope(const char* decorated_name) noexcept;
    ~CallTraceScope();
    CallTraceScope(const CallTraceScope&) = delete;
    CallTraceScope& operator=(const CallTraceScope&) = delete;

    static CallTraceScope* newest() noexcept;
};

// Initial-exec: the library is loaded with its host, so the head is reached
// by one load from the thread pointer, not through __tls_get_addr.
inline constinit thread_local CallTraceScope* call_trace_head [[gnu::tls_model("initial-exec")]] = nullptr;

inline CallTraceScope::CallTraceScope(const char* decorated_name) noexcept
    : name(decorated_name), previous(call_trace_head) {
    call_trace_head = this;
}
inline CallTraceScope::~CallTraceScope() { call_trace_head = previous; }
inline CallTraceScope* CallTraceScope::newest() noexcept { return call_trace_head; }

}  // namespace zobase

#define ZO_TRACE() ::zobase::CallTraceScope zo_call_trace_scope_(__PRETTY_FUNCTION__)
