#pragma once
// Output of code that the compiler runs for itself (constant folding, class
// defaults) must not reach the user.
#include "runtime/runtime.h"
#include "runtime/screen.h"

namespace zobase {

class DiscardScreen : public Screen {
public:
    void internal_out(const String&) override {}
    void internal_err(const String&) override {}
};

// Points the runtime's output at another screen for one scope. Handlers
// write through the runtime, and the compiler runs on the driving thread.
class ScreenSwap {
public:
    ScreenSwap(Runtime* runtime, Screen* screen) : runtime_(runtime), saved_(runtime ? runtime->screen : nullptr) {
        if (runtime_) runtime_->screen = screen;
    }
    ~ScreenSwap() {
        if (runtime_) runtime_->screen = saved_;
    }
    ScreenSwap(const ScreenSwap&) = delete;
    ScreenSwap& operator=(const ScreenSwap&) = delete;

private:
    Runtime* runtime_;
    Screen* saved_;
};

}  // namespace zobase
