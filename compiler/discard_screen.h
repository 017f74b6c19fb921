#pragma once
// Output of code that the compiler runs for itself (constant folding, class
// defaults) must not reach the user.
#include "vm/runtime_services.h"
#include "vm/screen.h"

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
    ScreenSwap(RuntimeServices* services, Screen* screen)
        : services_(services), saved_(services ? services->replace_screen(screen) : nullptr) {}
    ~ScreenSwap() {
        if (services_) services_->replace_screen(saved_);
    }
    ScreenSwap(const ScreenSwap&) = delete;
    ScreenSwap& operator=(const ScreenSwap&) = delete;

private:
    RuntimeServices* services_;
    Screen* saved_;
};

}  // namespace zobase
