#include "runtime/keyboard_interrupt.h"

#include <csignal>

#include "runtime/runtime.h"
#include "vm/interrupt.h"

namespace zobase {

void sig_INT_handler(int) { request_interrupt(); }

struct InterruptHandlerScope::saved_st {
    struct sigaction previous;
};

// No SA_RESTART: a read waiting at the prompt returns, so the line editor
// can clear the line.
InterruptHandlerScope::InterruptHandlerScope() : saved_(new saved_st{}) {
    sigaction(SIGINT, nullptr, &saved_->previous);
    if (saved_->previous.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = sig_INT_handler;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
}

InterruptHandlerScope::~InterruptHandlerScope() {
    sigaction(SIGINT, &saved_->previous, nullptr);
    delete saved_;
}

}  // namespace zobase
