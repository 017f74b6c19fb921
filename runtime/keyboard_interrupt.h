#pragma once
// Ctrl-C while a program runs: SIGINT only asks the VM to stop (vm/interrupt.h).

namespace zobase {

// Installs sig_INT_handler for its lifetime and puts the previous action
// back after. A process that was started with SIGINT ignored (a background
// job) keeps ignoring it.
class InterruptHandlerScope {
public:
    InterruptHandlerScope();
    ~InterruptHandlerScope();
    InterruptHandlerScope(const InterruptHandlerScope&) = delete;
    InterruptHandlerScope& operator=(const InterruptHandlerScope&) = delete;

private:
    struct saved_st;
    saved_st* saved_;
};

}  // namespace zobase
