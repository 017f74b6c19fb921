#pragma once
// The roots of the exceptions the runtime raises on purpose, and those that
// carry no text. RuntimeError, which carries its message as a String, and the
// table engine's families stand on these in values/error.h.
#include <cstddef>
#include <cstdint>

#include "base/export.h"

namespace zobase {

// Common root of every exception the runtime raises on purpose.
class ZO_API Exception {
public:
    virtual ~Exception();
    virtual const char* name() const noexcept;
};

// INTERRUPT_BREAK is the user's Ctrl-C, raised as a plain RuntimeInterrupt.
enum InterruptType : int32_t { INTERRUPT_QUIT = 0, INTERRUPT_CANCEL = 1, INTERRUPT_THROW = 2, INTERRUPT_BREAK = 3 };

class ZO_API RuntimeInterrupt : public Exception {
public:
    InterruptType type;
    explicit RuntimeInterrupt(InterruptType t) : type(t) {}
};

// Thrown by QUIT (type 0) and CANCEL (type 1); unwinds every frame.
class ZO_API RuntimeQuit : public RuntimeInterrupt {
public:
    explicit RuntimeQuit(InterruptType t = INTERRUPT_QUIT) : RuntimeInterrupt(t) {}
};

// A state that cannot occur; also what the debugger path raises.
class ZO_API assert_failed_exception : public Exception {
public:
    const char* what;
    explicit assert_failed_exception(const char* text = "") : what(text) {}
    const char* name() const noexcept override;
};

// Raises assert_failed_exception naming the failed condition.
#define ZO_ASSERT(cond) \
    do { if (!(cond)) throw ::zobase::assert_failed_exception(#cond); } while (0)

// Undecodable bytes; `position` is the one-based byte offset of the first bad character.
class ZO_API string_buffer_invalid_exception : public Exception {
public:
    size_t position;
    explicit string_buffer_invalid_exception(size_t pos) : position(pos) {}
    const char* name() const noexcept override { return "string_buffer_invalid_exception"; }
};

}  // namespace zobase
